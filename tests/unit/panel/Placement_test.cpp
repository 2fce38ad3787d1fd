// SPDX-License-Identifier: MIT
#include "panel/PanelPlacement.h"

#include <gtest/gtest.h>

namespace vantle {
namespace {

const QSize panel(360, 500);
const QRect screen(0, 0, 1280, 800);

TEST(Placement, IsRightBesideTheAnchorOnEveryEdge) {
  const QRect topBar(0, 30, 1280, 770);
  EXPECT_EQ(panelPlace({600, 4, 22, 22}, panel, screen, topBar), QRect(430, 34, 360, 500));
  const QRect bottomBar(0, 0, 1280, 770);
  EXPECT_EQ(panelPlace({600, 774, 22, 22}, panel, screen, bottomBar), QRect(430, 266, 360, 500));
  const QRect leftBar(40, 0, 1240, 800);
  EXPECT_EQ(panelPlace({9, 400, 22, 22}, panel, screen, leftBar), QRect(44, 160, 360, 500));
  const QRect rightBar(0, 0, 1240, 800);
  EXPECT_EQ(panelPlace({1249, 400, 22, 22}, panel, screen, rightBar), QRect(876, 160, 360, 500));
}

TEST(Placement, NeverLeavesTheScreen) {
  for (const QRect& each : {screen, QRect(1280, 200, 1024, 768), QRect(-1920, 0, 1920, 1080)}) {
    const QRect available = each.adjusted(0, 24, -48, 0);
    for (int x = each.left(); x <= each.right(); x += 31) {
      for (int y = each.top(); y <= each.bottom(); y += 29) {
        const QRect place = panelPlace({x, y, 1, 1}, panel, each, available);
        ASSERT_TRUE(available.contains(place)) << x << "," << y;
        ASSERT_EQ(place.size(), panel);
      }
    }
  }
}

TEST(Placement, IsCutWhereTheScreenIsTooSmall) {
  const QRect tiny(0, 0, 320, 240);
  EXPECT_EQ(panelPlace({310, 5, 1, 1}, panel, tiny, tiny), QRect(4, 4, 312, 232));
}

TEST(Placement, PutsAnAnchorOfAnotherScreenWithinThisOne) {
  EXPECT_TRUE(screen.contains(panelPlace({5000, 5000, 22, 22}, panel, screen, screen)));
}

TEST(LikelyIcon, IsAtTheEndOfTheBar) {
  const QRect right(1280, 0, 1280, 800); // a second screen
  EXPECT_EQ(likelyIcon(screen, screen), QRect(1279, 0, 1, 1));
  EXPECT_EQ(likelyIcon(right, right.adjusted(0, 30, 0, 0)), QRect(2559, 30, 1, 1));
  EXPECT_EQ(likelyIcon(right, right.adjusted(0, 0, 0, -30)), QRect(2559, 799, 1, 1));
  EXPECT_EQ(likelyIcon(screen, screen.adjusted(40, 0, 0, 0)), QRect(0, 799, 1, 1));
  EXPECT_EQ(likelyIcon(screen, screen.adjusted(0, 0, -40, 0)), QRect(1279, 799, 1, 1));
  EXPECT_EQ(likelyIcon(screen, screen.adjusted(40, 30, 0, -60)), QRect(1279, 30, 1, 1)) << "the top is first";
  EXPECT_EQ(likelyIcon(screen, screen.adjusted(40, 0, 0, -60)), QRect(1279, 799, 1, 1)) << "then the bottom";
}

TEST(LikelyIcon, HasThePanelInItsCorner) {
  const auto placed = [](const QRect& available) {
    return panelPlace(likelyIcon(screen, available), panel, screen, available);
  };
  EXPECT_EQ(placed(screen.adjusted(0, 0, 0, -30)), QRect(916, 266, 360, 500));
  EXPECT_EQ(placed(screen.adjusted(40, 0, 0, 0)), QRect(44, 296, 360, 500));
  EXPECT_EQ(placed(screen.adjusted(0, 0, -40, 0)), QRect(876, 296, 360, 500));
}

TEST(LikelyScreen, IsTheMainOneUnlessAnotherAloneHasABar) {
  const QRect right(1280, 0, 1280, 800);
  const QRect barOnIt = right.adjusted(0, 0, 0, -30);
  EXPECT_EQ(likelyScreen({{screen, screen}}), 0U);
  EXPECT_EQ(likelyScreen({{screen, screen}, {right, right}}), 0U);
  EXPECT_EQ(likelyScreen({{screen, screen}, {right, barOnIt}}), 1U);
  EXPECT_EQ(likelyScreen({{screen, screen.adjusted(0, 30, 0, 0)}, {right, barOnIt}}), 0U);
}

TEST(IconNear, IsInTheNearestBar) {
  const QPoint pointer(1000, 700);
  EXPECT_EQ(iconNear(pointer, screen, screen), QRect(1000, 700, 1, 1));
  EXPECT_EQ(iconNear(pointer, screen, screen.adjusted(0, 30, 0, 0)), QRect(1000, 0, 1, 1));
  EXPECT_EQ(iconNear(pointer, screen, screen.adjusted(0, 30, 0, -60)), QRect(1000, 799, 1, 1));
  EXPECT_EQ(iconNear(pointer, screen, screen.adjusted(40, 0, 0, 0)), QRect(0, 700, 1, 1));
  EXPECT_EQ(iconNear(pointer, screen, screen.adjusted(40, 0, -40, 0)), QRect(1279, 700, 1, 1));
}

} // namespace
} // namespace vantle
