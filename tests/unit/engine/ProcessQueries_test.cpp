// SPDX-License-Identifier: MIT
#include "engine/ProcessQueries.h"

#include "platform/simulated/SimulatedMachine.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <unordered_set>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProcessQueries : public testing::Test {
 protected:
  SimulatedMachine machine;
  SimulatedProcesses& table = machine.processes;

  Pid child(Pid parent) { return table.spawn({.parent = parent}); }
};

TEST_F(ProcessQueries, AnIdentityIsThePidWithItsStartTime) {
  machine.clock.advance(std::chrono::microseconds(123456));
  const Pid pid = child(1);
  EXPECT_EQ(readIdentity(table, pid), (ProcessIdentity{pid, 1'800'000'000, 123456}));
}

TEST_F(ProcessQueries, AnExitedPidHasNoIdentityAndItsRecordedOneNoLongerMatches) {
  const Pid pid = child(1);
  const ProcessIdentity recorded = *readIdentity(table, pid);
  EXPECT_TRUE(isSameLiveProcess(table, recorded));
  table.exit(pid);
  EXPECT_EQ(readIdentity(table, pid), std::nullopt);
  EXPECT_FALSE(isSameLiveProcess(table, recorded));
}

TEST_F(ProcessQueries, AReusedPidHasAnIdentityButIsNotTheRecordedProcess) {
  const Pid pid = child(1);
  const ProcessIdentity recorded = *readIdentity(table, pid);
  table.exit(pid);
  machine.clock.advance(std::chrono::microseconds(1));
  table.spawn({.pid = pid});
  EXPECT_TRUE(readIdentity(table, pid));
  EXPECT_FALSE(isSameLiveProcess(table, recorded));
}

TEST_F(ProcessQueries, AProcessThatCannotBeReadIsNotTheRecordedOne) {
  const Pid pid = child(1);
  const ProcessIdentity recorded = *readIdentity(table, pid);
  machine.calls.refuse(Operation::readRecord, pid);
  EXPECT_FALSE(isSameLiveProcess(table, recorded));
}

TEST_F(ProcessQueries, TheStartTimeCountsInMicroseconds) {
  EXPECT_EQ(startMicros({.pid = 9, .startSec = 3, .startUsec = 14}), 3'000'014U);
  EXPECT_EQ(startMicros({}), 0U);
}

TEST_F(ProcessQueries, AStartTimeBeyond64BitsStopsTheProgram) {
  constexpr std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
  EXPECT_EQ(startMicros({.pid = 9, .startSec = most / 1'000'000, .startUsec = most % 1'000'000}), most);
  EXPECT_DEATH(startMicros({.pid = 9, .startSec = most / 1'000'000, .startUsec = most % 1'000'000 + 1}),
               "broken invariant: start time overflows");
}

TEST_F(ProcessQueries, AProcessWithoutChildrenHasNone) { EXPECT_THAT(childPIDs(table, child(1)), IsEmpty()); }

TEST_F(ProcessQueries, ChildrenComeInTheOrderOfTheListing) {
  const Pid parent = child(1);
  const Pid first = child(parent);
  const Pid second = child(parent);
  child(second);
  EXPECT_THAT(childPIDs(table, parent), ElementsAre(first, second));
}

// A table that lists what no kernel should.
class OddTable final : public ProcessTable {
 public:
  std::vector<ProcessRecord> records;

  std::optional<ProcessRecord> record(Pid pid) const override {
    for (const ProcessRecord& record : records) {
      if (record.pid == pid) return record;
    }
    return std::nullopt;
  }
  std::vector<ProcessRecord> scan() const override { return records; }
  std::optional<std::string> executablePathBytes(Pid) const override { return path; }
  std::optional<std::uint64_t> footprint(Pid) const override { return std::nullopt; }
  std::optional<std::uint64_t> cpuTime(Pid) const override { return std::nullopt; }
  std::optional<int> schedulerPriority(Pid) const override { return std::nullopt; }

  std::optional<std::string> path;
};

TEST(ProcessQueriesOnAnOddTable, Pids0And1AreNobodysChildren) {
  OddTable table;
  table.records = {{.pid = 0, .parent = 0},
                   {.pid = 1, .parent = 0},
                   {.pid = 1, .parent = 7},
                   {.pid = 2, .parent = 7},
                   {.pid = 0, .parent = 7}};
  EXPECT_THAT(childPIDs(table, 0), IsEmpty());
  EXPECT_THAT(childPIDs(table, 7), ElementsAre(2));
}

TEST(ProcessQueriesOnAnOddTable, ProcessesThatAreEachOthersParentsAreListedOnce) {
  OddTable table;
  table.records = {{.pid = 5, .parent = 6}, {.pid = 6, .parent = 5}, {.pid = 7, .parent = 7}};
  EXPECT_THAT(processTree(table, 5), ElementsAre(5, 6));
  EXPECT_THAT(processTree(table, 7), ElementsAre(7));
  EXPECT_THAT(ancestorPIDs(table, 5), ElementsAre(5, 6));
  EXPECT_THAT(ancestorPIDs(table, 7), ElementsAre(7));
}

TEST(ProcessQueriesOnAnOddTable, ANegativePidStopsTheProgram) {
  OddTable table;
  table.records = {{.pid = 5, .parent = -1}};
  EXPECT_DEATH(ancestorPIDs(table, 5), "broken invariant: negative parent pid");
  EXPECT_DEATH(processTree(table, 5), "broken invariant: negative pid in the process table");
  table.records = {{.pid = -5, .parent = 1}};
  EXPECT_DEATH(processTree(table, 5), "broken invariant: negative pid in the process table");
}

TEST(ProcessQueriesOnAnOddTable, APathEndsAtItsFirstZeroByteOrAfter4096) {
  OddTable table;
  table.path = std::string("/bin/app\0 junk", 14);
  EXPECT_EQ(executablePath(table, 5), "/bin/app");
  table.path = std::string(4095, 'x') + "yz";
  EXPECT_EQ(executablePath(table, 5), std::string(4095, 'x') + "y");
}

TEST(ProcessQueriesOnAnOddTable, AnEmptyPathIsAbsent) {
  OddTable table;
  table.path = "";
  EXPECT_EQ(executablePath(table, 5), std::nullopt);
}

TEST_F(ProcessQueries, TheTreeOfALonelyPidIsThatPid) {
  const Pid pid = child(1);
  EXPECT_THAT(processTree(table, pid), ElementsAre(pid));
}

TEST_F(ProcessQueries, TheTreeOfAnExitedPidIsThatPid) {
  const Pid pid = child(1);
  table.exit(pid);
  EXPECT_THAT(processTree(table, pid), ElementsAre(pid));
}

TEST_F(ProcessQueries, TheTreeIsWalkedFromAStackSoLaterSiblingsComeFirst) {
  const Pid root = child(1);
  const Pid first = child(root);
  const Pid second = child(root);
  const Pid ofFirst = child(first);
  const Pid ofSecond = child(second);
  child(1); // not of this tree
  EXPECT_THAT(processTree(table, root), ElementsAre(root, second, ofSecond, first, ofFirst));
}

TEST_F(ProcessQueries, AncestorsOf0And1AreNone) {
  EXPECT_THAT(ancestorPIDs(table, 0), IsEmpty());
  EXPECT_THAT(ancestorPIDs(table, 1), IsEmpty());
  EXPECT_THAT(ancestorPIDs(table, -4), IsEmpty());
}

TEST_F(ProcessQueries, ADirectChildOfTheFirstProcessIsItsOwnOnlyAncestor) {
  const Pid pid = child(1);
  EXPECT_THAT(ancestorPIDs(table, pid), ElementsAre(pid));
}

TEST_F(ProcessQueries, AncestorsReachUpToButNotIncludingTheFirstProcess) {
  const Pid launcher = child(1);
  const Pid shell = child(launcher);
  const Pid game = child(shell);
  EXPECT_THAT(ancestorPIDs(table, game), ElementsAre(launcher, shell, game));
}

TEST_F(ProcessQueries, AnUnreadableAncestorEndsTheChainButCounts) {
  const Pid launcher = child(1);
  const Pid shell = child(launcher);
  const Pid game = child(shell);
  machine.calls.refuse(Operation::readRecord, shell);
  EXPECT_THAT(ancestorPIDs(table, game), ElementsAre(shell, game));
}

TEST_F(ProcessQueries, ThePathOfAProcessThatMayNotBeInspectedIsAbsent) {
  const Pid pid = child(1);
  EXPECT_EQ(executablePath(table, pid), "/usr/bin/program");
  machine.calls.refuse(Operation::readExecutablePath, pid);
  EXPECT_EQ(executablePath(table, pid), std::nullopt);
}

TEST_F(ProcessQueries, InvalidBytesInAPathBecomeReplacementCharacters) {
  const Pid pid = table.spawn({.executable = "/opt/\xFFgame\xC3"});
  EXPECT_EQ(executablePath(table, pid), "/opt/\xEF\xBF\xBDgame\xEF\xBF\xBD");
}

TEST_F(ProcessQueries, IdentitiesThatDifferInOneFieldAreDifferentKeys) {
  const std::unordered_set<ProcessIdentity> set{{1, 2, 3}, {1, 2, 4}, {1, 3, 3}, {2, 2, 3}, {1, 2, 3}};
  EXPECT_EQ(set.size(), 4U);
  EXPECT_NE(std::hash<ProcessIdentity>{}({1, 2, 3}), std::hash<ProcessIdentity>{}({1, 2, 4}));
  EXPECT_NE(std::hash<ProcessIdentity>{}({1, 2, 3}), std::hash<ProcessIdentity>{}({1, 3, 2}));
  EXPECT_NE(std::hash<ProcessIdentity>{}({1, 2, 3}), std::hash<ProcessIdentity>{}({2, 2, 3}));
}

} // namespace
} // namespace vantle
