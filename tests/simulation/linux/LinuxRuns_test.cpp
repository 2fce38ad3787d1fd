// SPDX-License-Identifier: MIT
#include "tests/simulation/linux/LinuxRun.h"

#include <gtest/gtest.h>
#include <iostream>

namespace vantle {
namespace {

constexpr std::uint64_t sequencesInAShard = VANTLE_LINUX_SEQUENCES_IN_A_SHARD;
constexpr std::uint64_t shards = 4;

class LinuxRuns : public testing::TestWithParam<std::uint64_t> {};

TEST_P(LinuxRuns, BreakNoRule) {
  RunFigures total;
  for (std::uint64_t count = 0; count < sequencesInAShard; ++count) {
    const std::uint64_t seed = GetParam() * sequencesInAShard + count;
    const RunResult result = LinuxRun(seed, {}).run();
    ASSERT_FALSE(result.violation) << *result.violation << "\nsee it with: simulation_replay --linux "
                                   << seed;
    total += result.figures;
  }
  std::cout << sequencesInAShard << " sequences, " << total << "\n";
  // The runs must stay worth running.
  EXPECT_GT(total.events, sequencesInAShard * 10);
  EXPECT_GT(total.boosts, sequencesInAShard / 2);
  EXPECT_GT(total.slowed, sequencesInAShard / 2);
  EXPECT_GT(total.crashes, sequencesInAShard / 4);
  EXPECT_GT(total.kills, sequencesInAShard / 4);
}

INSTANTIATE_TEST_SUITE_P(Shard, LinuxRuns, testing::Range<std::uint64_t>(0, shards));

} // namespace
} // namespace vantle
