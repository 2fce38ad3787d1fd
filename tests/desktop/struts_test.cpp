// SPDX-License-Identifier: MIT
// What bars leave of each screen, by what they say.
#include "desktop/linux/window/Struts.h"

#include <gtest/gtest.h>

namespace vantle {
namespace {

constexpr QSize desktop(1280, 800);
const QRect left(0, 0, 640, 800);
const QRect right(640, 0, 640, 700); // 100 less high

std::vector<Strut> saying(std::vector<std::uint32_t> numbers) {
  const auto strut = strutOf(numbers.data(), numbers.size());
  return strut ? std::vector{*strut} : std::vector<Strut>();
}

TEST(Struts, TakeTheirPartOfTheirScreenAlone) {
  const auto bottomOfLeft = saying({0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0, 639});
  EXPECT_EQ(roomBeside(bottomOfLeft, left, desktop), QRect(0, 0, 640, 770));
  EXPECT_EQ(roomBeside(bottomOfLeft, right, desktop), right);
  // Counted from the edge of the whole desktop, which is lower than the screen.
  const auto bottomOfRight = saying({0, 0, 0, 130, 0, 0, 0, 0, 0, 0, 640, 1279});
  EXPECT_EQ(roomBeside(bottomOfRight, right, desktop), QRect(640, 0, 640, 670));
  EXPECT_EQ(roomBeside(bottomOfRight, left, desktop), left);
  const auto top = saying({0, 0, 24, 0, 0, 0, 0, 0, 640, 1279, 0, 0});
  EXPECT_EQ(roomBeside(top, right, desktop), QRect(640, 24, 640, 676));
  EXPECT_EQ(roomBeside(top, left, desktop), left);
  const auto atLeft = saying({48, 0, 0, 0, 0, 799, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(roomBeside(atLeft, left, desktop), QRect(48, 0, 592, 800));
  EXPECT_EQ(roomBeside(atLeft, right, desktop), right);
  const auto atRight = saying({0, 48, 0, 0, 0, 0, 0, 699, 0, 0, 0, 0});
  EXPECT_EQ(roomBeside(atRight, right, desktop), QRect(640, 0, 592, 700));
}

TEST(Struts, OfABarBetweenTwoScreensLeaveTheOuterOneAlone) {
  const auto between = saying({680, 0, 0, 0, 0, 799, 0, 0, 0, 0, 0, 0});
  EXPECT_EQ(roomBeside(between, left, desktop), left);
  EXPECT_EQ(roomBeside(between, right, desktop), QRect(680, 0, 600, 700));
}

TEST(Struts, OfSeveralBarsCountTogether) {
  std::vector<Strut> bars = saying({0, 0, 24, 0, 0, 0, 0, 0, 0, 1279, 0, 0});
  bars.push_back(saying({0, 0, 0, 40, 0, 0, 0, 0, 0, 0, 0, 1279}).front());
  bars.push_back(saying({0, 0, 0, 30, 0, 0, 0, 0, 0, 0, 0, 1279}).front());
  EXPECT_EQ(roomBeside(bars, left, desktop), QRect(0, 24, 640, 736));
}

TEST(Struts, InTheOlderFormTakeAWholeEdge) {
  const auto bottom = saying({0, 0, 0, 30});
  EXPECT_EQ(roomBeside(bottom, left, desktop), QRect(0, 0, 640, 770));
  EXPECT_EQ(roomBeside(bottom, QRect(640, 0, 640, 800), desktop), QRect(640, 0, 640, 770));
}

TEST(Struts, ThatMakeNoSenseTakeNothing) {
  for (const std::vector<std::uint32_t>& numbers : {std::vector<std::uint32_t>{},
                                                    {30},
                                                    {0, 0, 0, 0},
                                                    std::vector<std::uint32_t>(12, 0),
                                                    std::vector<std::uint32_t>(12, 0xFFFFFFFFU),
                                                    std::vector<std::uint32_t>(13, 30)})
    EXPECT_EQ(roomBeside(saying(numbers), left, desktop), left) << numbers.size();
}

} // namespace
} // namespace vantle
