// SPDX-License-Identifier: MIT
#include "platform/linux/process/NamespacePids.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

std::string statusWith(const std::string& line) {
  return "Name:\tplayer\nUmask:\t0022\nTgid:\t74\nNgid:\t0\nPid:\t74\n" + line + "NSpgid:\t74\t1\n";
}

TEST(NamespacePids, AreReadFromHereToTheInnermost) {
  EXPECT_THAT(namespacePids(statusWith("NSpid:\t74\n")), ElementsAre(74));
  EXPECT_THAT(namespacePids(statusWith("NSpid:\t74\t1\n")), ElementsAre(74, 1));
  EXPECT_THAT(namespacePids(statusWith("NSpid:\t4194304\t12\t3\n")), ElementsAre(4194304, 12, 3));
}

TEST(NamespacePids, AreNobodysWhereTheKernelDoesNotSay) {
  for (const char* line : {"", "NSpid:\n", "NSpid:\t\n", "NSpid:\t74", "NSpid: 74\n", "NSpid:\t0\n",
                           "NSpid:\t-7\n", "NSpid:\t74\t99999999999\n", "NSpid:\t74 1\n"}) {
    EXPECT_THAT(namespacePids("Name:\tplayer\n" + std::string(line)), IsEmpty()) << line;
  }
}

TEST(NamespacePids, NoNameMisleads) {
  EXPECT_THAT(namespacePids("Name:\tNSpid:\t1\nNSpid:\t74\n"), ElementsAre(74));
  EXPECT_THAT(namespacePids("Name:\t\\nNSpid:\\t1\nNSpid:\t74\n"), ElementsAre(74));
}

TEST(NamespacePids, AreAtMostAsManyAsTheKernelNests) {
  std::string deep = "\nNSpid:";
  for (int level = 0; level < 33; ++level) deep += "\t7";
  EXPECT_EQ(namespacePids(deep + "\n").size(), 33U);
  EXPECT_THAT(namespacePids(deep + "\t7\n"), IsEmpty());
}

TEST(ProcessOfThread, IsTheGroupThatTheKernelNames) {
  EXPECT_EQ(processOfThread("Name:\tdata-loop.0\nTgid:\t74\nNgid:\t0\nPid:\t76\n"), 74);
  for (const char* text : {"", "Name:\tTgid:\t74\n", "Tgid:\t74\n", "Name:\tx\nTgid:\t74",
                           "Name:\tx\nTgid:\t0\n", "Name:\tx\nTgid:\tx\n"}) {
    EXPECT_EQ(processOfThread(text), std::nullopt) << text;
  }
}

} // namespace
} // namespace vantle
