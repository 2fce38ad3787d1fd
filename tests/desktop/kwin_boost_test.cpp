// SPDX-License-Identifier: MIT
// The program itself on a real KWin.
#include "tests/desktop/BoostStage.h"
#include "tests/support/KWinDesktop.h"
#include "tests/support/Props.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace vantle::desktop {
namespace {

class BoostOnKWin : public BoostStage {
 protected:
  BoostOnKWin() : BoostStage(m_desktop) {}
  void SetUp() override {
    m_desktop.installDesktopFile("org.example.Game",
                                 "[Desktop Entry]\nType=Application\nExec=/usr/bin/weston-flower\n"
                                 "Categories=Game;\nName=Game\nStartupWMClass=Game\n");
  }
  Program& shown(std::vector<std::string> command) {
    Program& program = m_desktop.launch(std::move(command));
    require("a window",
            [&] { return m_desktop.windowsWhere("w.pid === " + std::to_string(program.pid())) > 0; });
    return remembered(program);
  }
  Program& nativeApp() override { return shown({"weston-terminal", "--shell=/bin/cat"}); }
  Program& nativeGame() { return shown({"weston-flower"}); }
  Program& x11(const std::string& windowClass) override {
    const std::string title = windowClass + std::to_string(++m_titles);
    Program& program = m_desktop.launch(
        {testWindow(), "--class", windowClass, "--title", title, "--claim-pid", "1", "--outlive-display"});
    m_titlesOf[program.pid()] = title;
    require("an X window", [&] { return m_desktop.windowsWhere("w.caption === \"" + title + "\"") > 0; });
    return remembered(program);
  }
  void focus(const Program& program) override {
    const auto title = m_titlesOf.find(program.pid());
    if (title == m_titlesOf.end()) return m_desktop.focus(program);
    m_desktop.focusTitled(title->second);
  }

  KWinDesktop m_desktop;
  std::map<Pid, std::string> m_titlesOf; // of X clients, which claim another process
  int m_titles = 0;
};

TEST_F(BoostOnKWin, OfANativeGame) { expectBoost(nativeGame()); }

TEST_F(BoostOnKWin, OfAGameThroughXwayland) { expectBoost(x11("Game")); }

TEST_F(BoostOnKWin, GoesOnWithTheScriptThatAKilledCopyLeft) {
  Program& game = nativeGame();
  Program& client = x11("Client");
  ASSERT_NO_FATAL_FAILURE(slowBehind(game, client));
  m_vantle->kill();
  require("a free name", [&] { return !m_desktop.hasBusName("com.halvo.vantle"); });
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
  const std::string said = (m_desktop.home() / "said").string();
  m_desktop.run({"sh", "-c", VANTLE_PROGRAM " --test >" + said});
  EXPECT_TRUE(m_desktop.run({"grep", "-qx", "Desktop: Plasma (native apps and X11 apps)", said}));
  EXPECT_FALSE(m_desktop.hasScript("com.halvo.vantle.feed.test"));
  EXPECT_TRUE(m_desktop.hasScript("com.halvo.vantle.feed"));
  focus(client);
  EXPECT_TRUE(becomesFast(client));
}

TEST_F(BoostOnKWin, LeavesNothingSlowedWhenKWinDies) {
  Program& game = nativeGame();
  std::vector<Program*> clients(10);
  for (Program*& client : clients) client = &x11("Client");
  focus(*clients.front());
  startVantle();
  focus(game);
  for (const Program* client : clients) ASSERT_TRUE(becomesSlowed(*client));
  const auto start = std::chrono::steady_clock::now();
  m_desktop.compositor().kill();
  EXPECT_TRUE(waitUntil([&] {
    return std::none_of(clients.begin(), clients.end(),
                        [](const Program* client) { return isSlowed(client->pid()); });
  }));
  const auto took = std::chrono::steady_clock::now() - start;
  RecordProperty("milliseconds",
                 std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(took).count()));
  EXPECT_TRUE(m_vantle->waitForEnd());
  for (Program* client : clients) {
    ASSERT_TRUE(client->isRunning());
    expectBack(*client);
  }
}

} // namespace
} // namespace vantle::desktop
