// SPDX-License-Identifier: MIT
#include "tests/simulation/darwin/DarwinRun.h"
#include "tests/simulation/darwin/EveningShard.h"

namespace vantle {
namespace {

class DarwinRuns : public testing::TestWithParam<std::uint64_t> {};

TEST_P(DarwinRuns, BreakNoRule) { playShard<DarwinRun>(GetParam(), VANTLE_DARWIN_SEQUENCES_IN_A_SHARD); }

INSTANTIATE_TEST_SUITE_P(Shard, DarwinRuns, testing::Range<std::uint64_t>(0, 4));

} // namespace
} // namespace vantle
