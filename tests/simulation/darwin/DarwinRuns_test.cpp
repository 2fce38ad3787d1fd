// SPDX-License-Identifier: MIT
#include "tests/simulation/darwin/DarwinRun.h"

#include <gtest/gtest.h>
#include <iostream>
#include <sstream>

namespace vantle {
namespace {

constexpr std::uint64_t sequencesInAShard = VANTLE_DARWIN_SEQUENCES_IN_A_SHARD;
constexpr std::uint64_t shards = 4;

class DarwinRuns : public testing::TestWithParam<std::uint64_t> {};

TEST_P(DarwinRuns, BreakNoRule) {
  RunFigures total;
  for (std::uint64_t count = 0; count < sequencesInAShard; ++count) {
    const std::uint64_t seed = GetParam() * sequencesInAShard + count;
    auto run = std::make_unique<DarwinRun>(seed, RunOptions{});
    const RunResult result = run->run();
    const std::optional<std::string> fault = run->kernel().fault;
    run.reset();            // there is one kernel at a time
    if (result.violation) { // once more, to be read
      std::ostringstream log;
      DarwinRun(seed, {.log = &log, .tamper = {}}).run();
      FAIL() << *result.violation << "\nseed " << seed << "\n" << log.str();
    }
    ASSERT_FALSE(fault) << *fault << "\nseed " << seed;
    total += result.figures;
  }
  std::cout << sequencesInAShard << " sequences, " << total << "\n";
  // The runs must stay worth running.
  EXPECT_GT(total.events, sequencesInAShard * 10);
  EXPECT_GT(total.boosts, sequencesInAShard / 2);
  EXPECT_GT(total.slowed, sequencesInAShard / 2);
  EXPECT_GT(total.crashes, sequencesInAShard / 4);
  EXPECT_GT(total.kills, sequencesInAShard / 4);
  EXPECT_GT(total.reusedPids, sequencesInAShard / 10);
}

INSTANTIATE_TEST_SUITE_P(Shard, DarwinRuns, testing::Range<std::uint64_t>(0, shards));

} // namespace
} // namespace vantle
