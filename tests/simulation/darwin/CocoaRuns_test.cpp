// SPDX-License-Identifier: MIT
#include "tests/simulation/darwin/CocoaRun.h"
#include "tests/simulation/darwin/EveningShard.h"

namespace vantle {
namespace {

class CocoaRuns : public testing::TestWithParam<std::uint64_t> {};

TEST_P(CocoaRuns, BreakNoRule) {
  playShard<CocoaRun>(GetParam(), VANTLE_COCOA_SEQUENCES_IN_A_SHARD);
  EXPECT_EQ(SimulatedCocoa::objects(), 0) << "not released";
}

INSTANTIATE_TEST_SUITE_P(Shard, CocoaRuns, testing::Range<std::uint64_t>(0, 4));

} // namespace
} // namespace vantle
