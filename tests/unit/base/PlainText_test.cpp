// SPDX-License-Identifier: MIT
#include "base/PlainText.h"

#include <gtest/gtest.h>

namespace vantle {
namespace {

TEST(PlainText, LeavesWhatPeopleRead) {
  for (const char* text : {"", "Mail", "Größe 日本 🎮", "a 'b' \"c\" \\ $(d)"})
    EXPECT_EQ(plainText(text), text);
}

TEST(PlainText, HasOneLineWithoutControls) {
  EXPECT_EQ(plainText("a\nb\tc\x1b[2Jd\x7f"), "a?b?c?[2Jd?");
  EXPECT_EQ(plainText("c1\u009b31mX\u0085"), "c1?31mX?");
  EXPECT_EQ(plainText("\u2028line\u2029"), "?line?");
  EXPECT_EQ(plainText("inv\xff("), "inv\uFFFD(");
}

TEST(PlainText, HasNothingUnseenOrTurned) {
  EXPECT_EQ(plainText("rev\u202egnp.exe"), "revgnp.exe");
  EXPECT_EQ(plainText("a\u200bb\u2066c\ufeffd\U000E0041"), "abcd");
  EXPECT_EQ(plainText("\u200b\u200d\u2060"), "?");
  EXPECT_EQ(plainText("\u3164"), "?");
  EXPECT_EQ(plainText("  "), "?");
}

TEST(PlainText, IsNoLongerThanAllowed) {
  EXPECT_EQ(plainText(std::string(300, 'L')), std::string(300, 'L'));
  EXPECT_EQ(plainText(std::string(100'000, 'L')), std::string(300, 'L') + "…");
  EXPECT_EQ(plainText("日本日本", 3), "日本日…");
}

} // namespace
} // namespace vantle
