// SPDX-License-Identifier: MIT
#include "tests/unit/darwin/DarwinFixture.h"

#include <gmock/gmock.h>

namespace vantle {
namespace {

using testing::ElementsAre;

class Processes : public DarwinTest {
 protected:
  Processes() {
    spawnAt(100);
    kernel->startTrace();
  }
};

TEST_F(Processes, ARecordIsReadWithOneCall) {
  const auto record = mac->processes.record(100);
  ASSERT_TRUE(record);
  EXPECT_EQ(record->pid, 100);
  EXPECT_EQ(record->parent, 1);
  EXPECT_EQ(record->user, 501U);
  EXPECT_EQ(record->role, ProcessRole::program);
  EXPECT_EQ(vantle::identityOf(*record), identityOf(100));
  EXPECT_THAT(calls(), ElementsAre("proc_pidinfo(100, PROC_PIDTBSDINFO, 0, 136)"));
}

TEST_F(Processes, TheFirstOneIsTheSystem) { EXPECT_EQ(mac->processes.record(1)->role, ProcessRole::system); }

TEST_F(Processes, ARecordOfAnotherLengthIsNone) {
  for (const int off : {-1, 1, 8}) {
    kernel->recordBytesOff = off;
    EXPECT_FALSE(mac->processes.record(100)) << off;
    EXPECT_FALSE(mac->band.isInBackgroundBand(100)) << off;
    EXPECT_FALSE(mac->processes.schedulerPriority(100)) << off;
    EXPECT_THAT(mac->processes.scan(), testing::IsEmpty()) << off;
  }
}

TEST_F(Processes, OneThatEndedIsGoneWaitedForOrNot) {
  machine.processes.exitAsZombie(100);
  EXPECT_FALSE(mac->processes.record(100));
  EXPECT_FALSE(mac->processes.executablePathBytes(100));
  EXPECT_FALSE(mac->processes.footprint(100));
  EXPECT_FALSE(mac->processes.cpuTime(100));
  machine.processes.reap(100);
  EXPECT_FALSE(mac->processes.record(100));
}

TEST_F(Processes, AScanAsksForTheNumberThenTheListThenEach) {
  EXPECT_EQ(mac->processes.scan().size(), 3U); // the first, this program, and it
  const std::string self = std::to_string(machine.host.self);
  EXPECT_THAT(calls(), ElementsAre("proc_listallpids(NULL, 0)", "proc_listallpids(buffer, 268)", // 3 and 64
                                   "proc_pidinfo(1, PROC_PIDT_SHORTBSDINFO, 0, 64)",
                                   "proc_pidinfo(1, PROC_PIDTBSDINFO, 0, 136)",
                                   "proc_pidinfo(" + self + ", PROC_PIDT_SHORTBSDINFO, 0, 64)",
                                   "proc_pidinfo(" + self + ", PROC_PIDTBSDINFO, 0, 136)",
                                   "proc_pidinfo(100, PROC_PIDT_SHORTBSDINFO, 0, 64)",
                                   "proc_pidinfo(100, PROC_PIDTBSDINFO, 0, 136)"));
}

TEST_F(Processes, AListThatGrowsIsAskedForAgainButNotForEver) {
  kernel->bornWhileListed = 63;
  EXPECT_EQ(mac->processes.scan().size(), 3U + 63U) << "there was room for them";
  calls();
  kernel->bornWhileListed = 64;
  const std::size_t before = machine.processes.all().size();
  EXPECT_GT(mac->processes.scan().size(), before);
  const Calls made = calls();
  EXPECT_EQ(count(made, "proc_listallpids"), 8U) << "four times two";
  kernel->bornWhileListed = 0;
  EXPECT_EQ(mac->processes.scan().size(), machine.processes.all().size());
}

TEST_F(Processes, WithoutAListThereIsNobody) {
  machine.calls.refuse(Operation::scanProcesses);
  EXPECT_THAT(mac->processes.scan(), testing::IsEmpty());
}

// A terminal's shell is a child of root's login.
TEST_F(Processes, AnotherUsersIsOnlyInTheTree) {
  spawnAt(110, 100);
  spawnAt(120, 110);
  kernel->foreign.insert(110);
  EXPECT_FALSE(mac->processes.record(110));
  const ProcessView view(mac->processes.scan(), std::nullopt);
  ASSERT_NE(view.find(110), nullptr);
  EXPECT_EQ(view.find(110)->parent, 100);
  EXPECT_EQ(view.find(110)->user, 0U);
  EXPECT_EQ(view.find(110)->startSec, 0U) << "never one that was known before";
  EXPECT_THAT(view.childPIDs(110), ElementsAre(120));
}

TEST_F(Processes, APathIsWhatStandsBeforeTheZero) {
  machine.processes.find(100)->executable = "/Applications/Mail.app/Contents/MacOS/Mail";
  EXPECT_EQ(mac->processes.executablePathBytes(100), "/Applications/Mail.app/Contents/MacOS/Mail");
  EXPECT_THAT(calls(), ElementsAre("proc_pidpath(100, 4096)"));
  const std::string longest(4096, 'p');
  machine.processes.find(100)->executable = longest;
  EXPECT_EQ(mac->processes.executablePathBytes(100), longest) << "without any zero";
  EXPECT_FALSE(mac->processes.executablePathBytes(999));
}

TEST_F(Processes, FiguresComeFromTheUsage) {
  machine.processes.find(100)->footprint = 5'000'000'000;
  machine.processes.find(100)->cpuTime = 7'000'000'000;
  EXPECT_EQ(mac->processes.footprint(100), 5'000'000'000U);
  EXPECT_EQ(mac->processes.cpuTime(100), 7'000'000'000U) << "both kinds of it";
  EXPECT_THAT(calls(),
              ElementsAre("proc_pid_rusage(100, RUSAGE_INFO_V4)", "proc_pid_rusage(100, RUSAGE_INFO_V4)"));
  kernel->foreign.insert(100);
  EXPECT_FALSE(mac->processes.footprint(100));
  EXPECT_FALSE(mac->processes.cpuTime(100));
}

TEST_F(Processes, ThePriorityIsTheSchedulers) {
  EXPECT_EQ(mac->processes.schedulerPriority(100), 31);
  EXPECT_THAT(calls(), ElementsAre("proc_pidinfo(100, PROC_PIDTASKINFO, 0, 96)"));
  machine.band.enterBackgroundBand(100);
  EXPECT_EQ(mac->processes.schedulerPriority(100), 4);
  kernel->foreign.insert(100);
  EXPECT_FALSE(mac->processes.schedulerPriority(100));
}

} // namespace
} // namespace vantle
