// SPDX-License-Identifier: MIT
// What the process table makes of a procfs that shows what no test can make the real one show.
#include "platform/linux/process/ProcfsProcessTable.h"
#include "tests/desktop/harness/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

namespace vantle {
namespace {

namespace fs = std::filesystem;

std::string statOf(int pid, const std::string& name, int parent, std::uint64_t start) {
  return std::to_string(pid) + " (" + name + ") S " + std::to_string(parent) +
         " 1 1 0 -1 0 0 0 0 0 17 23 0 0 20 0 1 0 " + std::to_string(start) + " 0 0\n";
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

TEST_F(FakeProcTest, addsTheTicksToTheEpoch) {
  addProcess(7, 1, 12'345);
  const auto record = table.record(7);
  ASSERT_TRUE(record);
  // 1,000,000.5 s after the epoch, and 123.45 s after that.
  EXPECT_EQ(record->startSec, 1'000'123U);
  EXPECT_EQ(record->startUsec, 950'000U);
}

TEST_F(FakeProcTest, listsOnlyWhatIsAProcess) {
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
TEST_F(FakeProcTest, leavesOutWhatDiesWhileItIsListed) {
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

TEST_F(FakeProcTest, neverWaitsForAFileThatIsNone) {
  ASSERT_EQ(::mkfifo((proc.folder("7") / "stat").c_str(), 0600), 0);
  EXPECT_FALSE(table.record(7));
  EXPECT_TRUE(table.scan().empty());
}

TEST_F(FakeProcTest, listsMoreProcessesThanOneReadHolds) {
  addProcess(2, 1, 5);
  for (int pid = 3; pid < 1502; ++pid) fs::create_directory_symlink("2", proc.path() / std::to_string(pid));
  EXPECT_EQ(table.scan().size(), 1500U);
}

TEST_F(FakeProcTest, addsResidentAndSwappedMemory) {
  EXPECT_EQ(footprintWith("Name:\tx\nRssAnon:\t     100 kB\nRssFile:\t 7 kB\nVmSwap:\t      20 kB\n"),
            120U * 1024);
}

TEST_F(FakeProcTest, hasNoFootprintWithoutBothNumbers) {
  for (const char* status :
       {"", "Name:\tkthreadd\n", "Name:\tx\nRssAnon:\t100 kB\n", "Name:\tx\nVmSwap:\t100 kB\n",
        "Name:\tx\nRssAnon:\nVmSwap:\n", "Name:\tx\nRssAnon:\t\nVmSwap:\tx kB\n",
        "Name:\tx\nRssAnon:\t18446744073709551615 kB\nVmSwap:\t0 kB\n",
        "Name:\tx\nRssAnon:\t-1 kB\nVmSwap:\t0 kB\n", "RssAnon:\t1 kB\\nVmSwap:\t1 kB"}) {
    EXPECT_FALSE(footprintWith(status)) << status;
  }
}

TEST_F(FakeProcTest, answersNothingWithoutAProcfs) {
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
