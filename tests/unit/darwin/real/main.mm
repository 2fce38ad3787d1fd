// SPDX-License-Identifier: MIT
// For a Mac alone.
#include "platform/darwin/workspace/WindowServer.h"

#include <QGuiApplication>
#include <gtest/gtest.h>
#include <optional>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // Without windows the toolkit ends the program. The build, which asks for the list, and the tests of the
  // kernel work over ssh, too.
  std::optional<QGuiApplication> application;
  if (!testing::GTEST_FLAG(list_tests) && vantle::hasWindowServer()) application.emplace(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  return RUN_ALL_TESTS();
}
