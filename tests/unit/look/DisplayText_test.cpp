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
  EXPECT_EQ(displayText(std::string(150, 'x'), 40), QString(39, u'x') + QChar(0x2026));
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
