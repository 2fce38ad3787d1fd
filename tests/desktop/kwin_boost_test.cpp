// SPDX-License-Identifier: MIT
// The program itself on a real KWin.
#include "tests/desktop/ShellBoosts.h"
#include "tests/support/KWinDesktop.h"

#include <gtest/gtest.h>
#include <memory>
#include <string>

namespace vantle::desktop {
namespace {

std::unique_ptr<KWinDesktop> makeKWin() { return std::make_unique<KWinDesktop>(); }

INSTANTIATE_TEST_SUITE_P(KWin, BoostOnEachShell, testing::Values(ShellStage{"KWin", "", makeKWin}));

class BoostOnKWin : public ShellBoosts {
 protected:
  BoostOnKWin() : ShellBoosts(makeKWin()) {}
  KWinDesktop& kwin() { return static_cast<KWinDesktop&>(*m_desktop); }
};

TEST_F(BoostOnKWin, GoesOnWithTheScriptThatAKilledCopyLeft) {
  Program& game = nativeGame();
  Program& client = x11("Client");
  ASSERT_NO_FATAL_FAILURE(slowBehind(game, client));
  m_vantle->kill();
  require("a free name", [&] { return !m_desktop->hasBusName("com.halvo.vantle"); });
  startVantle();
  focus(client);
  EXPECT_TRUE(becomesFast(client));
  focus(game);
  EXPECT_TRUE(becomesSlowed(client));
  game.kill();
  expectBack(client);
}

TEST_F(BoostOnKWin, GoesOnBesideASelfTestWhichSaysWhereItLooks) {
  Program& game = nativeGame();
  Program& client = x11("Client");
  ASSERT_NO_FATAL_FAILURE(slowBehind(game, client));
  const std::string said = (m_desktop->home() / "said").string();
  m_desktop->run({"sh", "-c", VANTLE_PROGRAM " --test >" + said});
  EXPECT_TRUE(m_desktop->run({"grep", "-qx", "Desktop: Plasma (native apps and X11 apps)", said}));
  EXPECT_FALSE(kwin().hasScript("com.halvo.vantle.feed.test"));
  EXPECT_TRUE(kwin().hasScript("com.halvo.vantle.feed"));
  focus(client);
  EXPECT_TRUE(becomesFast(client));
}

} // namespace
} // namespace vantle::desktop
