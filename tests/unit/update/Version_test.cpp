// SPDX-License-Identifier: MIT
#include "update/Version.h"

#include <gtest/gtest.h>

namespace vantle {

namespace {

struct Case {
  const char* candidate;
  const char* current;
  bool newer;
};

class VersionOrder : public testing::TestWithParam<Case> {};

TEST_P(VersionOrder, DecidesWhetherTheCandidateIsNewer) {
  const Case& row = GetParam();
  EXPECT_EQ(isNewer(row.candidate, row.current), row.newer) << row.candidate << " against " << row.current;
}

INSTANTIATE_TEST_SUITE_P(Plain, VersionOrder,
                         testing::Values(Case{"1.10", "1.9", true}, Case{"1.9", "1.10", false},
                                         Case{"1.2.0", "1.2", false}, Case{"1.2", "1.2.0", false},
                                         Case{"1.2.1", "1.2", true}, Case{"2", "1.9.9", true},
                                         Case{"1", "1", false}, Case{"", "", false}, Case{"0", "", false},
                                         Case{"0.1", "0", true}, Case{"", "1", false},
                                         Case{"01.002", "1.2", false}, Case{"10", "9", true}));

INSTANTIATE_TEST_SUITE_P(Dots, VersionOrder,
                         testing::Values(Case{"1..2", "1.1", true}, Case{"1..2", "1.2", false},
                                         Case{".1.2.", "1.2", false}, Case{"...", "0", false},
                                         Case{"..3", "2", true}));

INSTANTIATE_TEST_SUITE_P(WhatFollowsTheNumber, VersionOrder,
                         testing::Values(Case{"2.0-beta", "2.0", false}, Case{"12rc1", "11", true},
                                         Case{"12rc1", "12", false}, Case{"0b3", "0", false},
                                         Case{"beta", "0", false}, Case{"-5", "0", false},
                                         Case{"+5", "0", false}, Case{" 5", "0", false},
                                         Case{"1 5", "1", false}));

INSTANTIATE_TEST_SUITE_P(Large, VersionOrder,
                         testing::Values(Case{"9223372036854775807", "9223372036854775806", true},
                                         Case{"9223372036854775808", "0", false},
                                         Case{"9223372036854775808", "1", false},
                                         Case{"1.99999999999999999999999", "1.0", false},
                                         Case{"00000000000000000000000000007", "6", true}));

// Numerals of other scripts belong to the run and make it unreadable; letters end it.
INSTANTIATE_TEST_SUITE_P(OtherNumerals, VersionOrder,
                         testing::Values(Case{"٣", "0", false}, Case{"1٣", "0", false},
                                         Case{"1Ⅷ", "0", false}, Case{"1½", "0", false},
                                         Case{"1二", "0", false}, Case{"1²", "0", false},
                                         Case{"1é", "0", true}, Case{"1中", "0", true},
                                         Case{"1\u0301", "0", false}, Case{"1\uFE0F\u20E3", "0", false},
                                         Case{"2\xff", "1", true}, Case{"\xff", "0", false}));

TEST(TrimmedVersion, LosesOnlyItsDecoration) {
  EXPECT_EQ(trimmedVersion("v1.10"), "1.10");
  EXPECT_EQ(trimmedVersion("  V3 "), "3");
  EXPECT_EQ(trimmedVersion("vVv 1.0v2 vv"), "1.0v2");
  EXPECT_EQ(trimmedVersion("\t1"), "\t1");
  EXPECT_EQ(trimmedVersion("1\u00A0"), "1\u00A0");
  EXPECT_EQ(trimmedVersion(" v "), "");
  EXPECT_EQ(trimmedVersion(""), "");
}

} // namespace

} // namespace vantle
