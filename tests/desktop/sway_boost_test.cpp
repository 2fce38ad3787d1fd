// SPDX-License-Identifier: MIT
// The program itself on a real sway: native apps and X clients make way for each other.
#include "tests/desktop/BoostStage.h"
#include "tests/support/Props.h"
#include "tests/support/SwayDesktop.h"

#include <gtest/gtest.h>
#include <string>
#include <utility>
#include <vector>

namespace vantle::desktop {
namespace {

class BoostOnSway : public BoostStage {
 protected:
  BoostOnSway() : BoostStage(m_desktop) {}
  void SetUp() override {
    m_desktop.installDesktopFile("org.example.Game",
                                 "[Desktop Entry]\nType=Application\nExec=true\nCategories=Game;\n"
                                 "Name=Game\nStartupWMClass=Game\n");
  }
  Program& shown(std::vector<std::string> command) {
    Program& program = m_desktop.launch(std::move(command));
    m_desktop.waitForWindow(program.pid());
    return remembered(program);
  }
  Program& native(const std::string& id) { return shown({"foot", "--app-id", id, "sleep", "1000"}); }
  Program& nativeApp() override { return native("org.example.Terminal"); }
  Program& x11(const std::string& windowClass) override {
    return shown({testWindow(), "--class", windowClass, "--outlive-display"});
  }
  void focus(const Program& program) override { m_desktop.focus(program); }

  SwayDesktop m_desktop;
};

TEST_F(BoostOnSway, OfANativeGame) { expectBoost(native("org.example.Game")); }

TEST_F(BoostOnSway, OfAGameThroughXwayland) { expectBoost(x11("Game")); }

TEST_F(BoostOnSway, LeavesNothingSlowedWhenSwayDies) {
  Program& game = native("org.example.Game");
  Program& client = x11("Client");
  ASSERT_NO_FATAL_FAILURE(slowBehind(game, client));
  m_desktop.compositor().kill();
  EXPECT_TRUE(m_vantle->waitForEnd());
  ASSERT_TRUE(client.isRunning());
  expectBack(client);
}

} // namespace
} // namespace vantle::desktop
