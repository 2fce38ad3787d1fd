// SPDX-License-Identifier: MIT
#include "platform/linux/process/BootEpoch.h"

#include "platform/linux/kernel/ProcKernel.h"
#include "platform/posix/files/PosixFileStore.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

#include <chrono>
#include <ctime>
#include <gtest/gtest.h>
#include <sys/stat.h>

namespace vantle {
namespace {

constexpr std::uint64_t hour = 3'600'000'000;

std::uint64_t bootMicrosByTheWallClock() {
  timespec wall{};
  timespec boot{};
  ::clock_gettime(CLOCK_REALTIME, &wall);
  ::clock_gettime(CLOCK_BOOTTIME, &boot);
  return static_cast<std::uint64_t>((wall.tv_sec - boot.tv_sec) * 1'000'000 +
                                    (wall.tv_nsec - boot.tv_nsec) / 1'000);
}

class BootEpochTest : public testing::Test {
 protected:
  BootEpoch load() { return BootEpoch::load(files, {first, second}, bootId); }
  std::string record(const std::string& boot, const std::string& epoch) {
    return R"({"bootId":")" + boot + R"(","epochMicros":)" + epoch + "}";
  }

  desktop::TemporaryFolder folder;
  PosixFileStore files{folder.path(), PosixFileStore::Sync::none};
  std::string bootId = "this-boot";
  std::string first = folder.path() / "Vantle/boot.json";
  std::string second = folder.path() / "runtime.json";
};

TEST_F(BootEpochTest, IsTheMomentOfBootByTheWallClock) {
  EXPECT_NEAR(static_cast<double>(load().micros()), static_cast<double>(bootMicrosByTheWallClock()), 60e6);
}

TEST_F(BootEpochTest, StaysTheSameForTheWholeBoot) {
  const std::uint64_t micros = load().micros();
  EXPECT_EQ(load().micros(), micros);
  EXPECT_EQ(load().micros(), micros);
}

// What setting the wall clock by an hour looks like: the record was taken under the other time.
TEST_F(BootEpochTest, DoesNotMoveWithTheWallClock) {
  const std::uint64_t earlier = bootMicrosByTheWallClock() - hour;
  folder.write("Vantle/boot.json", record("this-boot", std::to_string(earlier)));
  EXPECT_EQ(load().micros(), earlier);
}

TEST_F(BootEpochTest, IsAnotherOneInAnotherBoot) {
  folder.write("Vantle/boot.json", record("last-boot", std::to_string(bootMicrosByTheWallClock() - hour)));
  const std::uint64_t micros = load().micros();
  EXPECT_NEAR(static_cast<double>(micros), static_cast<double>(bootMicrosByTheWallClock()), 60e6);
  EXPECT_EQ(load().micros(), micros);
}

TEST_F(BootEpochTest, ReplacesWhatIsNoRecord) {
  const std::string contents[] = {"",
                                  "{",
                                  "[]",
                                  "null",
                                  "\xff\xfe",
                                  R"({"bootId":"this-boot"})",
                                  R"({"epochMicros":5})",
                                  record("this-boot", "-5"),
                                  record("this-boot", "1.5"),
                                  record("this-boot", "\"5\""),
                                  record("this-boot", "18446744073709551615"), // start times would overflow
                                  record("this-boot", "99999999999999999999999"),
                                  R"({"bootId":7,"epochMicros":5})",
                                  std::string(5000, ' ') + record("this-boot", "5"),
                                  std::string(1000, '[')};
  for (const std::string& bytes : contents) {
    folder.write("Vantle/boot.json", bytes);
    const std::uint64_t micros = load().micros();
    EXPECT_NEAR(static_cast<double>(micros), static_cast<double>(bootMicrosByTheWallClock()), 60e6) << bytes;
    EXPECT_EQ(load().micros(), micros) << bytes;
  }
}

TEST_F(BootEpochTest, IsKeptInTheSecondPlaceWhenTheFirstCannotBeWritten) {
  folder.write("Vantle", "a file where the folder should be");
  const std::uint64_t micros = load().micros();
  EXPECT_TRUE(files.exists(second));
  EXPECT_EQ(load().micros(), micros);
}

TEST_F(BootEpochTest, PrefersTheFirstPlaceAndFindsTheSecondLaterOn) {
  folder.write("runtime.json", record("this-boot", "1000"));
  EXPECT_EQ(load().micros(), 1000U);
  folder.write("Vantle/boot.json", record("this-boot", "2000"));
  EXPECT_EQ(load().micros(), 2000U);
}

TEST_F(BootEpochTest, WorksForTheRunWhenNothingCanBeWritten) {
  const auto check = [&]() -> std::string {
    const std::uint64_t micros = BootEpoch::load(files, {first, second}, bootId).micros();
    const auto off = static_cast<std::int64_t>(micros - bootMicrosByTheWallClock());
    if (std::abs(off) > 60'000'000) return "wrong by " + std::to_string(off);
    return files.exists(first) || files.exists(second) ? "something was written" : "";
  };
  ::chmod(folder.path().c_str(), 0555);
  EXPECT_EQ(test::asOrdinaryUser(check), "");
  ::chmod(folder.path().c_str(), 0700);
}

TEST_F(BootEpochTest, IsNotKeptWhenTheBootHasNoName) {
  bootId.clear();
  load();
  EXPECT_FALSE(files.exists(first));
}

TEST_F(BootEpochTest, ReadsTheNameThatTheKernelGivesTheBoot) {
  bootId = ProcKernel().bootId();
  const std::uint64_t micros = load().micros();
  EXPECT_TRUE(files.exists(first));
  EXPECT_EQ(load().micros(), micros);
}

} // namespace
} // namespace vantle
