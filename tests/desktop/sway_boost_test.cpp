// SPDX-License-Identifier: MIT
// The program itself on a real sway: native apps and X clients make way for each other.
#include "tests/support/KernelState.h"
#include "tests/support/Props.h"
#include "tests/support/SwayDesktop.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vantle::desktop {
namespace {

class BoostOnSway : public testing::Test {
 protected:
  void SetUp() override {
    m_desktop.installDesktopFile("org.example.Game",
                                 "[Desktop Entry]\nType=Application\nExec=true\nCategories=Game;\n"
                                 "Name=Game\nStartupWMClass=Game\n");
  }
  Program& shown(std::vector<std::string> command) {
    Program& program = m_desktop.launch(std::move(command));
    m_desktop.waitForWindow(program.pid());
    m_before[program.pid()] = kernelState(program.pid());
    return program;
  }
  Program& native(const std::string& id) { return shown({"foot", "--app-id", id, "sleep", "1000"}); }
  Program& x11(const std::string& windowClass) {
    return shown({testWindow(), "--class", windowClass, "--outlive-display"});
  }
  void startVantle() {
    // Which of the toolkit's plugins draws the panel is no matter here.
    m_vantle = &m_desktop.launch({VANTLE_PROGRAM}, {{"QT_QPA_PLATFORM", "xcb"}});
    require("Vantle", [&] { return m_desktop.hasBusName("com.halvo.vantle") || !m_vantle->isRunning(); });
    ASSERT_TRUE(m_vantle->isRunning()) << *m_vantle->exitStatus();
  }
  static bool becomesSlowed(const Program& program) {
    return waitUntil([&] { return isSlowed(program.pid()); });
  }
  static bool becomesFast(const Program& program) {
    return waitUntil([&] { return isAtFullSpeed(program.pid()); });
  }
  // To the last bit.
  void expectBack(const Program& program) {
    const KernelState& before = m_before.at(program.pid());
    EXPECT_TRUE(waitUntil([&] { return kernelState(program.pid()) == before; }))
        << program.pid() << " was " << before << "\nand is " << kernelState(program.pid());
  }
  // A Boost from the game's coming to the front to its end, with a look at another app in between.
  void expectBoost(Program& game) {
    Program& terminal = native("org.example.Terminal");
    Program& client = x11("Client");
    m_desktop.focus(terminal);
    startVantle();
    m_desktop.focus(game);
    EXPECT_TRUE(becomesSlowed(terminal));
    EXPECT_TRUE(becomesSlowed(client));
    EXPECT_TRUE(isAtFullSpeed(game.pid()));
    m_desktop.focus(terminal);
    EXPECT_TRUE(becomesFast(terminal));
    EXPECT_TRUE(isSlowed(client.pid()));
    m_desktop.focus(client);
    EXPECT_TRUE(becomesFast(client));
    EXPECT_TRUE(becomesSlowed(terminal));
    m_desktop.focus(game);
    EXPECT_TRUE(becomesSlowed(client));
    game.kill();
    expectBack(terminal);
    expectBack(client);
  }

  SwayDesktop m_desktop;
  Program* m_vantle = nullptr;
  std::map<Pid, KernelState> m_before;
};

TEST_F(BoostOnSway, OfANativeGame) { expectBoost(native("org.example.Game")); }

TEST_F(BoostOnSway, OfAGameThroughXwayland) { expectBoost(x11("Game")); }

TEST_F(BoostOnSway, LeavesNothingSlowedWhenSwayDies) {
  Program& game = native("org.example.Game");
  Program& client = x11("Client");
  m_desktop.focus(client);
  startVantle();
  m_desktop.focus(game);
  ASSERT_TRUE(becomesSlowed(client));
  m_desktop.compositor().kill();
  EXPECT_TRUE(m_vantle->waitForEnd());
  ASSERT_TRUE(client.isRunning());
  expectBack(client);
}

} // namespace
} // namespace vantle::desktop
