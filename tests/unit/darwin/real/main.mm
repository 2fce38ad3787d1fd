// SPDX-License-Identifier: MIT
// For a Mac alone.
#include <QGuiApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  const QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
