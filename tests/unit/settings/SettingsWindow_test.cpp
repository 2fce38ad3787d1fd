// SPDX-License-Identifier: MIT
#include "settings/SettingsWindow.h"

#include "platform/simulated/SimulatedMachine.h"
#include "tests/unit/look/PlainDesktop.h"
#include "tests/unit/settings/ScriptedExtension.h"

#include <QGuiApplication>
#include <QScreen>
#include <gtest/gtest.h>

namespace vantle {

namespace {

class SettingsWindowTest : public testing::Test {
 protected:
  QRect placeAfterShowing(const WindowState& state) {
    SettingsWindow window(views, {engine, settings, checker, login, catalog, extension}, state, [] {});
    window.show();
    for (QWindow* each : QGuiApplication::topLevelWindows()) {
      if (each->isVisible()) return each->geometry();
    }
    return {};
  }

  SimulatedMachine machine;
  AppSettings settings{machine.defaults};
  Engine engine{machine.ports(), settings};
  UpdateChecker checker{{}, settings, machine.clock, {}};
  SimulatedLoginItem login;
  SimulatedCatalog catalog;
  ScriptedExtension extension;
  PlainIcons icons;
  LookEngine views{settings, icons, linuxWords};
};

TEST_F(SettingsWindowTest, ComesBackWhereItWasButNeverOutOfSight) {
  const QRect kept = placeAfterShowing({Pane::boost, {700, 500}, QPoint(20, 30)});
  EXPECT_EQ(kept.size(), QSize(700, 500));
  EXPECT_LT((kept.topLeft() - QPoint(20, 30)).manhattanLength(), 8) << "but for the frame";
  const QRect screen = QGuiApplication::primaryScreen()->geometry();
  // As it was on a screen that has been unplugged.
  for (const QPoint& lost : {QPoint(9000, 40), QPoint(-5000, 40), QPoint(40, 9000)})
    EXPECT_TRUE(screen.contains(placeAfterShowing({Pane::boost, {700, 500}, lost}))) << lost.x();
}

} // namespace

} // namespace vantle
