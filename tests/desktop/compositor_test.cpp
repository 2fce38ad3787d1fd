// SPDX-License-Identifier: MIT
// The program itself on a Wayland desktop: nothing stays slowed when its compositor is killed, and its window
// comes to the front.
#include "tests/support/KernelState.h"
#include "tests/support/Picture.h"
#include "tests/support/Props.h"
#include "tests/support/SwayDesktop.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <string>
#include <vector>

namespace vantle::desktop {
namespace {

constexpr int apps = 10;

enum class Case { panelNeverOpened, panelOpen, panelClosedAgain, outputUnread };

class KilledCompositor : public testing::TestWithParam<Case> {
 protected:
  KilledCompositor() {
    m_desktop.installDesktopFile("org.example.Game",
                                 "[Desktop Entry]\nType=Application\nExec=true\nCategories=Game;\nName=Game\n"
                                 "StartupWMClass=Game\n");
  }

  Program& app(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), {testWindow(), "--outlive-display"});
    Program& program = m_desktop.launch(std::move(arguments));
    m_desktop.waitForWindow(program.pid());
    return program;
  }

  // As an app menu does.
  void openPanel() {
    const Picture before = m_desktop.picture();
    ASSERT_TRUE(m_desktop.callApplication("Activate"));
    ASSERT_TRUE(waitUntil([&] { return changedArea(before, m_desktop.picture()).width() > 1; }));
  }
  void closePanel() {
    const Picture before = m_desktop.picture();
    ASSERT_TRUE(waitUntil([&] {
      m_desktop.press("Escape");
      return changedArea(before, m_desktop.picture()).width() > 1;
    }));
  }

  std::string journal() const {
    std::ifstream file(m_desktop.dataHome() / "Vantle/journal.json");
    return {std::istreambuf_iterator<char>(file), {}};
  }

  SwayDesktop m_desktop;
};

TEST_P(KilledCompositor, LeavesNothingSlowed) {
  std::vector<Program*> others;
  others.reserve(apps);
  for (int number = 0; number < apps; ++number) {
    others.push_back(&app({"--title", std::to_string(number), "--threads", std::to_string(number % 3)}));
  }
  Program& game = app({"--class", "Game"});
  m_desktop.addKeyboard();
  const MachineState before = machineState(m_desktop.user());
  std::vector<std::string> command{VANTLE_PROGRAM};
  // As at a log-out, when whoever keeps the session's messages may go first.
  if (GetParam() == Case::outputUnread) command = {"bash", "-c", "exec \"$0\" &> >(:)", VANTLE_PROGRAM};
  Program& vantle = m_desktop.launch(command);
  m_desktop.waitForBusName("com.halvo.vantle");
  m_desktop.focus(game);
  const auto areAllSlowed = [&] {
    return std::all_of(others.begin(), others.end(),
                       [](const Program* other) { return isSlowed(other->pid()); });
  };
  ASSERT_TRUE(waitUntil(areAllSlowed));
  if (GetParam() == Case::panelOpen || GetParam() == Case::panelClosedAgain) openPanel();
  if (GetParam() == Case::panelClosedAgain) closePanel();
  ASSERT_TRUE(waitUntil(areAllSlowed)) << "an app may have been in front for a moment";

  m_desktop.compositor().signal(SIGKILL);
  EXPECT_TRUE(waitUntil([&] { return changesSince(before, m_desktop.user()).empty(); }))
      << changesSince(before, m_desktop.user());
  EXPECT_EQ(vantle.exitStatus(), 0);
  EXPECT_EQ(journal(), "[]");
  for (Program* other : others) EXPECT_TRUE(other->isRunning());
}

std::string nameOf(const testing::TestParamInfo<Case>& test) {
  constexpr std::array names{"PanelNeverOpened", "PanelOpen", "PanelClosedAgain", "OutputUnread"};
  return names.at(static_cast<std::size_t>(test.param));
}

INSTANTIATE_TEST_SUITE_P(, KilledCompositor,
                         testing::Values(Case::panelNeverOpened, Case::panelOpen, Case::panelClosedAgain,
                                         Case::outputUnread),
                         nameOf);

class SettingsOnWayland : public testing::Test {
 protected:
  SettingsOnWayland() {
    m_vantle = &m_desktop.launch({"sh", "-c", "exec \"$0\" 2>\"$1\"", VANTLE_PROGRAM, m_log.string()},
                                 {{"WAYLAND_DEBUG", "client"}});
    m_desktop.waitForBusName("com.halvo.vantle");
  }

  // As a launcher does.
  void openSettings(const std::string& token) {
    ASSERT_TRUE(m_desktop.callApplication("ActivateAction",
                                          {"settings", "[]", "{'activation-token': <'" + token + "'>}"}));
    m_desktop.waitForWindow(m_vantle->pid());
  }
  bool isSaid(const std::string& text) const {
    std::ifstream file(m_log);
    return std::string(std::istreambuf_iterator<char>(file), {}).find(text) != std::string::npos;
  }

  SwayDesktop m_desktop;
  std::filesystem::path m_log = m_desktop.logs() / "vantle.errors";
  Program* m_vantle = nullptr;
};

TEST_F(SettingsOnWayland, ComeToTheFrontWithTheTokenOfTheLauncher) {
  openSettings("of-the-launcher");
  EXPECT_TRUE(waitUntil([this] { return isSaid(".activate(\"of-the-launcher\", "); }));
  EXPECT_EQ(m_desktop.waitForWindow(m_vantle->pid()).applicationId, "com.halvo.vantle");
}

// A message that is too long would end the connection.
TEST_F(SettingsOnWayland, TakeNoTokenThatNoDesktopMakes) {
  openSettings(std::string(5'000, 'x'));
  openSettings("short");
  EXPECT_TRUE(waitUntil([this] { return isSaid(".activate(\"short\", "); }));
  EXPECT_FALSE(isSaid("xxxxx"));
  EXPECT_TRUE(m_vantle->isRunning());
}

} // namespace
} // namespace vantle::desktop
