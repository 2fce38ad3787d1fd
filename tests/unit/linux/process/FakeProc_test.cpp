// SPDX-License-Identifier: MIT
// What the process table makes of a procfs that shows what no test can make the real one show.
#include "engine/AppTrees.h"
#include "platform/linux/band/UnitPath.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantle {
namespace {

namespace fs = std::filesystem;

std::string statOf(int pid, const std::string& name, int parent, std::uint64_t start) {
  return std::to_string(pid) + " (" + name + ") S " + std::to_string(parent) +
         " 1 1 0 -1 0 0 0 0 0 17 23 0 0 20 0 1 0 " + std::to_string(start) + " 0 0 0\n";
}

class FakeProcTest : public testing::Test {
 protected:
  void addProcess(int pid, int parent, std::uint64_t start) {
    proc.write(std::to_string(pid) + "/stat", statOf(pid, "x", parent, start));
  }
  std::optional<std::uint64_t> footprintWith(const std::string& status) {
    proc.write("7/status", status);
    return table.footprint(7);
  }

  desktop::TemporaryFolder proc;
  ProcfsProcessTable table{BootEpoch(1'000'000'500'000), proc.path()};
};

TEST_F(FakeProcTest, AddsTheTicksToTheEpoch) {
  addProcess(7, 1, 12'345);
  const auto record = table.record(7);
  ASSERT_TRUE(record);
  // 1,000,000.5 s after the epoch, and 123.45 s after that.
  EXPECT_EQ(record->startSec, 1'000'123U);
  EXPECT_EQ(record->startUsec, 950'000U);
}

TEST_F(FakeProcTest, ScansWhatAProcessIsToOthers) {
  proc.write("7/stat", "7 (xterm) R 1 7 5 0 -1 0 0 0 0 0 17 23 0 0 20 0 3 0 55 0 0 0\n");
  proc.write("8/stat", "8 (bash) S 7 8 8 0 -1 0 0 0 0 0 1 2 0 0 20 0 0 0 56 0 0 0\n");
  proc.write("9/stat", "9 (pipewire) S 7 8 8 0 -1 0 0 0 0 0 1 2 0 0 20 0 1 0 57 0 0 0\n");
  proc.write("10/stat", "10 (kworker/0:1) I 2 0 0 0 -1 2129984 0 0 0 0 0 9 0 0 20 0 1 0 58 0 0 0\n");
  auto all = table.scan();
  ASSERT_EQ(all.size(), 4U);
  // Only the real one lists them by number.
  std::sort(all.begin(), all.end(), [](const auto& one, const auto& other) { return one.pid < other.pid; });
  EXPECT_EQ(all[0].session, 5);
  EXPECT_EQ(all[0].threads, 3U);
  EXPECT_EQ(all[0].cpuTicks, 40U);
  EXPECT_EQ(all[0].startTicks, 55U);
  EXPECT_TRUE(all[0].isRunning);
  EXPECT_EQ(all[0].user, ::geteuid()) << "the file's owner";
  EXPECT_EQ(all[0].role, ProcessRole::program);
  EXPECT_EQ(all[1].session, 8);
  EXPECT_EQ(all[1].threads, 1U) << "the kernel writes 0 of one that is ending";
  EXPECT_EQ(all[1].role, ProcessRole::starter);
  EXPECT_FALSE(all[1].isRunning);
  EXPECT_EQ(all[2].role, ProcessRole::system);
  EXPECT_FALSE(all[2].isKernelThread);
  EXPECT_TRUE(all[3].isKernelThread);
  const auto single = table.record(7);
  ASSERT_TRUE(single);
  EXPECT_EQ(single->session, 5);
  EXPECT_EQ(single->threads, 3U);
}

TEST_F(FakeProcTest, HasTheKernelsBirthMark) {
  EXPECT_EQ(table.birthMark(), std::nullopt) << "no file says";
  proc.write("loadavg", "0.20 0.18 0.12 1/80 11206\n");
  EXPECT_EQ(ProcfsProcessTable(BootEpoch(0), proc.path()).birthMark(), 11'206U);
}

// Apps, orphans and what the desktop is made of, in places as a user manager makes them.
class FakePlacesTest : public FakeProcTest {
 protected:
  static constexpr Pid self = 40;
  FakePlacesTest() { add(self, 1, self, "app-vantle-40.scope"); }
  void add(Pid pid, Pid parent, Pid session, const std::string& unit, const std::string& name = "x") const {
    const std::string id = std::to_string(pid);
    proc.write(id + "/stat", id + " (" + name + ") S " + std::to_string(parent) + " " + id + " " +
                                 std::to_string(session) + " 0 -1 0 0 0 0 0 1 2 0 0 20 0 1 0 " + id +
                                 " 0 0 0\n");
    proc.write(id + "/cgroup", "0::" + apps + "/" + unit + "\n");
  }
  AppTrees look(const std::set<Pid>& known) const {
    return {table, {.apps = known, .self = self, .members = {}}};
  }

  const std::string apps = appSlicePath(::geteuid());
};

TEST_F(FakePlacesTest, NamesTheUnitOfAnApp) {
  add(7, 1, 7, "app-a-7.scope/inner");
  add(8, 1, 8, "helper.service");
  EXPECT_EQ(table.place(7), apps + "/app-a-7.scope");
  EXPECT_EQ(table.place(8), "");
  EXPECT_EQ(table.place(9), "") << "gone";
  proc.write("8/cgroup", "nonsense");
  EXPECT_EQ(table.place(8), "");
}

TEST_F(FakePlacesTest, GivesAnOrphanToTheOnlyAppOfItsPlace) {
  add(7, 1, 7, "app-a-7.scope");
  add(8, 1, 8, "app-a-7.scope"); // on its own, with a session of its own
  add(9, 8, 8, "app-a-7.scope");
  EXPECT_THAT(look({7}).processesOf(7), testing::UnorderedElementsAre(7, 8, 9));
  // Adopted by the user manager, as orphans are where one runs.
  add(3, 1, 3, "init.scope", "systemd");
  add(8, 3, 8, "app-a-7.scope");
  EXPECT_THAT(look({7}).processesOf(7), testing::UnorderedElementsAre(7, 8, 9));
}

TEST_F(FakePlacesTest, GivesAnOrphanToNobodyWhereItMayBeAnothers) {
  add(7, 1, 7, "app-a-7.scope");
  add(6, 1, 6, "app-a-7.scope"); // a second app in it
  add(8, 1, 8, "app-a-7.scope");
  EXPECT_EQ(look({6, 7}).appOf(8), 0);
  add(8, 1, 8, "shared.service");
  add(7, 1, 7, "shared.service");
  EXPECT_EQ(look({7}).appOf(8), 0) << "services hold what they like";
  add(7, 1, 7, "app-a-7.scope");
  add(8, 1, 8, "app-b-8.scope");
  EXPECT_EQ(look({7}).appOf(8), 0);
}

TEST_F(FakePlacesTest, LeavesAloneWhatStandsElsewhereAndWhatOthersWaitFor) {
  add(7, 1, 7, "app-a-7.scope");
  add(5, 1, 5, "app-b-5.scope"); // no app
  add(8, 5, 8, "app-b-5.scope");
  add(9, 1, 9, "app-a-7.scope", "dbus-daemon");
  const AppTrees trees = look({7});
  for (const Pid pid : {5, 8, 9}) EXPECT_EQ(trees.appOf(pid), 0) << pid;
}

TEST_F(FakePlacesTest, ThisProgramSharesItsPlaceWithNobody) {
  add(7, 1, 7, "app-a-7.scope");
  add(self, 7, 7, "app-a-7.scope"); // started from a terminal
  add(41, self, 7, "app-a-7.scope");
  const AppTrees trees = look({7});
  EXPECT_EQ(trees.processesOf(7), std::vector<Pid>{7});
  EXPECT_EQ(trees.appOf(self), self);
  EXPECT_EQ(trees.appOf(41), self);
  EXPECT_TRUE(trees.isOwnChain(7));
}

TEST_F(FakeProcTest, ListsOnlyWhatIsAProcess) {
  addProcess(7, 1, 5);
  for (const char* name : {"self", "thread-self", "12x", "0", "007", "-3", "99999999999", "+8", " 9"}) {
    proc.write(fs::path(name) / "stat", statOf(9, "x", 1, 5));
  }
  proc.write("11", "a file with a number for a name");
  const auto all = table.scan();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all.front().pid, 7);
}

// A process may end between any two steps: it is listed and then its folder is empty, or its file is.
TEST_F(FakeProcTest, LeavesOutWhatDiesWhileItIsListed) {
  addProcess(7, 1, 5);
  proc.folder("8");
  proc.write("9/stat", "");
  proc.write("10/stat", "10 (x) S 1");
  proc.folder("11/stat");
  fs::create_symlink("/nowhere", proc.folder("12") / "stat");
  const auto all = table.scan();
  ASSERT_EQ(all.size(), 1U);
  EXPECT_EQ(all.front().pid, 7);
  for (const Pid pid : {8, 9, 10, 11, 12, 13}) {
    EXPECT_FALSE(table.record(pid)) << pid;
    EXPECT_FALSE(table.cpuTime(pid)) << pid;
    EXPECT_FALSE(table.schedulerPriority(pid)) << pid;
    EXPECT_FALSE(table.footprint(pid)) << pid;
    EXPECT_FALSE(table.executablePathBytes(pid)) << pid;
  }
}

TEST_F(FakeProcTest, NeverWaitsForAFileThatIsNone) {
  ASSERT_EQ(::mkfifo((proc.folder("7") / "stat").c_str(), 0600), 0);
  EXPECT_FALSE(table.record(7));
  EXPECT_TRUE(table.scan().empty());
}

TEST_F(FakeProcTest, ListsMoreProcessesThanOneReadHolds) {
  addProcess(2, 1, 5);
  for (int pid = 3; pid < 1502; ++pid) fs::create_directory_symlink("2", proc.path() / std::to_string(pid));
  EXPECT_EQ(table.scan().size(), 1500U);
}

TEST_F(FakeProcTest, AddsResidentAndSwappedMemory) {
  EXPECT_EQ(footprintWith("Name:\tx\nRssAnon:\t     100 kB\nRssFile:\t 7 kB\nVmSwap:\t      20 kB\n"),
            120U * 1024);
}

TEST_F(FakeProcTest, HasNoFootprintWithoutBothNumbers) {
  for (const char* status :
       {"", "Name:\tkthreadd\n", "Name:\tx\nRssAnon:\t100 kB\n", "Name:\tx\nVmSwap:\t100 kB\n",
        "Name:\tx\nRssAnon:\nVmSwap:\n", "Name:\tx\nRssAnon:\t\nVmSwap:\tx kB\n",
        "Name:\tx\nRssAnon:\t18446744073709551615 kB\nVmSwap:\t0 kB\n",
        "Name:\tx\nRssAnon:\t-1 kB\nVmSwap:\t0 kB\n", "RssAnon:\t1 kB\\nVmSwap:\t1 kB"}) {
    EXPECT_FALSE(footprintWith(status)) << status;
  }
}

TEST_F(FakeProcTest, AnswersNothingWithoutAProcfs) {
  for (const std::string& root :
       {proc.path().string() + "/none", proc.write("file", "").string(), std::string()}) {
    const ProcfsProcessTable none(BootEpoch(0), root);
    EXPECT_TRUE(none.scan().empty());
    EXPECT_FALSE(none.record(::getpid()));
    EXPECT_FALSE(none.executablePathBytes(::getpid()));
    EXPECT_FALSE(none.footprint(::getpid()));
  }
}

} // namespace
} // namespace vantle
