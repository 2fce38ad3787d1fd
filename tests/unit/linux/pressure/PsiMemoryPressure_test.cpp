// SPDX-License-Identifier: MIT
#include "platform/linux/pressure/PsiMemoryPressure.h"

#include "platform/shared/PollEventLoop.h"
#include "tests/support/Program.h"
#include "tests/support/Props.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace vantle {
namespace {

using namespace std::chrono_literals;
using desktop::guardLimit;
using desktop::Program;
using desktop::Start;
using desktop::TemporaryFolder;
using testing::Each;
namespace fs = std::filesystem;

// The one wait itself, and a disturbance by the machine.
constexpr long fewWaits = 3;

TEST(LevelFromPressureText, FollowsTheAveragesOverTenSeconds) {
  struct Row {
    const char* some;
    const char* full;
    int level;
  };
  for (const Row& row : {Row{"0.00", "0.00", 1}, Row{"7.49", "0.00", 1}, Row{"7.50", "0.00", 2},
                         Row{"30.00", "14.99", 2}, Row{"30.00", "15.00", 4}, Row{"100.00", "100.00", 4}}) {
    const std::string text = std::string("some avg10=") + row.some + " avg60=99.00 avg300=99.00 total=1\n" +
                             "full avg10=" + row.full + " avg60=99.00 avg300=99.00 total=1\n";
    EXPECT_EQ(levelFromPressureText(text), row.level) << text;
  }
}

TEST(LevelFromPressureText, WhatIsNoPressureHasNoLevel) {
  for (const char* text :
       {"", "\n", "some", "some avg10=", "some avg10=x avg60=1", "full avg10=50.00 avg60=0.00",
        "some avg60=50.00 avg10=1.00", "something avg10=50.00"}) {
    EXPECT_EQ(levelFromPressureText(text), std::nullopt) << text;
  }
  // Processors have no "full" line on older kernels.
  EXPECT_EQ(levelFromPressureText("some avg10=50.00 avg60=0.00 avg300=0.00 total=1"), 2);
}

TEST(PsiMemoryPressure, WithoutPsiThereIsNoLevelAndNoSource) {
  PollEventLoop loop;
  const TemporaryFolder folder;
  for (const fs::path& path : {folder.path() / "nothing", folder.path(), fs::path("/dev/null")}) {
    PsiMemoryPressure pressure(loop, path.string());
    EXPECT_EQ(pressure.level(), std::nullopt) << path;
  }
  PsiMemoryPressure pressure(loop, (folder.path() / "nothing").string());
  EXPECT_EQ(pressure.watch([](bool) { FAIL(); }), nullptr);
}

// A control group with a measure of pressure of its own.
class MemoryGroup {
 public:
  static std::unique_ptr<MemoryGroup> make() {
    const std::string name = "vantle-test-" + std::to_string(::getpid());
    auto group = std::make_unique<MemoryGroup>();
    for (const fs::path& root : {fs::path("/sys/fs/cgroup"), fs::path("/sys/fs/cgroup/unified")}) {
      if (!fs::exists(root / "cgroup.controllers")) continue;
      group->m_pressure = root / name;
    }
    std::error_code error;
    fs::create_directory(group->m_pressure, error);
    return ::access(group->pressure().c_str(), W_OK) == 0 ? std::move(group) : nullptr;
  }
  MemoryGroup() = default;
  ~MemoryGroup() {
    m_program.reset(); // the last one is gone from the group a moment after its end
    desktop::waitUntil([this] { return ::rmdir(m_pressure.c_str()) == 0 || errno != EBUSY; });
  }
  MemoryGroup(const MemoryGroup&) = delete;
  MemoryGroup& operator=(const MemoryGroup&) = delete;

  std::string pressure() const { return (m_pressure / "memory.pressure").string(); }
  // Starts one program in it that stands still for memory and, until that file is there, one that works. They
  // share a processor, and the worker has precedence: whoever is hindered, it is not.
  void startStandstill(const fs::path& endOfWork) {
    Start start;
    start.command = {"/bin/sh",  "-c",      R"(echo $$ >"$0/cgroup.procs" && taskset -p -c 0 $$ >/dev/null &&
      { nice -n -15 sh -c 'while ! [ -e "$0" ]; do :; done' "$1" & } && exec "$2")",
                     m_pressure, endOfWork, desktop::memoryStaller()};
    start.environment = {{"PATH", "/usr/bin:/bin"}};
    m_program = std::make_unique<Program>(start);
  }
  void remove() const { ::rmdir(m_pressure.c_str()); }

 private:
  fs::path m_pressure;
  std::unique_ptr<Program> m_program;
};

struct RealPressure : testing::Test {
  void SetUp() override {
    group = MemoryGroup::make();
    if (!group) GTEST_SKIP() << "no control group with pressure of its own can be made here";
    pressure = std::make_unique<PsiMemoryPressure>(loop, group->pressure());
    source = pressure->watch([this](bool isCritical) { events.push_back(isCritical); });
    ASSERT_TRUE(source);
  }

  static long switches() {
    rusage usage{};
    ::getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_nvcsw;
  }

  PollEventLoop loop;
  std::unique_ptr<MemoryGroup> group;
  std::unique_ptr<PsiMemoryPressure> pressure;
  std::unique_ptr<MemoryPressureEvents::Source> source;
  std::vector<bool> events;
};

TEST_F(RealPressure, WithoutPressureNothingWakesTheProgram) {
  EXPECT_EQ(pressure->level(), 1);
  const long before = switches();
  loop.runUntil([] { return false; }, 500ms);
  EXPECT_LE(switches() - before, fewWaits);
  EXPECT_TRUE(events.empty());
}

TEST_F(RealPressure, AGroupThatIsGoneIsNotWatchedAnyMore) {
  group->remove();
  loop.runUntil([] { return false; }, 100ms);
  const long before = switches();
  loop.runUntil([] { return false; }, 300ms);
  EXPECT_LE(switches() - before, fewWaits); // it would be ready for ever
  EXPECT_TRUE(events.empty());
  EXPECT_EQ(pressure->level(), std::nullopt);
}

TEST_F(RealPressure, WarnsWhileOtherWorkGoesOnAndIsCriticalWhenAllStandsStill) {
  const TemporaryFolder folder;
  group->startStandstill(folder.path() / "end-of-work");
  ASSERT_TRUE(loop.runUntil([&] { return !events.empty() && pressure->level() == 2; }, guardLimit));
  EXPECT_THAT(events, Each(false)) << "the worker works all the time";

  folder.write("end-of-work", "");
  EXPECT_TRUE(loop.runUntil([&] { return std::find(events.begin(), events.end(), true) != events.end(); },
                            guardLimit));
  EXPECT_TRUE(loop.runUntil([&] { return pressure->level() == 4; }, guardLimit));
}

// What the program itself watches, whoever runs it.
TEST(PressureOfTheMachine, FiresForWhoeverStandsStill) {
  PollEventLoop loop;
  PsiMemoryPressure pressure(loop);
  if (!pressure.level()) GTEST_SKIP() << "this kernel measures no pressure";
  int events = 0;
  const auto source = pressure.watch([&](bool) { ++events; });
  ASSERT_TRUE(source);
  Start start;
  start.command = {desktop::memoryStaller()};
  const Program staller(start);
  EXPECT_TRUE(loop.runUntil([&] { return events > 0; }, guardLimit));
}

} // namespace
} // namespace vantle
