// SPDX-License-Identifier: MIT
#include "platform/linux/process/LinuxMainThread.h"

#include "tests/unit/posix/MainThreadCases.h"

#include <gtest/gtest.h>

namespace vantle {
namespace {

using testing::ExitedWithCode;

TEST(LinuxMain, ASignalIsSeenWhileItWaitsForTheMainThread) {
  EXPECT_EXIT(seesASignalThatWaits<LinuxMainThread>(), ExitedWithCode(0), "");
}

TEST(LinuxMain, ASignalThatCameBeforeReachesItsSourceAndTheWatcher) {
  EXPECT_EXIT(passesOnAnEarlySignal<LinuxMainThread>(), ExitedWithCode(0), "");
}

TEST(LinuxMain, ASignalThatComesAfterReachesItsSource) {
  EXPECT_EXIT(passesOnALateSignal<LinuxMainThread>(), ExitedWithCode(0), "");
}

TEST(LinuxMain, WhoeverWatchesIsWokenAndWaitsNoLongerThanItSays) {
  EXPECT_EXIT(wakesTheWatcher<LinuxMainThread>(), ExitedWithCode(0), "");
}

TEST(LinuxMain, StandsStillWhenItIsFrozenAndForNobodyElse) {
  EXPECT_EXIT(standsStillWhenFrozen<LinuxMainThread>(SIGRTMIN + 7), ExitedWithCode(0), "");
}

} // namespace
} // namespace vantle
