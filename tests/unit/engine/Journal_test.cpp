// SPDX-License-Identifier: MIT
#include "engine/Journal.h"

#include "platform/simulated/SimulatedMachine.h"

#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>

namespace vantle {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

constexpr ProcessIdentity one{812, 1'800'000'000, 5};
constexpr ProcessIdentity other{813, 1'800'000'000, 6};
constexpr const char* oneText = R"({"pid":812,"startSec":1800000000,"startUsec":5})";
constexpr const char* otherText = R"({"pid":813,"startSec":1800000000,"startUsec":6})";

class JournalTest : public testing::Test {
 protected:
  SimulatedMachine machine;
  const std::string folder = machine.files.applicationSupport() + "/Vantle";
  const std::string path = folder + "/journal.json";
  const std::string formerFolder = machine.files.applicationSupport() + "/Murn";
  const std::string formerPath = formerFolder + "/kayit.json";

  std::string& file() { return machine.files.contents[path]; }
  void restoreAll(Journal& journal) { journal.restoreAllAndClear(machine.processes, machine.band); }
  static std::string arrayOf(const std::string& elements) { return "[" + elements + "]"; }
};

TEST_F(JournalTest, AFirstStartMakesTheFolderAndLeavesAnEmptyArray) {
  Journal journal(machine.files);
  EXPECT_EQ(journal.url(), path);
  EXPECT_TRUE(machine.files.folders.contains(folder));
  EXPECT_THAT(journal.entries(), IsEmpty());
  EXPECT_FALSE(machine.files.contents.contains(path));
  restoreAll(journal);
  EXPECT_EQ(file(), "[]");
}

TEST_F(JournalTest, AnIdentityIsWrittenCompactlyWithItsKeysInOrder) {
  Journal journal(machine.files);
  journal.add({one});
  EXPECT_EQ(file(), arrayOf(oneText));
}

TEST_F(JournalTest, NumbersUpToTheirWholeRangeSurvive) {
  const ProcessIdentity extreme{2147483647, 18446744073709551615U, 18446744073709551615U};
  Journal(machine.files).add({extreme});
  EXPECT_EQ(file(),
            R"([{"pid":2147483647,"startSec":18446744073709551615,"startUsec":18446744073709551615}])");
  EXPECT_THAT(Journal(machine.files).entries(), UnorderedElementsAre(extreme));
}

TEST_F(JournalTest, WhatOneRunWroteTheNextOneReads) {
  Journal(machine.files).add({one, other});
  EXPECT_THAT(Journal(machine.files).entries(), UnorderedElementsAre(one, other));
}

TEST_F(JournalTest, AddingNothingLeavesTheFileUntouched) {
  Journal journal(machine.files);
  file() = "not mine";
  journal.add({});
  journal.remove({});
  EXPECT_EQ(file(), "not mine");
}

TEST_F(JournalTest, RemovingTheUnknownRewritesTheSameContent) {
  Journal journal(machine.files);
  journal.add({one});
  file() = "changed behind its back";
  journal.remove({other});
  EXPECT_EQ(file(), arrayOf(oneText));
}

TEST_F(JournalTest, RemovingTakesOutExactlyWhatIsNamed) {
  Journal journal(machine.files);
  journal.add({one, other});
  journal.remove({one});
  EXPECT_EQ(file(), arrayOf(otherText));
  journal.remove({other});
  EXPECT_EQ(file(), "[]");
}

TEST_F(JournalTest, AProcessThatExitedIsDroppedWithoutACall) {
  file() = arrayOf(oneText);
  Journal journal(machine.files);
  machine.calls.startTrace();
  restoreAll(journal);
  EXPECT_THAT(machine.calls.takeTrace(),
              testing::ElementsAre("processes.record 812", "files.write " + path + " []"));
}

TEST_F(JournalTest, AReusedPidIsDroppedAndItsProcessNotTouched) {
  file() = R"([{"pid":812,"startSec":1700000000,"startUsec":5}])";
  machine.processes.spawn({.pid = 812});
  machine.band.putInByOthers(812);
  Journal journal(machine.files);
  restoreAll(journal);
  EXPECT_TRUE(machine.band.isIn(812));
  EXPECT_EQ(file(), "[]");
}

TEST_F(JournalTest, ALiveProcessComesOutOfTheBand) {
  const Pid pid = machine.processes.spawn({});
  machine.band.enterBackgroundBand(pid);
  Journal(machine.files).add({machine.processes.find(pid)->identity()});
  Journal next(machine.files);
  restoreAll(next);
  EXPECT_FALSE(machine.band.isIn(pid));
  EXPECT_EQ(file(), "[]");
  EXPECT_THAT(next.entries(), IsEmpty());
}

TEST_F(JournalTest, ARefusedRestoreIsForgottenAllTheSame) {
  const Pid pid = machine.processes.spawn({});
  Journal(machine.files).add({machine.processes.find(pid)->identity()});
  machine.calls.refuse(Operation::leaveBand);
  Journal next(machine.files);
  restoreAll(next);
  EXPECT_EQ(file(), "[]");
}

TEST_F(JournalTest, TheFormerEditionsJournalIsMergedAndItsFolderDeleted) {
  machine.processes.spawn({.pid = 812});
  machine.processes.spawn({.pid = 813});
  machine.band.enterBackgroundBand(812);
  machine.band.enterBackgroundBand(813);
  machine.files.contents[formerPath] =
      R"([{"pid":812,"startSec":1800000000,"startUsec":0},{"pid":813,"startSec":1800000000,"startUsec":0}])";
  machine.files.contents[formerFolder + "/other.txt"] = "x";
  file() = arrayOf(oneText);
  Journal journal(machine.files);
  EXPECT_EQ(journal.entries().size(), 3U);
  EXPECT_FALSE(machine.files.contents.contains(formerPath));
  EXPECT_FALSE(machine.files.contents.contains(formerFolder + "/other.txt"));
  EXPECT_EQ(file(), arrayOf(oneText)) << "merging alone saves nothing";
  restoreAll(journal);
  EXPECT_FALSE(machine.band.isIn(812));
  EXPECT_FALSE(machine.band.isIn(813));
  EXPECT_EQ(file(), "[]");
}

TEST_F(JournalTest, ACorruptFormerJournalAddsNothingAndGoesAway) {
  machine.files.contents[formerPath] = "[{";
  Journal journal(machine.files);
  EXPECT_THAT(journal.entries(), IsEmpty());
  EXPECT_FALSE(machine.files.contents.contains(formerPath));
}

TEST_F(JournalTest, AnUnreadableFormerJournalGoesAwayToo) {
  machine.files.contents[formerPath] = arrayOf(oneText);
  machine.calls.refuse(Operation::readFile);
  Journal journal(machine.files);
  EXPECT_THAT(journal.entries(), IsEmpty());
  EXPECT_FALSE(machine.files.contents.contains(formerPath));
}

TEST_F(JournalTest, AFormerFolderThatCannotBeDeletedIsIgnored) {
  machine.files.contents[formerPath] = arrayOf(oneText);
  machine.calls.refuse(Operation::removeFolder);
  Journal journal(machine.files);
  EXPECT_THAT(journal.entries(), UnorderedElementsAre(one));
}

TEST_F(JournalTest, WithoutAFormerJournalItsFolderStays) {
  machine.files.contents[formerFolder + "/other.txt"] = "x";
  Journal journal(machine.files);
  EXPECT_TRUE(machine.files.contents.contains(formerFolder + "/other.txt"));
}

TEST_F(JournalTest, InAReadOnlyFolderItLivesInMemoryAndALaterSaveWritesItAll) {
  machine.calls.refuse(Operation::writeFile);
  machine.calls.refuse(Operation::createFolders);
  Journal journal(machine.files);
  journal.add({one});
  EXPECT_THAT(journal.entries(), UnorderedElementsAre(one));
  EXPECT_FALSE(machine.files.contents.contains(path));
  machine.calls.grantAll();
  journal.add({other});
  EXPECT_THAT(decodeJournal(file()).value(), UnorderedElementsAre(one, other));
}

struct Bytes {
  const char* what;
  std::string text;
};

class ForeignJournal : public testing::TestWithParam<Bytes> {};

TEST_P(ForeignJournal, LoadsAsEmptyAndIsReplacedAtStart) {
  SimulatedMachine machine;
  const std::string path = machine.files.applicationSupport() + "/Vantle/journal.json";
  machine.files.contents[path] = GetParam().text;
  Journal journal(machine.files);
  EXPECT_THAT(journal.entries(), IsEmpty());
  EXPECT_EQ(machine.files.contents[path], GetParam().text) << "loading must not write";
  journal.restoreAllAndClear(machine.processes, machine.band);
  EXPECT_EQ(machine.files.contents[path], "[]");
}

std::string withPid(const std::string& pid) {
  return R"([{"pid":)" + pid + R"(,"startSec":1,"startUsec":2}])";
}
std::string withSeconds(const std::string& seconds) {
  return R"([{"pid":812,"startSec":)" + seconds + R"(,"startUsec":2}])";
}
std::string withMicros(const std::string& micros) {
  return R"([{"pid":812,"startSec":1,"startUsec":)" + micros + "}]";
}

INSTANTIATE_TEST_SUITE_P(
    AllKinds, ForeignJournal,
    testing::Values(Bytes{"nothing", ""}, Bytes{"notJson", "hello"}, Bytes{"object", oneText},
                    Bytes{"number", "7"}, Bytes{"null", "null"},
                    Bytes{"truncated", R"([{"pid":812,"startSec":1,)"}, Bytes{"trailing", "[] x"},
                    Bytes{"binary", std::string("\0\xFF\xFE[", 4)},
                    Bytes{"oneGoodOneBad", std::string("[") + oneText + ",7]"}, Bytes{"arrayInside", "[[]]"},
                    Bytes{"nullInside", "[null]"}, Bytes{"emptyObject", "[{}]"},
                    Bytes{"noPid", R"([{"startSec":1,"startUsec":2}])"},
                    Bytes{"noSeconds", R"([{"pid":812,"startUsec":2}])"},
                    Bytes{"noMicros", R"([{"pid":812,"startSec":1}])"},
                    Bytes{"otherLetterCase", R"([{"PID":812,"startSec":1,"startUsec":2}])"},
                    Bytes{"pidTooLarge", withPid("2147483648")}, Bytes{"pidTooSmall", withPid("-2147483649")},
                    Bytes{"pidHuge", withPid("18446744073709551616")}, Bytes{"pidAText", withPid("\"812\"")},
                    Bytes{"pidABool", withPid("true")}, Bytes{"pidAFraction", withPid("812.5")},
                    Bytes{"secondsNegative", withSeconds("-1")},
                    Bytes{"secondsTooLarge", withSeconds("18446744073709551616")},
                    Bytes{"secondsAText", withSeconds("\"1\"")}, Bytes{"microsNegative", withMicros("-1")},
                    Bytes{"microsTooLarge", withMicros("18446744073709551616")},
                    Bytes{"microsNull", withMicros("null")}, Bytes{"deeplyNested", std::string(100'000, '[')},
                    Bytes{"invalidUtf8", "[{\"pid\xFF\":812}]"},
                    Bytes{"largerThanAnyOwn", std::string(5 << 20, ' ') + "[]"}),
    [](const auto& param) { return std::string(param.param.what); });

TEST(DecodeJournal, AcceptsExtraKeysAndOddSpacingAndDropsDuplicates) {
  const std::string text = std::string("\n[ {\"startUsec\":5, \"pid\" : 812,\"startSec\":1800000000,") +
                           R"("name":"Mail","nested":{"pid":1}},)" + oneText + "]\n";
  EXPECT_THAT(decodeJournal(text).value(), UnorderedElementsAre(one));
}

TEST(DecodeJournal, AcceptsThePidsWholeRange) {
  EXPECT_THAT(decodeJournal(withPid("-2147483648")).value(),
              UnorderedElementsAre(ProcessIdentity{-2147483648, 1, 2}));
  EXPECT_THAT(decodeJournal(withPid("2147483647")).value(),
              UnorderedElementsAre(ProcessIdentity{2147483647, 1, 2}));
}

} // namespace
} // namespace vantle
