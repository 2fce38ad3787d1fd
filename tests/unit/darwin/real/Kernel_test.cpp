// SPDX-License-Identifier: MIT
#include "platform/darwin/audio/CoreAudioActivity.h"
#include "platform/darwin/band/DarwinBand.h"
#include "platform/darwin/pressure/DispatchMemoryPressure.h"
#include "platform/darwin/process/DarwinClock.h"
#include "platform/darwin/process/DarwinHost.h"
#include "platform/darwin/process/LibprocProcessTable.h"
#include "platform/posix/process/SessionLauncher.h"
#include "tests/unit/darwin/real/RealMac.h"

#include <algorithm>
#include <unistd.h>

namespace vantle {
namespace {

class RealKernel : public RealMac {
 protected:
  // A busy child, which ends with the test.
  class Child {
   public:
    Child() : m_program(SessionLauncher().launch("/usr/bin/yes")) {}
    ~Child() {
      if (!m_program) return;
      m_program->terminate();
      m_program->waitUntilExit();
    }
    Child(const Child&) = delete;
    Child& operator=(const Child&) = delete;
    Pid pid() const { return m_program ? m_program->processIdentifier() : 0; }

   private:
    std::unique_ptr<Subprocess> m_program;
  };
};

TEST_F(RealKernel, AChildIsPutIntoTheBandAndTakenOut) {
  const Child child;
  ASSERT_GT(child.pid(), 0);
  DarwinBand band;
  EXPECT_EQ(band.isInBackgroundBand(child.pid()), false);
  EXPECT_TRUE(band.enterBackgroundBand(child.pid()));
  EXPECT_EQ(band.isInBackgroundBand(child.pid()), true);
  EXPECT_TRUE(band.leaveBackgroundBand(child.pid()));
  EXPECT_EQ(band.isInBackgroundBand(child.pid()), false);
}

TEST_F(RealKernel, TheBandChangesThePriority) {
  const Child child;
  const LibprocProcessTable processes;
  DarwinClock clock;
  DarwinBand band;
  const std::optional<int> before = processes.schedulerPriority(child.pid());
  ASSERT_TRUE(band.enterBackgroundBand(child.pid()));
  clock.sleep(std::chrono::milliseconds(500));
  const std::optional<int> slowed = processes.schedulerPriority(child.pid());
  ASSERT_TRUE(before && slowed);
  EXPECT_LT(*slowed, *before);
}

TEST_F(RealKernel, ARecordIsOfTheOneAxisOfTime) {
  const std::uint64_t before = DarwinClock().processMicros();
  const Child child;
  const LibprocProcessTable processes;
  const std::optional<ProcessRecord> record = processes.record(child.pid());
  ASSERT_TRUE(record);
  EXPECT_EQ(record->parent, ::getpid());
  EXPECT_EQ(record->user, ::getuid());
  const std::uint64_t start = record->startSec * 1'000'000 + record->startUsec;
  EXPECT_GE(start + 1'000'000, before);
  EXPECT_LE(start, DarwinClock().processMicros() + 1'000'000);
}

TEST_F(RealKernel, AScanHasEverybody) {
  const Child child;
  const std::vector<ProcessRecord> all = LibprocProcessTable().scan();
  const auto has = [&](Pid pid) {
    return std::any_of(all.begin(), all.end(), [&](const auto& each) { return each.pid == pid; });
  };
  EXPECT_TRUE(has(child.pid()));
  EXPECT_TRUE(has(::getpid()));
  EXPECT_TRUE(has(1)) << "another user's";
}

TEST_F(RealKernel, FiguresAreRead) {
  const LibprocProcessTable processes;
  EXPECT_GT(processes.footprint(::getpid()).value_or(0), 0U);
  EXPECT_GT(processes.cpuTime(::getpid()).value_or(0), 0U);
  EXPECT_FALSE(processes.executablePathBytes(::getpid()).value_or("").empty());
  EXPECT_GT(DarwinHost().activeProcessorCount(), 0);
  const std::optional<int> level = DispatchMemoryPressure().level();
  ASSERT_TRUE(level);
  EXPECT_TRUE(*level == 1 || *level == 2 || *level == 4) << *level;
}

TEST_F(RealKernel, WhoIsHeardIsAskedFor) {
  CoreAudioActivity audio;
  if (!audio.isAvailable()) GTEST_SKIP() << "before 14.2";
  for (const Pid pid : audio.runningOutput()) EXPECT_GT(pid, 0);
}

} // namespace
} // namespace vantle
