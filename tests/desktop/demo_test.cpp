// SPDX-License-Identifier: MIT
// The demonstration, interrupted.
#include "tests/support/Kernel.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace vantle::desktop {
namespace {

namespace fs = std::filesystem;

class Demo : public testing::TestWithParam<int> {};
INSTANTIATE_TEST_SUITE_P(Signals, Demo, testing::Values(SIGINT, SIGTERM, SIGHUP),
                         [](const auto& tested) { return std::string(::sigabbrev_np(tested.param)); });

TEST_P(Demo, LeavesNothingBehindWhenItIsInterrupted) {
  const TemporaryFolder place;
  const TemporaryFolder report;
  Start start;
  start.command = {VANTLE_DEMO, VANTLE_PROGRAM, report.path().string()};
  start.environment = {{"PATH", "/usr/bin:/bin:/usr/games"}, {"TMPDIR", place.path().string()}};
  Program demo(start);
  std::set<Pid> all;
  const auto isServed = [&] {
    all = processesOf({demo.pid()});
    return std::any_of(all.begin(), all.end(), [](Pid pid) {
      const auto state = test::processState(pid);
      return state && state->name == "Xvfb";
    });
  };
  ASSERT_TRUE(waitUntil([&] { return isServed() || !demo.isRunning(); }));
  EXPECT_FALSE(fs::is_empty(place.path()));
  demo.signal(GetParam());
  EXPECT_EQ(demo.exitStatus(), -GetParam());
  EXPECT_TRUE(fs::is_empty(place.path()));
  EXPECT_GT(all.size(), 2U);
  EXPECT_TRUE(waitUntil([&] { return std::none_of(all.begin(), all.end(), isAlive); }));
}

} // namespace
} // namespace vantle::desktop
