// SPDX-License-Identifier: MIT
#include "tests/unit/darwin/DarwinFixture.h"

#include <gmock/gmock.h>

namespace vantle {
namespace {

using testing::ElementsAre;

class Band : public DarwinTest {
 protected:
  Band() {
    spawnAt(100);
    kernel->startTrace();
  }
};

TEST_F(Band, EntersAndLeavesWithOneCallEach) {
  EXPECT_TRUE(mac->band.enterBackgroundBand(100));
  EXPECT_TRUE(isSlow(100));
  EXPECT_TRUE(mac->band.leaveBackgroundBand(100));
  EXPECT_FALSE(isSlow(100));
  EXPECT_THAT(calls(), ElementsAre("setpriority(PRIO_DARWIN_PROCESS, 100, PRIO_DARWIN_BG)",
                                   "setpriority(PRIO_DARWIN_PROCESS, 100, 0)"));
}

TEST_F(Band, IsReadFromTheKernelsFlag) {
  EXPECT_EQ(mac->band.isInBackgroundBand(100), false);
  machine.band.putInByOthers(100);
  EXPECT_EQ(mac->band.isInBackgroundBand(100), true);
  EXPECT_THAT(calls(), ElementsAre("proc_pidinfo(100, PROC_PIDTBSDINFO, 0, 136)",
                                   "proc_pidinfo(100, PROC_PIDTBSDINFO, 0, 136)"));
  EXPECT_EQ(mac->band.isInBackgroundBand(999), std::nullopt);
}

// To the call 0 is whoever asks.
TEST_F(Band, NeverTakesANumberForItself) {
  for (const Pid pid : {0, -1, -100}) {
    EXPECT_FALSE(mac->band.enterBackgroundBand(pid));
    EXPECT_FALSE(mac->band.leaveBackgroundBand(pid));
  }
  EXPECT_THAT(calls(), testing::IsEmpty());
}

TEST_F(Band, ARefusalIsFalseAndIsNotTriedAgain) {
  kernel->foreign.insert(100);
  EXPECT_FALSE(mac->band.enterBackgroundBand(100));
  EXPECT_FALSE(mac->band.leaveBackgroundBand(100));
  EXPECT_EQ(calls().size(), 2U);
  machine.processes.exit(100);
  EXPECT_FALSE(mac->band.enterBackgroundBand(100)) << "nobody";
}

} // namespace
} // namespace vantle
