// SPDX-License-Identifier: MIT
#include "tests/support/Isolation.h"

#include <algorithm>
#include <array>
#include <gmock/gmock.h>
#include <string>

// The band's recovery puts back whatever of the user's processes carries its mark, so as root its tests stand
// apart from all that run at the same time. Elsewhere the test runner keeps them from each other. The other
// tests want to see the machine as it is.
int main(int argc, char** argv) {
  testing::InitGoogleMock(&argc, argv);
  const std::string chosen = testing::GTEST_FLAG(filter);
  constexpr std::array band{"LinuxBandTest.", "NarrowedThreads.", "NestedApps.", "KilledAnywhere.",
                            "ForkingApps."};
  const bool isBand =
      std::any_of(band.begin(), band.end(), [&](const char* suite) { return chosen.starts_with(suite); });
  if (!isBand || testing::GTEST_FLAG(list_tests)) return RUN_ALL_TESTS();
  return vantle::desktop::runIsolated([] { return RUN_ALL_TESTS(); });
}
