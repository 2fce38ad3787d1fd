// SPDX-License-Identifier: MIT
// When one look at the processes may serve twice.
#include "platform/linux/kernel/ProcKernel.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <thread>

namespace vantle {
namespace {

TEST(BirthMark, IsThePidThatWasGivenOutLast) {
  const desktop::TemporaryFolder proc;
  proc.write("loadavg", "0.20 0.18 0.12 1/80 7\n");
  const ProcKernel files(proc.path().string());
  EXPECT_EQ(files.birthMark(), 7);
  EXPECT_EQ(files.birthMark(), 7) << "nobody was born";
  proc.write("loadavg", "0.20 0.18 0.12 1/80 8123\n");
  EXPECT_EQ(files.birthMark(), 8123);
}

TEST(BirthMark, IsAbsentWhereTheKernelDoesNotSay) {
  for (const char* load : {"", "nonsense", "0.20 0.18 0.12 1/80 x\n", "0.20 0.18 0.12 1/80 0\n"}) {
    const desktop::TemporaryFolder proc;
    proc.write("loadavg", load);
    EXPECT_EQ(ProcKernel(proc.path().string()).birthMark(), std::nullopt) << load;
  }
  EXPECT_EQ(ProcKernel("/nonexistent").birthMark(), std::nullopt);
}

TEST(BirthMark, ChangesWithEveryProcessAndThread) {
  const ProcKernel kernel;
  const auto first = kernel.birthMark();
  ASSERT_TRUE(first);
  const test::ForkedProcess child;
  const auto second = kernel.birthMark();
  EXPECT_NE(second, first);
  std::thread([] {}).join();
  EXPECT_NE(kernel.birthMark(), second);
}

} // namespace
} // namespace vantle
