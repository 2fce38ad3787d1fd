// SPDX-License-Identifier: MIT
// The program itself on each shell.
#include "tests/desktop/ShellBoosts.h"
#include "tests/support/FakeService.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vantle::desktop {
namespace {

TEST_P(BoostOnEachShell, OfANativeGame) { expectBoost(nativeGame()); }

TEST_P(BoostOnEachShell, OfAGameThroughXwayland) { expectBoost(x11("Game")); }

// The shell tells who is in front by a message on the bus on which the holders are asked for, too.
TEST_P(BoostOnEachShell, OfANativeGameLeavesAloneWhatKeepsTheMachineAwake) {
  FakeService saver(m_desktop->busAddress(), "org.xfce.ScreenSaver");
  saver.answer("", "GetInhibitors", [](sd_bus_message*, sd_bus_message* reply) {
    sd_bus_message_append(reply, "as", 1, "weston-terminal");
  });
  Program& game = nativeGame();
  Program& terminal = nativeApp();
  Program& client = x11("Client");
  ASSERT_NO_FATAL_FAILURE(slowBehind(game, client));
  EXPECT_EQ(kernelState(terminal.pid()), m_before.at(terminal.pid()));
  EXPECT_GT(saver.calls("GetInhibitors"), 0);
}

TEST_P(BoostOnEachShell, LeavesNothingSlowedWhenTheShellDies) {
  Program& game = nativeGame();
  std::vector<Program*> clients(10);
  for (Program*& client : clients) client = &x11("Client");
  focus(*clients.front());
  startVantle();
  focus(game);
  for (const Program* client : clients) ASSERT_TRUE(becomesSlowed(*client));
  const auto start = std::chrono::steady_clock::now();
  m_desktop->compositor().kill();
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
