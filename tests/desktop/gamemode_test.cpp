// SPDX-License-Identifier: MIT
// The program beside GameMode's real daemon: who registers there is a Boost app for whoever wants that, and
// what both of them change comes back, whoever ends first.
#include "tests/desktop/CommandStage.h"

#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <linux/ioprio.h>
#include <string>
#include <unistd.h>
#include <vector>

namespace vantle::desktop {
namespace {

constexpr const char* daemonProgram = "/usr/bin/gamemoded";
constexpr const char* wrapper = "/usr/games/gamemoderun";

// The macro is no constant expression with every kernel header.
const int usual = IOPRIO_PRIO_VALUE(IOPRIO_CLASS_BE, 4);  // the only one that the daemon changes …
const int raised = IOPRIO_PRIO_VALUE(IOPRIO_CLASS_BE, 0); // … and to what

class GameMode : public CommandStage {
 protected:
  void SetUp() override {
    if (::access(daemonProgram, X_OK) != 0) GTEST_SKIP() << "GameMode is not installed";
    CommandStage::SetUp();
  }

  uid_t user() const { return m_isRoot || !test::runsAsRoot() ? ::getuid() : test::nobody; }
  void wantRegistered() {
    m_desktop->folder().folder("home/.config/com.halvo.vantle");
    m_desktop->folder().write("home/.config/com.halvo.vantle/defaults.json", R"({"detectGameMode":true})");
  }
  // Whose nice value it may change is said by the system; it goes on without.
  void startDaemon() {
    m_desktop->folder().write("home/.config/gamemode.ini", "[general]\nrenice=10\nioprio=0\nreaper_freq=1\n");
    m_daemon = &m_desktop->launch({daemonProgram});
    m_desktop->waitForBusName("com.feralinteractive.GameMode");
  }
  Program& window(std::vector<std::string> command, const std::string& name) {
    command.insert(command.end(), {testWindow(), "--class", name, "--background"});
    Program& program = m_desktop->launch(std::move(command));
    m_desktop->waitForWindow(program.pid());
    return program;
  }
  Program& usualWindow(const std::string& name) { return window({"/usr/bin/ionice", "-c2", "-n4"}, name); }
  // By the daemon's own tool, which tells whether it did.
  void toggleRegistration(const Program& program) {
    ASSERT_TRUE(m_desktop->run({daemonProgram, "-r" + std::to_string(program.pid())}));
  }
  void registerGame(const Program& program) {
    toggleRegistration(program);
    ASSERT_TRUE(waitUntil([&] { return ioPriority(program) == raised; })) << ioPriority(program);
  }
  static int ioPriority(const Program& program) {
    return test::threadState(program.pid()).value_or(test::ThreadState{}).ioPriority;
  }
  void remember() { m_before = machineState(user()); }
  // Every thread of every process of the user that was there.
  void expectAllBack() {
    EXPECT_TRUE(waitUntil([&] { return changesSince(m_before, user()).empty(); }))
        << changesSince(m_before, user());
  }
  void boostBehind(Program& game, const Program& slowed) {
    m_desktop->activate(game);
    ASSERT_TRUE(waitUntil([&] { return isSlowed(slowed.pid()); }));
  }

  bool m_isRoot = false; // everything is root's
  Program* m_daemon = nullptr;
  MachineState m_before;
};

TEST_F(GameMode, WhoRegistersIsABoostAppForThosePeopleWhoWantIt) {
  wantRegistered();
  startDaemon();
  Program& mail = app("Mail");
  remember();
  startVantle();
  Program& tool = window({wrapper}, "Tool");
  m_desktop->activate(tool);
  ASSERT_TRUE(waitUntil([&] { return isSlowed(mail.pid()); }));
  const Json shown = appIn(statusJson(), tool);
  EXPECT_EQ(shown.textAt("state"), "boost app");
  EXPECT_EQ(shown.textAt("reason"), "boost app");
  tool.kill();
  expectAllBack();
}

TEST_F(GameMode, AWrapperScriptRegistersForWhatItStarts) {
  wantRegistered();
  startDaemon();
  Program& mail = app("Mail");
  startVantle();
  // The script is registered, and what it starts does not know of GameMode.
  Program& script = m_desktop->launch({wrapper, "/bin/sh", "-c", "unset LD_PRELOAD; \"$0\" \"$@\" & wait",
                                       testWindow(), "--class", "Tool", "--background"});
  const auto childOfScript = [&] {
    std::set<Pid> all = processesOf({script.pid()});
    all.erase(script.pid());
    return all.empty() ? 0 : *all.begin();
  };
  require("the script's child", [&] { return childOfScript() != 0; });
  m_desktop->activate(m_desktop->waitForWindow(childOfScript()).id);
  EXPECT_TRUE(waitUntil([&] { return isSlowed(mail.pid()); }));
}

TEST_F(GameMode, ADaemonThatComesLaterAndAGameThatRegistersInFrontAreHeard) {
  wantRegistered();
  Program& mail = app("Mail");
  Program& tool = usualWindow("Tool");
  remember();
  startVantle();
  m_desktop->activate(tool);
  startDaemon();
  m_before[m_daemon->pid()] = kernelState(m_daemon->pid());
  registerGame(tool);
  EXPECT_TRUE(waitUntil([&] { return isSlowed(mail.pid()); }));
  toggleRegistration(tool);
  expectAllBack(); // the game is over, and so is its Boost
}

TEST_F(GameMode, ADaemonThatHangsHoldsNothingUp) {
  wantRegistered();
  startDaemon();
  m_daemon->signal(SIGSTOP);
  ASSERT_NO_FATAL_FAILURE(startBoost());
  Program& tool = usualWindow("Tool");
  ASSERT_TRUE(waitUntil([&] { return isSlowed(tool.pid()); }));
  m_daemon->signal(SIGCONT);
  toggleRegistration(tool);
  EXPECT_TRUE(waitUntil([&] { return isAtFullSpeed(tool.pid()); })) << "it is a Boost app now";
  EXPECT_EQ(appIn(statusJson(), tool).textAt("reason"), "boost app");
}

TEST_F(GameMode, NobodyWhoRegistersIsABoostAppUnasked) {
  startDaemon();
  Program& tool = usualWindow("Tool");
  app("Mail");
  startVantle();
  registerGame(tool);
  m_desktop->activate(tool);
  ASSERT_TRUE(waitUntil([&] { return appIn(statusJson(), tool).textAt("state") == "in front"; }));
}

// The two beside each other, as an ordinary user and as root, which may change nice values as well.
class GameModeBeside : public GameMode, public testing::WithParamInterface<bool> {
 protected:
  void SetUp() override {
    if (::access(daemonProgram, X_OK) != 0) GTEST_SKIP() << "GameMode is not installed";
    m_isRoot = GetParam();
    if (m_isRoot && !test::runsAsRoot()) GTEST_SKIP() << "only root can be root";
    if (m_isRoot) {
      makeDesktop(std::nullopt);
    } else {
      CommandStage::SetUp();
    }
    startDaemon();
    m_mail = &app("Mail");
    m_game = &usualWindow("Game");
    m_tool = &usualWindow("Tool");
    remember();
    startVantle();
  }
  void boost() { boostBehind(*m_game, *m_mail); }
  void endBoost() {
    ASSERT_EQ(vantle({"off"}).status, 0);
    ASSERT_TRUE(waitUntil([&] { return isAtFullSpeed(m_mail->pid()); }));
  }

  Program* m_tool = nullptr;
};

TEST_P(GameModeBeside, TheBoostEndsBeforeTheGameWithdraws) {
  registerGame(*m_game);
  boost();
  EXPECT_EQ(ioPriority(*m_game), raised);
  endBoost();
  EXPECT_EQ(ioPriority(*m_game), raised) << "what GameMode gave is GameMode's";
  toggleRegistration(*m_game);
  expectAllBack();
}

TEST_P(GameModeBeside, TheGameWithdrawsBeforeTheBoostEnds) {
  boost();
  registerGame(*m_game);
  toggleRegistration(*m_game);
  EXPECT_TRUE(waitUntil([&] { return ioPriority(*m_game) == usual; }));
  EXPECT_TRUE(isSlowed(m_mail->pid()));
  endBoost();
  expectAllBack();
}

TEST_P(GameModeBeside, OneThatIsRegisteredIsSlowedMeanwhile) {
  registerGame(*m_tool);
  boostBehind(*m_game, *m_tool);
  endBoost();
  EXPECT_TRUE(waitUntil([&] { return ioPriority(*m_tool) == raised; }));
  toggleRegistration(*m_tool);
  expectAllBack();
}

TEST_P(GameModeBeside, OneThatIsSlowedRegistersAndWithdraws) {
  boostBehind(*m_game, *m_tool);
  toggleRegistration(*m_tool);
  toggleRegistration(*m_tool);
  EXPECT_TRUE(isSlowed(m_tool->pid())) << "GameMode changes only what it finds as usual";
  endBoost();
  expectAllBack();
}

TEST_P(GameModeBeside, OneThatIsSlowedRegistersAndWithdrawsAfterTheBoost) {
  boostBehind(*m_game, *m_tool);
  toggleRegistration(*m_tool);
  endBoost();
  EXPECT_TRUE(waitUntil([&] { return ioPriority(*m_tool) == usual; }));
  toggleRegistration(*m_tool);
  expectAllBack();
}

TEST_P(GameModeBeside, GameModeDies) {
  registerGame(*m_game);
  boost();
  m_daemon->kill();
  endBoost();
  // Nobody can take back any more what it gave its game.
  m_before[m_game->pid()] = kernelState(m_game->pid());
  expectAllBack();
}

TEST_P(GameModeBeside, VantleDiesAndComesBack) {
  registerGame(*m_game);
  boost();
  m_vantle->kill();
  toggleRegistration(*m_game);
  startVantle();
  ASSERT_TRUE(waitUntil([&] { return appIn(statusJson(), *m_game).textAt("state") == "boost app"; }))
      << "since the game is in front";
  endBoost();
  expectAllBack();
}

INSTANTIATE_TEST_SUITE_P(As, GameModeBeside, testing::Bool(),
                         [](const auto& run) { return run.param ? "Root" : "OrdinaryUser"; });

} // namespace
} // namespace vantle::desktop
