// SPDX-License-Identifier: MIT
#include "tests/simulation/RandomRun.h"

#include <gtest/gtest.h>
#include <sstream>

namespace vantle {
namespace {

// Each shard runs this many evenings; the seeds follow one another.
constexpr std::uint64_t sequencesInAShard = VANTLE_SEQUENCES_IN_A_SHARD;
constexpr std::uint64_t shards = 4;

class RandomRuns : public testing::TestWithParam<std::uint64_t> {};

TEST_P(RandomRuns, BreakNoRule) {
  RunFigures total;
  for (std::uint64_t count = 0; count < sequencesInAShard; ++count) {
    const std::uint64_t seed = GetParam() * sequencesInAShard + count;
    const RunResult result = RandomRun(seed, {}).run();
    ASSERT_FALSE(result.violation) << *result.violation << "\nsee it with: simulation_replay " << seed;
    total += result.figures;
  }
  std::cout << sequencesInAShard << " sequences, " << total << "\n";
  // The runs must stay worth running.
  EXPECT_GT(total.events, sequencesInAShard * 10);
  EXPECT_GT(total.boosts, sequencesInAShard / 2);
  EXPECT_GT(total.slowed, sequencesInAShard);
  EXPECT_GT(total.crashes, sequencesInAShard / 4);
  EXPECT_GT(total.kills, sequencesInAShard / 4);
  EXPECT_GT(total.reusedPids, sequencesInAShard / 10);
}

INSTANTIATE_TEST_SUITE_P(Shard, RandomRuns, testing::Range<std::uint64_t>(0, shards));

TEST(RandomRunsReplay, TheSameSeedPlaysTheSameCalls) {
  const auto played = [](std::uint64_t seed) {
    std::ostringstream log;
    RandomRun(seed, {.log = &log, .tamper = {}}).run();
    return log.str();
  };
  for (std::uint64_t seed = 1; seed < 20; ++seed) EXPECT_EQ(played(seed), played(seed));
  EXPECT_NE(played(1), played(2));
}

} // namespace
} // namespace vantle
