// SPDX-License-Identifier: MIT
#include <QGuiApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qunsetenv("DBUS_SESSION_BUS_ADDRESS"); // nothing of the person's own session
  ::testing::InitGoogleTest(&argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  const QGuiApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
