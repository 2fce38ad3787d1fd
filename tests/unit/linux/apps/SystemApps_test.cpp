// SPDX-License-Identifier: MIT
// A desktop's own programs, from their windows to what the engine does with them.
#include "engine/Engine.h"
#include "platform/linux/windows/x11/X11Windows.h"
#include "platform/linux/workspace/WindowedWorkspace.h"
#include "platform/shared/PollEventLoop.h"
#include "platform/simulated/SimulatedMachine.h"
#include "tests/support/Props.h"
#include "tests/support/VirtualDesktop.h"

#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace vantle {
namespace {

using desktop::Program;
using testing::ElementsAre;

// Real windows on an engine whose every other part is simulated.
class SystemAppsTest : public testing::Test {
 protected:
  // A window whose program file has this name.
  Program& start(const std::string& name) {
    const std::filesystem::path file = m_desktop.folder().path() / name;
    std::filesystem::copy_file(desktop::testWindow(), file);
    Program& program = m_desktop.launch({file.string()});
    m_desktop.waitForWindow(program.pid());
    m_machine.processes.spawn({.executable = file.string(), .pid = program.pid()});
    return program;
  }
  void install(const std::string& id, const std::string& program) {
    m_desktop.installDesktopFile(id, "[Desktop Entry]\nType=Application\nName=" + id +
                                         "\nExec=" + (m_desktop.folder().path() / program).string() + "\n");
  }
  Engine& boost() {
    m_workspace.emplace(m_loop, std::make_unique<X11Windows>(m_loop, m_desktop.display()),
                        WindowedWorkspace::Options{.installed = std::make_shared<DesktopEntries>(
                                                       std::vector<std::string>{m_desktop.dataHome()})});
    const Machine rest = m_machine.ports();
    return m_engine.emplace(Machine{rest.host, rest.processes, rest.band, *m_workspace, rest.audio,
                                    rest.power, rest.pressure, rest.notifications, rest.defaults, rest.files,
                                    rest.clock, rest.launcher, rest.text, rest.loginItem, rest.catalog,
                                    rest.hooks, rest.games},
                            m_settings);
  }
  AppRef appOf(const Program& program) { return m_workspace->runningApplication(program.pid()); }
  bool isFront(const Program& program) {
    return m_loop.runUntil(
        [&] {
          const AppRef front = m_workspace->frontmostApplication();
          return front && front->processIdentifier() == program.pid();
        },
        desktop::guardLimit);
  }

  desktop::VirtualDesktop m_desktop;
  PollEventLoop m_loop;
  SimulatedMachine m_machine;
  AppSettings m_settings{m_machine.defaults};
  std::optional<WindowedWorkspace> m_workspace;
  std::optional<Engine> m_engine;
};

TEST_F(SystemAppsTest, FileManagerIsNeitherSlowedNorQuitNorBoosted) {
  Program& fileManager = start("thunar");
  Program& monitor = start("lxtask"); // nobody installed it
  Program& editor = start("editor");
  Program& game = start("game");
  install("thunar", "thunar");
  install("org.example.Editor", "editor");
  install("org.example.Game", "game");
  m_settings.userGames.set({"org.example.Game"});
  m_settings.ramAction.set(RAMAction::quitMarked);
  m_settings.quittableApps.set({"thunar", "com.apple.finder", "com.apple.ActivityMonitor"});
  m_desktop.activate(game);
  Engine& engine = boost();
  ASSERT_TRUE(engine.activeGame.get());
  EXPECT_EQ(appOf(fileManager)->bundleIdentifier(), "com.apple.finder");
  EXPECT_EQ(appOf(fileManager)->localizedName(), "thunar");
  EXPECT_EQ(appOf(fileManager)->activationPolicy(), ActivationPolicy::regular);
  EXPECT_EQ(appOf(monitor)->bundleIdentifier(), "com.apple.ActivityMonitor");
  EXPECT_THAT(engine.managedNames.get(), ElementsAre("org.example.Editor"));

  engine.handleMemoryPressure(true);
  m_desktop.activate(editor);
  ASSERT_TRUE(isFront(editor)) << "whatever was asked of a window before has arrived";
  ASSERT_TRUE(fileManager.isRunning());
  ASSERT_TRUE(monitor.isRunning());

  m_desktop.activate(fileManager);
  ASSERT_TRUE(isFront(fileManager));
  engine.alwaysBoost();
  EXPECT_THAT(m_settings.userGames.get(), ElementsAre("org.example.Game"));
}

} // namespace
} // namespace vantle
