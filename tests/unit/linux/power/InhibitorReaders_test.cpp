// SPDX-License-Identifier: MIT
#include "platform/linux/power/InhibitorReaders.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(RequestersIn, AreTheNodesThatAreNamedAfterAConnection) {
  // As xdg-desktop-portal 1.16 describes its requests.
  EXPECT_THAT(
      requestersIn("<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection 1.0//EN\">\n"
                   "<!-- GDBus 2.74.6 -->\n<node>\n  <node name=\"1_139\"/>\n  <node name=\"1_157\"/>\n"
                   "</node>\n"),
      ElementsAre(":1.139", ":1.157"));
  for (const char* text :
       {"", "<node/>", "<node name=\"\"/>", "<node name=\"1\"/>", "<node name=\"_\"/>", "<node name=\"1_\"/>",
        "<node name=\"a_b\"/>", "<node name=\"1_2_3\"/>", "<node name=\"1_23", "<node name=\"token\"/>"}) {
    EXPECT_THAT(requestersIn(text), IsEmpty()) << text;
  }
}

TEST(IsBusName, TakesNamesThatAProgramChooses) {
  for (const char* name : {"org.example.Player", "com.halvo.vantle", "a.b"})
    EXPECT_TRUE(isBusName(name)) << name;
  for (const char* name : {"", "player", ":1.42", "org..example", "a b.c", "/usr/bin/a.b", "1.2"})
    EXPECT_FALSE(isBusName(name)) << name;
}

TEST(Readers, OfAnAnswerThatNeverCameReadNothing) {
  EXPECT_THAT(blockingInhibitors(nullptr), IsEmpty());
  EXPECT_THAT(appsIn(nullptr), IsEmpty());
  EXPECT_THAT(pathsIn(nullptr), IsEmpty());
  EXPECT_FALSE(numberIn(nullptr));
  EXPECT_FALSE(truthIn(nullptr));
  EXPECT_FALSE(processIn(nullptr));
  EXPECT_EQ(textIn(nullptr), "");
}

} // namespace
} // namespace vantle
