// SPDX-License-Identifier: MIT
// Where the ledger is kept when not every folder can be written.
#include "platform/linux/band/UnitLedger.h"

#include "platform/linux/files/PosixFileStore.h"
#include "tests/desktop/harness/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace vantle {

namespace {

UnitLedger::Entry entry(const std::string& name, std::uint64_t weight) {
  return {{name, "/x/" + name}, weight};
}

class UnitLedgerTest : public testing::Test {
 protected:
  UnitLedger open(std::vector<std::string> paths, const std::string& boot = "today") {
    return {m_files, std::move(paths), boot};
  }
  static std::string textOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  desktop::TemporaryFolder m_folder;
  PosixFileStore m_files{"/nonexistent", PosixFileStore::Sync::none};
  const std::string m_first = (m_folder.path() / "data/band.json").string();
  const std::string m_second = (m_folder.path() / "run/band.json").string();
  const std::string m_closed = "/proc/vantle/band.json"; // where nobody can write
  const std::string m_empty = R"({"boot":"today","units":[]})";
};

TEST_F(UnitLedgerTest, IsKeptInTheFirstThatCanBeWritten) {
  EXPECT_TRUE(open({m_first, m_second}).add({entry("a.scope", 7)}));
  EXPECT_EQ(textOf(m_first),
            R"({"boot":"today","units":[{"name":"a.scope","path":"/x/a.scope","weight":7}]})");
  EXPECT_EQ(textOf(m_second), "");
  std::filesystem::remove(m_first);
  EXPECT_TRUE(open({m_closed, m_second}).add({entry("a.scope", 7)}));
  EXPECT_EQ(open({m_closed, m_second}).entries(), std::vector{entry("a.scope", 7)});
}

TEST_F(UnitLedgerTest, IsReadFromAllOfThem) {
  EXPECT_TRUE(open({m_first}).add({entry("a.scope", 7)}));
  EXPECT_TRUE(open({m_second}).add({entry("b.scope", 8), entry("a.scope", 9)}));
  const UnitLedger both = open({m_first, m_second});
  EXPECT_EQ(both.entries(), (std::vector{entry("b.scope", 8), entry("a.scope", 9)}))
      << "a later one is written only while no earlier one can be";
  EXPECT_TRUE(open({m_first, m_second}, "tomorrow").entries().empty());
}

TEST_F(UnitLedgerTest, WhatTheFirstHasTakenOverTheOtherHoldsNoLonger) {
  EXPECT_TRUE(open({m_second}).add({entry("a.scope", 7)}));
  UnitLedger both = open({m_first, m_second});
  EXPECT_TRUE(both.add({entry("b.scope", 8)}));
  EXPECT_EQ(textOf(m_second), m_empty);
  both.remove("a.scope");
  both.remove("b.scope");
  EXPECT_TRUE(both.save());
  EXPECT_EQ(textOf(m_first), m_empty);
  EXPECT_TRUE(open({m_first, m_second}).entries().empty());
}

TEST_F(UnitLedgerTest, AStandInThatIsNeedlessIsNeverMade) {
  UnitLedger both = open({m_first, m_second});
  EXPECT_TRUE(both.add({entry("a.scope", 7)}));
  both.remove("a.scope");
  EXPECT_TRUE(both.save());
  EXPECT_FALSE(std::filesystem::exists(m_second));
}

TEST_F(UnitLedgerTest, HoldsNothingThatWasNotWritten) {
  UnitLedger closed = open({m_closed});
  EXPECT_FALSE(closed.add({entry("a.scope", 7)}));
  EXPECT_EQ(closed.find("a.scope"), nullptr);
  UnitLedger memory = open({});
  EXPECT_TRUE(memory.add({entry("a.scope", 7)}));
  EXPECT_NE(memory.find("a.scope"), nullptr);
}

} // namespace

} // namespace vantle
