// SPDX-License-Identifier: MIT
// When one look at the processes may serve twice.
#include "platform/linux/kernel/ProcKernel.h"
#include "tests/desktop/harness/TemporaryFolder.h"

#include <gtest/gtest.h>

namespace vantle {
namespace {

class ProcKernelTest : public testing::Test {
 protected:
  void addProcess(int pid) {
    proc.write(std::to_string(pid) + "/stat",
               std::to_string(pid) + " (x) S 1 1 1 0 -1 0 0 0 0 0 3 4 0 0 20 0 1 0 55 0 0\n");
  }
  void setLastPid(int pid) { proc.write("loadavg", "0.20 0.18 0.12 1/80 " + std::to_string(pid) + "\n"); }

  desktop::TemporaryFolder proc;
};

TEST_F(ProcKernelTest, ALookServesAgainUntilSomebodyIsBorn) {
  addProcess(7);
  setLastPid(7);
  const ProcKernel files(proc.path().string());
  ASSERT_EQ(files.scan().size(), 1U);
  addProcess(8);
  EXPECT_EQ(files.recentScan().size(), 1U) << "the kernel says that nobody was born";
  setLastPid(8);
  EXPECT_EQ(files.recentScan().size(), 2U);
  EXPECT_EQ(files.birthMark(), 8);
}

TEST_F(ProcKernelTest, WhereTheKernelDoesNotSayEachLookIsNew) {
  for (const char* load : {"", "nonsense", "0.20 0.18 0.12 1/80 x\n"}) {
    addProcess(7);
    proc.write("loadavg", load);
    const ProcKernel files(proc.path().string());
    EXPECT_EQ(files.birthMark(), std::nullopt) << load;
    ASSERT_EQ(files.scan().size(), 1U);
    addProcess(8);
    EXPECT_EQ(files.recentScan().size(), 2U) << load;
    std::filesystem::remove_all(proc.path() / "8");
  }
}

TEST_F(ProcKernelTest, WithoutALookBeforeTheFirstIsNew) {
  addProcess(7);
  setLastPid(7);
  EXPECT_EQ(ProcKernel(proc.path().string()).recentScan().size(), 1U);
}

} // namespace
} // namespace vantle
