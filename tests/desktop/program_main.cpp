// SPDX-License-Identifier: MIT
#include "tests/support/Isolation.h"

#include <gmock/gmock.h>

int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  if (testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
  return vantle::desktop::runIsolated([] { return RUN_ALL_TESTS(); });
}
