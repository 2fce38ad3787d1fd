// SPDX-License-Identifier: MIT
#include "base/Utf8.h"

#include <gtest/gtest.h>
#include <string>

namespace vantle {
namespace {

struct Case {
  const char* what;
  std::string bytes;
  std::string text;
};

const std::string bad = "\xEF\xBF\xBD";

class CleanUtf8 : public testing::TestWithParam<Case> {};

TEST_P(CleanUtf8, IsWellFormed) { EXPECT_EQ(cleanUtf8(GetParam().bytes), GetParam().text); }

INSTANTIATE_TEST_SUITE_P(
    Table, CleanUtf8,
    testing::Values(Case{"empty", "", ""}, Case{"ascii", "Mail 2", "Mail 2"},
                    Case{"zeroByte", std::string("a\0b", 3), std::string("a\0b", 3)},
                    Case{"twoBytes", "\xC3\xA9", "\xC3\xA9"}, Case{"twoBytesLowest", "\xC2\x80", "\xC2\x80"},
                    Case{"threeBytes", "\xE2\x82\xAC", "\xE2\x82\xAC"},
                    Case{"threeBytesLowest", "\xE0\xA0\x80", "\xE0\xA0\x80"},
                    Case{"lastBeforeSurrogates", "\xED\x9F\xBF", "\xED\x9F\xBF"},
                    Case{"fourBytes", "\xF0\x9F\x8E\xAE", "\xF0\x9F\x8E\xAE"},
                    Case{"fourBytesLowest", "\xF0\x90\x80\x80", "\xF0\x90\x80\x80"},
                    Case{"highestScalar", "\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"},
                    Case{"middlePlanes", "\xF3\xB0\x80\x80", "\xF3\xB0\x80\x80"},
                    Case{"loneContinuation", "a\x80z", "a" + bad + "z"},
                    Case{"invalidByte", "a\xFFz", "a" + bad + "z"},
                    Case{"overlongTwo", "\xC0\xAF", bad + bad}, Case{"overlongC1", "\xC1\xBF", bad + bad},
                    Case{"overlongThree", "\xE0\x9F\xBF", bad + bad + bad},
                    Case{"overlongFour", "\xF0\x8F\xBF\xBF", bad + bad + bad + bad},
                    Case{"surrogate", "\xED\xA0\x80", bad + bad + bad},
                    Case{"aboveTheLastScalar", "\xF4\x90\x80\x80", bad + bad + bad + bad},
                    Case{"leadF5", "\xF5\x80", bad + bad}, Case{"cutAfterOne", "\xE2", bad},
                    Case{"cutAfterTwo", "\xE2\x82", bad}, Case{"cutAfterThree", "\xF0\x9F\x8E", bad},
                    Case{"cutThenAscii", "\xF0\x9F\x8Ez", bad + "z"},
                    Case{"cutThenGood", "\xE2\x82\xC3\xA9", bad + "\xC3\xA9"},
                    Case{"twoCutInARow", "\xE2\x82\xE2\x82", bad + bad}),
    [](const auto& param) { return std::string(param.param.what); });

} // namespace
} // namespace vantle
