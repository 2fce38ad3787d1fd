// SPDX-License-Identifier: MIT
// The keyboard's way through the settings window.
#include "tests/unit/look/FocusRings.h"

#include "look/ports/LinuxWords.h"
#include "settings/SettingsWindow.h"
#include "tests/unit/settings/ShownSettings.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string_view>

namespace vantle {
namespace {

using testing::Ge;
using testing::SizeIs;

class SettingsRings : public ShownSettings {
 protected:
  SettingsRings() : ShownSettings(linuxWords, WindowState{Pane::boost, QSize(680, 480), {}}) {
    settings.userGames.set({"org.example.one", "org.example.two"});
    settings.protectedApps.set({"com.hnc.Discord", "org.example.three"});
  }
};

TEST_F(SettingsRings, AreWholeAndTouchNothing) {
  for (const QSize size : {QSize(680, 480), QSize(1200, 900), QSize(340, 480)}) {
    view().setMinimumSize({});
    view().resize(size);
    for (const Pane each : allPanes) {
      SCOPED_TRACE(testing::Message()
                   << "pane " << static_cast<int>(each) << ", " << size.width() << " wide");
      model().setPaneIndex(static_cast<int>(each));
      QCoreApplication::processEvents();
      EXPECT_THAT(FocusRings(view()).walk(), SizeIs(Ge(3U)));
    }
  }
}

TEST_F(SettingsRings, AreSoInThePickerToo) {
  model().picker()->openFor(model().boost()->userGames());
  QCoreApplication::processEvents();
  const QList<QQuickItem*> all = view().rootObject()->findChildren<QQuickItem*>();
  const auto picker = std::find_if(all.begin(), all.end(), [](const QQuickItem* item) {
    return std::string_view(item->metaObject()->className()).starts_with("AppPicker_");
  });
  ASSERT_NE(picker, all.end());
  EXPECT_THAT(FocusRings(view(), *picker).walk(), SizeIs(Ge(2U)));
}

} // namespace
} // namespace vantle
