// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcStat.h"

#include <gtest/gtest.h>
#include <string>

namespace vantle {
namespace {

const std::string numbers = " S 41 42 42 0 -1 4194560 900 0 3 0 17 23 0 0 39 -20 7 0 123456 8192000 500";

std::string lineOf(const std::string& name) { return "42 (" + name + ")" + numbers + " 0 0\n"; }

TEST(ProcStat, ReadsTheFieldsByTheirNumbers) {
  const auto stat = parseProcStat(lineOf("cat"));
  ASSERT_TRUE(stat);
  EXPECT_EQ(stat->state, 'S');
  EXPECT_EQ(stat->parent, 41);
  EXPECT_EQ(stat->userTicks, 17U);
  EXPECT_EQ(stat->kernelTicks, 23U);
  EXPECT_EQ(stat->priority, 39);
  EXPECT_EQ(stat->threads, 7);
  EXPECT_EQ(stat->startTicks, 123456U);
  EXPECT_EQ(stat->residentPages, 500);
}

TEST(ProcStat, ReadsANegativePriority) {
  const auto stat = parseProcStat("7 (irq) S 2 0 0 0 -1 0 0 0 0 0 1 2 0 0 -51 0 1 0 33 0 0 0\n");
  ASSERT_TRUE(stat);
  EXPECT_EQ(stat->priority, -51);
}

TEST(ProcStat, IsNotMisledByAnyName) {
  const std::string names[] = {"",
                               ")",
                               "(",
                               ") Z 1 1 1 1 1 1 1 1 1 1 1 1",
                               "a b",
                               "\n",
                               "\xff\xfe\x80",
                               std::string("\0x", 2),
                               "))(",
                               ") R 1 (",
                               "\t)\n(",
                               std::string(64, ')')};
  for (const std::string& name : names) {
    const auto stat = parseProcStat(lineOf(name));
    ASSERT_TRUE(stat) << name;
    EXPECT_EQ(stat->parent, 41) << name;
    EXPECT_EQ(stat->startTicks, 123456U) << name;
  }
}

TEST(ProcStat, ReadsNothingFromALineThatWasCutShort) {
  const std::string whole = lineOf("cat");
  const std::size_t needed = whole.find(" 500 ") + std::string(" 500 ").size();
  for (std::size_t length = 0; length < needed; ++length) {
    EXPECT_FALSE(parseProcStat(whole.substr(0, length))) << length;
  }
  EXPECT_TRUE(parseProcStat(whole.substr(0, needed)));
}

TEST(ProcStat, ReadsNothingFromWhatTheKernelNeverWrites) {
  const std::string lines[] = {
      "42 (cat) S -1 42 42 0 -1 0 0 0 0 0 17 23 0 0 39 -20 7 0 123456 0 0 0\n",         // negative parent
      "42 (cat) S 4294967297 42 42 0 -1 0 0 0 0 0 17 23 0 0 39 -20 7 0 123456 0 0 0\n", // no pid
      "42 (cat) S 41 42 42 0 -1 0 0 0 0 0 17 23 0 0 39 -20 7 0 18446744073709551616 0 0 0\n", // beyond 64
                                                                                              // bits
      "42 (cat) S 41 42 42 0 -1 0 0 0 0 0 x 23 0 0 39 -20 7 0 123456 0 0 0\n",                // no number
      "42 (cat)  S 41 42 42 0 -1 0 0 0 0 0 17 23 0 0 39 -20 7 0 123456 0 0 0\n",              // two blanks
      "42 cat S 41 42 42 0 -1 0 0 0 0 0 17 23 0 0 39 -20 7 0 123456 0 0 0\n",                 // no name
      "42 (cat) S 41 42 42 0 -1 0 0 0 0 0 -17 23 0 0 39 -20 7 0 123456 0 0 0\n",              // negative time
  };
  for (const std::string& line : lines) EXPECT_FALSE(parseProcStat(line)) << line;
}

TEST(ProcStat, CountsAZombieAsGoneUnlessThreadsLiveOn) {
  ProcStat stat;
  stat.threads = 1;
  for (const char state : {'R', 'S', 'D', 'T', 't', 'I'}) {
    stat.state = state;
    EXPECT_TRUE(stat.isAlive()) << state;
  }
  for (const char state : {'Z', 'X', 'x'}) {
    stat.state = state;
    EXPECT_FALSE(stat.isAlive()) << state;
  }
  stat.state = 'Z';
  stat.threads = 2;
  EXPECT_TRUE(stat.isAlive());
}

} // namespace
} // namespace vantle
