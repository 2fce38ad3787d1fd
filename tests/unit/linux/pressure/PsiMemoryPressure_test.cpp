// SPDX-License-Identifier: MIT
#include "platform/linux/pressure/PsiMemoryPressure.h"

#include "platform/shared/PollEventLoop.h"
#include "tests/desktop/harness/TemporaryFolder.h"
#include "tests/desktop/harness/Wait.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
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
using desktop::TemporaryFolder;
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

// A control group with pressure and, if asked for, a memory limit of its own, in either edition of the
// groups.
class MemoryGroup {
 public:
  static std::unique_ptr<MemoryGroup> make() {
    const std::string name = "vantle-test-" + std::to_string(::getpid());
    auto group = std::make_unique<MemoryGroup>();
    for (const fs::path& root : {fs::path("/sys/fs/cgroup"), fs::path("/sys/fs/cgroup/unified")}) {
      if (!fs::exists(root / "cgroup.controllers")) continue;
      group->m_pressure = root / name;
      group->m_limit = root / name; // memory.max, when the controller is there
    }
    if (fs::exists("/sys/fs/cgroup/memory/memory.limit_in_bytes")) {
      group->m_limit = fs::path("/sys/fs/cgroup/memory") / name;
    }
    std::error_code error;
    fs::create_directory(group->m_pressure, error);
    fs::create_directory(group->m_limit, error);
    return ::access(group->pressure().c_str(), W_OK) == 0 ? std::move(group) : nullptr;
  }
  ~MemoryGroup() { remove(); }

  std::string pressure() const { return (m_pressure / "memory.pressure").string(); }
  bool limit(const std::string& bytes) const {
    for (const char* name : {"memory.limit_in_bytes", "memory.max"}) {
      const fs::path file = m_limit / name;
      if (fs::exists(file) && (std::ofstream(file) << bytes << std::flush)) return true;
    }
    return false;
  }
  std::vector<std::string> memberFiles() const {
    return {(m_pressure / "cgroup.procs").string(), (m_limit / "cgroup.procs").string()};
  }
  void remove() const {
    ::rmdir(m_pressure.c_str());
    ::rmdir(m_limit.c_str());
  }

 private:
  fs::path m_pressure;
  fs::path m_limit;
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

} // namespace
} // namespace vantle
