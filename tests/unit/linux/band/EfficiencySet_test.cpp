// SPDX-License-Identifier: MIT
#include "platform/linux/band/EfficiencySet.h"
#include "platform/linux/kernel/ProcKernel.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace vantle {

namespace {

// A machine's processors as files.
class SysTree : public testing::Test {
 protected:
  void SetUp() override {
    std::string pattern = (std::filesystem::temp_directory_path() / "vantle-sys-XXXXXX").string();
    ASSERT_NE(::mkdtemp(pattern.data()), nullptr);
    m_root = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(m_root); }

  void put(const std::string& path, const std::string& text) const {
    std::filesystem::create_directories(std::filesystem::path(m_root + path).parent_path());
    std::ofstream(m_root + path) << text << '\n';
  }
  void online(const std::string& list) const { put("/devices/system/cpu/online", list); }
  void ofProcessor(int cpu, const std::string& file, const std::string& text) const {
    put("/devices/system/cpu/cpu" + std::to_string(cpu) + "/" + file, text);
  }
  std::vector<std::size_t> chosen() const {
    const EfficiencySet set = EfficiencySet::read(ProcKernel("/proc", m_root));
    std::vector<std::size_t> list;
    for (std::size_t cpu = 0; cpu < ProcessorSet::most; ++cpu) {
      if (set.chosen.contains(cpu)) list.push_back(cpu);
    }
    return list;
  }

  std::string m_root;
};

using List = std::vector<std::size_t>;

TEST_F(SysTree, OneProcessorHasNothingToSpare) {
  online("0");
  EXPECT_EQ(chosen(), List{});
}

TEST_F(SysTree, TheLastQuarterOfTheCoresRoundedUp) {
  const std::vector<std::pair<std::string, List>> cases = {
      {"0-1", {1}}, {"0-2", {2}}, {"0-3", {3}}, {"0-4", {3, 4}}, {"0-7", {6, 7}}, {"0-8", {6, 7, 8}}};
  for (const auto& [list, expected] : cases) {
    online(list);
    EXPECT_EQ(chosen(), expected) << list;
  }
}

TEST_F(SysTree, ThreadsOfACoreStayTogether) {
  online("0-7");
  for (int cpu = 0; cpu < 8; ++cpu) {
    ofProcessor(cpu, "topology/thread_siblings_list",
                std::to_string(cpu % 4) + "," + std::to_string(cpu % 4 + 4));
  }
  EXPECT_EQ(chosen(), (List{3, 7}));
}

TEST_F(SysTree, OneCoreWithTwoThreadsIsNotSplit) {
  online("0-1");
  ofProcessor(0, "topology/thread_siblings_list", "0-1");
  ofProcessor(1, "topology/thread_siblings_list", "0-1");
  EXPECT_EQ(chosen(), List{});
}

TEST_F(SysTree, ProcessorsThatAreOffDoNotCount) {
  online("0,2,5-6");
  EXPECT_EQ(chosen(), List{6});
}

TEST_F(SysTree, EfficiencyCoresOfAHybridProcessor) {
  online("0-11");
  put("/devices/cpu_core/cpus", "0-3");
  put("/devices/cpu_atom/cpus", "4-11");
  EXPECT_EQ(chosen(), (List{4, 5, 6, 7, 8, 9, 10, 11}));
}

TEST_F(SysTree, EfficiencyCoresThatAreAllOffLeaveTheRule) {
  online("0-3");
  put("/devices/cpu_atom/cpus", "4-11");
  EXPECT_EQ(chosen(), List{3});
}

TEST_F(SysTree, OnlyEfficiencyCoresAreNeverAllTaken) {
  online("0-3");
  put("/devices/cpu_atom/cpus", "0-3");
  EXPECT_EQ(chosen(), List{3});
}

TEST_F(SysTree, TheSmallestOfUnequalCores) {
  online("0-5");
  for (int cpu = 0; cpu < 4; ++cpu) ofProcessor(cpu, "cpu_capacity", "446");
  for (int cpu = 4; cpu < 6; ++cpu) ofProcessor(cpu, "cpu_capacity", "1024");
  EXPECT_EQ(chosen(), (List{0, 1, 2, 3}));
}

TEST_F(SysTree, EqualCapacitiesSayNothing) {
  online("0-3");
  for (int cpu = 0; cpu < 4; ++cpu) ofProcessor(cpu, "cpu_capacity", "1024");
  EXPECT_EQ(chosen(), List{3});
}

TEST_F(SysTree, NonsenseIsNoSet) {
  for (const char* text : {"", "x", "3-1", "0-", "-1", "0-99999999999", "0,,1", "1 2"}) {
    online(text);
    EXPECT_EQ(chosen(), List{}) << text;
  }
  EXPECT_TRUE(EfficiencySet::read(ProcKernel("/proc", "/nonexistent")).chosen.empty());
}

} // namespace

} // namespace vantle
