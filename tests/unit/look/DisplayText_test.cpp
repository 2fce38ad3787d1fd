// SPDX-License-Identifier: MIT
#include "look/DisplayText.h"

#include <gtest/gtest.h>

namespace vantle {
namespace {

TEST(DisplayText, LeavesOrdinaryNamesAlone) {
  for (const char* name : {"Mail", "GNU Image Manipulation Program", "Café – 100 %", "日本語", "a & <b>"})
    EXPECT_EQ(displayText(name), QString::fromUtf8(name));
}

TEST(DisplayText, IsOneLineWithoutControlCharacters) {
  EXPECT_EQ(displayText("a\nb\tc\x01"
                        "d\x1b[31m\x7f"),
            QStringLiteral("a b c d [31m"));
  EXPECT_EQ(displayText("a\u2028b\u2029c"), QStringLiteral("a b c"));
  EXPECT_EQ(displayText(std::string("a\0b", 3)), QStringLiteral("a b"));
  EXPECT_EQ(displayText(" \n\t "), QString());
}

TEST(DisplayText, CannotTurnTheTextAroundIt) {
  EXPECT_EQ(displayText("photo\u202Egnp.exe\u202C"), QStringLiteral("photognp.exe"));
  EXPECT_EQ(displayText("a\u2067b\u200F"), QStringLiteral("ab"));
}

TEST(DisplayText, KeepsWhatHoldsFacesAndLettersTogether) {
  for (const char* name : {"👨\u200D👩\u200D👧 Family", "می\u200Cروم"})
    EXPECT_TRUE(displayText(name).contains(QString::fromUtf8(name))) << name;
  EXPECT_EQ(displayText("a\u200Db\u200D"), QStringLiteral("ab"));
  EXPECT_EQ(displayText("\u200B\u200D\u2060"), QString());
}

TEST(DisplayText, IsOfAnotherNameWhereNothingOfTheFirstCanBeSeen) {
  EXPECT_EQ(displayText("\u200B\u2060", "editor"), QStringLiteral("editor"));
  EXPECT_EQ(displayText("Editor", "editor"), QStringLiteral("Editor"));
  EXPECT_EQ(displayText("\u200B", "\u3164"), QStringLiteral("\u201C\u201D"));
  EXPECT_EQ(displayText(std::string(150, 'x'), 40), QString(39, u'x') + QChar(0x2026));
}

TEST(DisplayText, IsEmptyWhereNothingCanBeSeen) {
  for (const char* name : {"\u00A0", "\u3164", "\u00A0\u3164 \uFFA0", "\u2800\u115F\u1160", "\u0301",
                           "\uFE0F", "\U000E0041\U000E007F", "\U000E0100"})
    EXPECT_EQ(displayText(name), QString()) << name;
  EXPECT_EQ(displayText("\u3164a"), QStringLiteral("\u3164a"));
  EXPECT_EQ(displayText("…"), QStringLiteral("…"));
  EXPECT_EQ(displayText("\U0001F600"), QString::fromUtf8("\U0001F600"));
}

TEST(DisplayText, IsolatesRightToLeftNames) {
  EXPECT_EQ(displayText("שלום"), QChar(0x2068) + QStringLiteral("שלום") + QChar(0x2069));
}

TEST(DisplayText, CutsWhatNobodyCanRead) {
  EXPECT_EQ(displayText(std::string(10'000, 'x')), QString(299, u'x') + QChar(0x2026));
  std::string faces;
  for (int i = 0; i < 5'000; ++i) faces += "😀";
  const QString text = displayText(faces);
  EXPECT_LE(text.size(), 300);
  EXPECT_TRUE(text.isValidUtf16());
}

} // namespace
} // namespace vantle
