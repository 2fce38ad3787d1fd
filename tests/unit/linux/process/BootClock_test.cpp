// SPDX-License-Identifier: MIT
#include "platform/linux/process/BootClock.h"

#include "engine/ProcessQueries.h"
#include "platform/linux/process/LinuxHost.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "tests/support/ForkedProcess.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <unistd.h>

namespace vantle {
namespace {

constexpr std::uint64_t tick = 10'000;

TEST(BootClock, IsRoundedDownToTheTick) {
  const BootEpoch epoch(1'700'000'000'123'456);
  const BootClock clock(epoch);
  for (int round = 0; round < 100; ++round) EXPECT_EQ((clock.processMicros() - epoch.micros()) % tick, 0U);
}

TEST(BootClock, NeverMakesALaterChildLookOlder) {
  const BootEpoch epoch(1'700'000'000'123'456);
  const BootClock clock(epoch);
  const ProcfsProcessTable table(epoch);
  // Children at every phase of the tick: more of them than ticks go by.
  for (int round = 0; round < 300; ++round) {
    const std::uint64_t before = clock.processMicros();
    const test::ForkedProcess child;
    const auto identity = readIdentity(table, child.pid());
    const std::uint64_t after = clock.processMicros();
    ASSERT_TRUE(identity);
    ASSERT_GE(startMicros(*identity), before) << round;
    ASSERT_LE(startMicros(*identity), after) << round;
  }
}

TEST(BootClock, SleepsAtLeastAsLongAsAsked) {
  BootClock clock(BootEpoch(0));
  const auto before = std::chrono::steady_clock::now();
  clock.sleep(std::chrono::milliseconds(25));
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(25));
}

TEST(BootClock, KnowsTheCalendar) {
  const auto off = BootClock(BootEpoch(0)).now() - std::chrono::system_clock::now();
  EXPECT_LT(std::chrono::abs(off), std::chrono::seconds(30));
}

TEST(LinuxHost, CountsTheProcessorsThatItMayUse) {
  const LinuxHost host;
  EXPECT_EQ(host.selfPID(), ::getpid());
  cpu_set_t all;
  ASSERT_EQ(::sched_getaffinity(0, sizeof all, &all), 0);
  EXPECT_EQ(host.activeProcessorCount(), CPU_COUNT(&all));
  cpu_set_t one;
  CPU_ZERO(&one);
  for (int cpu = 0; CPU_COUNT(&one) == 0; ++cpu) {
    if (CPU_ISSET(cpu, &all)) CPU_SET(cpu, &one);
  }
  ASSERT_EQ(::sched_setaffinity(0, sizeof one, &one), 0);
  EXPECT_EQ(host.activeProcessorCount(), 1);
  ::sched_setaffinity(0, sizeof all, &all);
}

} // namespace
} // namespace vantle
