// SPDX-License-Identifier: MIT
#include "base/Text.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(Split, KeepsEveryPartButNothingBehindTheLastSeparator) {
  EXPECT_THAT(split("", ':'), IsEmpty());
  EXPECT_THAT(split("a", ':'), ElementsAre("a"));
  EXPECT_THAT(split("a:b:c", ':'), ElementsAre("a", "b", "c"));
  EXPECT_THAT(split("a:", ':'), ElementsAre("a"));
  EXPECT_THAT(split(":a::b:", ':'), ElementsAre("", "a", "", "b"));
  EXPECT_THAT(split(":", ':'), ElementsAre(""));
  EXPECT_THAT(split(std::string_view("x\0y\0", 4), '\0'), ElementsAre("x", "y"));
}

TEST(HoldsPart, FindsWholePartsOnly) {
  EXPECT_TRUE(holdsPart("cpu", ',', "cpu"));
  EXPECT_TRUE(holdsPart("cpu,cpuacct", ',', "cpu"));
  EXPECT_TRUE(holdsPart("io,cpu", ',', "cpu"));
  EXPECT_FALSE(holdsPart("cpuset,io", ',', "cpu"));
  EXPECT_FALSE(holdsPart("", ',', "cpu"));
  EXPECT_FALSE(holdsPart("a,b", ',', ""));
  EXPECT_TRUE(holdsPart("a,,b", ',', ""));
}

TEST(AsciiLowered, LeavesEverythingElse) {
  EXPECT_EQ(asciiLowered("Firefox-ESR 115"), "firefox-esr 115");
  EXPECT_EQ(asciiLowered("\xC3\x84@[`{"), "\xC3\x84@[`{");
}

TEST(FileNameAndFolder, AreTheTwoHalvesOfAPath) {
  EXPECT_EQ(fileNameOf("/a/b"), "b");
  EXPECT_EQ(fileNameOf("b"), "b");
  EXPECT_EQ(fileNameOf("/a/"), "");
  EXPECT_EQ(folderOf("/a/b"), "/a");
  EXPECT_EQ(folderOf("/a/b/"), "/a/b");
  EXPECT_EQ(folderOf("/a"), "/");
  EXPECT_EQ(folderOf("/"), "/");
  EXPECT_EQ(folderOf("b"), "");
  EXPECT_EQ(folderOf(""), "");
}

} // namespace
} // namespace vantle
