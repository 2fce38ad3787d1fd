// SPDX-License-Identifier: MIT
#include <QCoreApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  // Ended before anything static is: Qt 6.8 does not survive the other order.
  const QCoreApplication application(argc, argv);
  return RUN_ALL_TESTS();
}
