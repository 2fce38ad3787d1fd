// SPDX-License-Identifier: MIT
// The settings window, as small as it gets, in another language, which is longer.
#include "settings/SettingsWindow.h"

#include "look/ports/LinuxWords.h"
#include "tests/unit/look/PseudoLanguage.h"
#include "tests/unit/settings/ShownSettings.h"

#include <gtest/gtest.h>

namespace vantle {
namespace {

// It is spoken before there is a window.
struct Translated {
  PseudoLanguage language;
};

class SettingsTranslated : protected Translated, public ShownSettings {
 protected:
  SettingsTranslated() : ShownSettings(linuxWords, WindowState{Pane::boost, QSize(680, 480), {}}) {
    settings.protectedApps.set({"com.hnc.Discord"});
  }

  void expectTranslated() const {
    PseudoLanguage::expectEverywhere(
        *view().rootObject(), {"GNOME", "gamemoderun", "1.2", "Zero KB", "Firefox", "Galculator", "Mousepad",
                               "OBS Studio", "Spotify", "GNU Image Manipulation Program", "com.hnc.Discord"});
  }
};

TEST_F(SettingsTranslated, HasRoomForEveryTextAndMissesNone) {
  for (const Pane each : allPanes) {
    model().setPaneIndex(static_cast<int>(each));
    expectTranslated();
  }
  EXPECT_TRUE(view().title().startsWith(u'['));
  checker.check();
  model().setPaneIndex(static_cast<int>(Pane::updates));
  expectTranslated();
  model().setPaneIndex(static_cast<int>(Pane::general));
  model().extension()->toggle();
  expectTranslated();
  model().picker()->openFor(model().boost()->userGames());
  expectTranslated();
  model().picker()->setSearch("nothing of this name");
  expectTranslated();
}

// As tiling window managers make it, which ask nobody how small a window may be.
TEST_F(SettingsTranslated, HasRoomInATileAsWell) {
  view().setMinimumSize({});
  view().resize(340, 480);
  for (const Pane each : allPanes) {
    model().setPaneIndex(static_cast<int>(each));
    QCoreApplication::processEvents();
    expectTranslated();
  }
}

} // namespace
} // namespace vantle
