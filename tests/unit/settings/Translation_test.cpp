// SPDX-License-Identifier: MIT
// The settings window, as small as it gets, in another language, which is longer.
#include "settings/SettingsWindow.h"

#include "look/ports/LinuxWords.h"
#include "platform/simulated/SimulatedMachine.h"
#include "tests/unit/look/PlainDesktop.h"
#include "tests/unit/look/PseudoLanguage.h"
#include "tests/unit/settings/ScriptedExtension.h"

#include <QGuiApplication>
#include <QQuickView>
#include <gtest/gtest.h>

namespace vantle {
namespace {

class SettingsTranslated : public testing::Test {
 protected:
  SettingsTranslated() {
    settings.protectedApps.set({"com.hnc.Discord"});
    window.show();
  }

  void expectTranslated() const {
    PseudoLanguage::expectEverywhere(
        *view().rootObject(), {"GNOME", "gamemoderun", "1.2", "Zero KB", "Firefox", "Galculator", "Mousepad",
                               "OBS Studio", "Spotify", "GNU Image Manipulation Program", "com.hnc.Discord"});
  }
  static QQuickView& view() {
    for (QWindow* each : QGuiApplication::topLevelWindows()) {
      if (auto* view = qobject_cast<QQuickView*>(each)) return *view;
    }
    throw std::logic_error("no window");
  }
  static SettingsModel& model() { return *view().rootObject()->property("model").value<SettingsModel*>(); }

  PseudoLanguage language;
  SimulatedMachine machine;
  AppSettings settings{machine.defaults};
  Engine engine{machine.ports(), settings};
  UpdateChecker checker{
      {.version = "1.2", .feed = {}, .vendorHost = {}, .authorities = {}}, settings, machine.clock, {}};
  SimulatedLoginItem login;
  SimulatedCatalog catalog;
  ScriptedExtension extension{ShellExtension::State::out};
  PlainIcons icons;
  LookEngine views{settings, icons, linuxWords};
  SettingsWindow window{views,
                        {engine, settings, checker, login, catalog, extension},
                        WindowState{Pane::boost, QSize(680, 480), {}},
                        [] {}};
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

} // namespace
} // namespace vantle
