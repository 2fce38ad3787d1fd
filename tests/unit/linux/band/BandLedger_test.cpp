// SPDX-License-Identifier: MIT
// Where the ledger is kept when not every folder can be written.
#include "platform/linux/band/BandLedger.h"

#include "platform/posix/files/PosixFileStore.h"
#include "tests/support/TemporaryFolder.h"

#include <fstream>
#include <gtest/gtest.h>
#include <iterator>

namespace vantle {

namespace {

BandLedger::Unit entry(const std::string& name, std::uint64_t weight) {
  return {{name, "/x/" + name}, weight};
}

class BandLedgerTest : public testing::Test {
 protected:
  BandLedger open(std::vector<std::string> paths, const std::string& boot = "today") {
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
  const std::string m_empty = R"({"boot":"today","units":[],"sessions":[],"sets":[]})";
};

TEST_F(BandLedgerTest, IsKeptInTheFirstThatCanBeWritten) {
  EXPECT_TRUE(open({m_first, m_second}).add({entry("a.scope", 7)}));
  EXPECT_EQ(
      textOf(m_first),
      R"({"boot":"today","units":[{"name":"a.scope","path":"/x/a.scope","weight":7}],"sessions":[],"sets":[]})");
  EXPECT_EQ(textOf(m_second), "");
  std::filesystem::remove(m_first);
  EXPECT_TRUE(open({m_closed, m_second}).add({entry("a.scope", 7)}));
  EXPECT_EQ(open({m_closed, m_second}).units(), std::vector{entry("a.scope", 7)});
}

TEST_F(BandLedgerTest, IsReadFromAllOfThem) {
  EXPECT_TRUE(open({m_first}).add({entry("a.scope", 7)}));
  EXPECT_TRUE(open({m_second}).add({entry("b.scope", 8), entry("a.scope", 9)}));
  const BandLedger both = open({m_first, m_second});
  EXPECT_EQ(both.units(), (std::vector{entry("b.scope", 8), entry("a.scope", 9)}))
      << "a later one is written only while no earlier one can be";
  EXPECT_TRUE(open({m_first, m_second}, "tomorrow").units().empty());
}

TEST_F(BandLedgerTest, WhatTheFirstHasTakenOverTheOtherHoldsNoLonger) {
  EXPECT_TRUE(open({m_second}).add({entry("a.scope", 7)}));
  BandLedger both = open({m_first, m_second});
  EXPECT_TRUE(both.add({entry("b.scope", 8)}));
  EXPECT_EQ(textOf(m_second), m_empty);
  both.remove("a.scope");
  both.remove("b.scope");
  EXPECT_TRUE(both.save());
  EXPECT_EQ(textOf(m_first), m_empty);
  EXPECT_TRUE(open({m_first, m_second}).units().empty());
}

TEST_F(BandLedgerTest, KeepsSessionsAndSetsAsWell) {
  const auto set = [](const char* list) { return *ProcessorSet::parse(list); };
  BandLedger ledger = open({m_first});
  ledger.addSession(12);
  ledger.addSession(7);
  EXPECT_TRUE(ledger.addSet(set("0,2-3,8191")));
  EXPECT_EQ(textOf(m_first), R"({"boot":"today","units":[],"sessions":[7,12],"sets":["0,2-3,8191"]})");
  EXPECT_EQ(open({m_first}).sessions(), (std::set<long>{7, 12}));
  EXPECT_EQ(open({m_first}).sets(), std::vector{set("0,2-3,8191")});
  ledger.removeSession(7);
  EXPECT_TRUE(ledger.save());
  EXPECT_EQ(open({m_first}).sessions(), std::set<long>{12});
  EXPECT_TRUE(open({m_first}, "tomorrow").sets().empty());
  BandLedger closed = open({m_closed});
  EXPECT_FALSE(closed.addSet(set("1")));
  EXPECT_TRUE(closed.sets().empty());
}

TEST_F(BandLedgerTest, TakesOnlyWhatItUnderstands) {
  m_files.createFolders((m_folder.path() / "data").string());
  std::ofstream(m_first) << R"({"boot":"today","units":[1,{}],"sessions":[3,"4",null,5.5],)"
                         << R"("sets":["1-0","x",7,"","2"]})";
  const BandLedger ledger = open({m_first});
  EXPECT_TRUE(ledger.units().empty());
  EXPECT_EQ(ledger.sessions(), std::set<long>{3});
  EXPECT_EQ(ledger.sets(), std::vector{*ProcessorSet::parse("2")});
}

TEST_F(BandLedgerTest, AStandInThatIsNeedlessIsNeverMade) {
  BandLedger both = open({m_first, m_second});
  EXPECT_TRUE(both.add({entry("a.scope", 7)}));
  both.remove("a.scope");
  EXPECT_TRUE(both.save());
  EXPECT_FALSE(std::filesystem::exists(m_second));
}

TEST_F(BandLedgerTest, HoldsNothingThatWasNotWritten) {
  BandLedger closed = open({m_closed});
  EXPECT_FALSE(closed.add({entry("a.scope", 7)}));
  EXPECT_EQ(closed.find("a.scope"), nullptr);
  BandLedger memory = open({});
  EXPECT_TRUE(memory.add({entry("a.scope", 7)}));
  EXPECT_NE(memory.find("a.scope"), nullptr);
}

} // namespace

} // namespace vantle
