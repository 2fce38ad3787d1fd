// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/KernelState.h"
#include "tests/support/PrivateSession.h"

#include <gtest/gtest.h>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace vantle::desktop {

// The program itself on a Wayland desktop: native apps and X clients make way for each other.
class BoostStage : public testing::Test {
 protected:
  explicit BoostStage(PrivateSession& desktop) : m_session(desktop) {}

  // Both return once the app has its window.
  virtual Program& nativeApp() = 0;
  virtual Program& x11(const std::string& windowClass) = 0;
  virtual void focus(const Program& program) = 0;

  Program& remembered(Program& program) {
    m_before[program.pid()] = kernelState(program.pid());
    return program;
  }
  void startVantle() {
    // Which of the toolkit's plugins draws the panel is no matter here.
    m_vantle = &m_session.launch({VANTLE_PROGRAM}, {{"QT_QPA_PLATFORM", "xcb"}});
    require("Vantle", [&] { return m_session.hasBusName("com.halvo.vantle") || !m_vantle->isRunning(); });
    ASSERT_TRUE(m_vantle->isRunning()) << *m_vantle->exitStatus();
  }
  static bool becomesSlowed(const Program& program) {
    return waitUntil([&] { return isSlowed(program.pid()); });
  }
  static bool becomesFast(const Program& program) {
    return waitUntil([&] { return isAtFullSpeed(program.pid()); });
  }
  // The program's start and a Boost of the game, which slows what was in front before.
  void slowBehind(Program& game, Program& program) {
    focus(program);
    startVantle();
    focus(game);
    ASSERT_TRUE(becomesSlowed(program));
  }
  // To the last bit.
  void expectBack(const Program& program) {
    const KernelState& before = m_before.at(program.pid());
    EXPECT_TRUE(waitUntil([&] { return kernelState(program.pid()) == before; }))
        << program.pid() << " was " << before << "\nand is " << kernelState(program.pid());
  }
  // A Boost from the game's coming to the front to its end, with a look at another app in between.
  void expectBoost(Program& game) {
    Program& terminal = nativeApp();
    Program& client = x11("Client");
    focus(terminal);
    startVantle();
    focus(game);
    EXPECT_TRUE(becomesSlowed(terminal));
    EXPECT_TRUE(becomesSlowed(client));
    EXPECT_TRUE(isAtFullSpeed(game.pid()));
    focus(terminal);
    EXPECT_TRUE(becomesFast(terminal));
    EXPECT_TRUE(isSlowed(client.pid()));
    focus(client);
    EXPECT_TRUE(becomesFast(client));
    EXPECT_TRUE(becomesSlowed(terminal));
    focus(game);
    EXPECT_TRUE(becomesSlowed(client));
    game.kill();
    expectBack(terminal);
    expectBack(client);
  }

  PrivateSession& m_session;
  Program* m_vantle = nullptr;
  std::map<Pid, KernelState> m_before;
};

} // namespace vantle::desktop
