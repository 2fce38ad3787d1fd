// SPDX-License-Identifier: MIT
// What happens when memory is short, among real apps under a real window manager and with a real notification
// daemon. Only the shortage, the band and the clock are made up.
#include "engine/Engine.h"
#include "platform/linux/notices/DesktopNotifications.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/linux/windows/x11/X11Windows.h"
#include "platform/linux/workspace/WindowedWorkspace.h"
#include "platform/shared/PollEventLoop.h"
#include "platform/simulated/SimulatedMachine.h"
#include "tests/support/NotificationDaemon.h"
#include "tests/support/Props.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace vantle::desktop {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

// Every app is slowed, and none of them notices.
class AnyBand final : public BackgroundBand {
 public:
  using BackgroundBand::enterBackgroundBand;
  bool enterBackgroundBand(Pid /*pid*/) override { return true; }
  bool leaveBackgroundBand(Pid /*pid*/) override { return true; }
  std::optional<bool> isInBackgroundBand(Pid /*pid*/) const override { return false; }
};

struct ShortMemory : testing::Test {
  void SetUp() override {
    install("Game", "Game");
    install("Stubborn", "Utility");
    install("Small", "Utility");
    simulated.host.self = ::getpid();
    workspace.emplace(
        loop, std::make_unique<X11Windows>(loop, desktop.display()),
        WindowedWorkspace::Options{.installed = std::make_shared<DesktopEntries>(std::vector<std::string>{
                                       desktop.dataHome(), "/usr/local/share", "/usr/share"})});
    engine.emplace(Machine{simulated.host, processes, band, *workspace, simulated.audio, simulated.power,
                           simulated.pressure, notices, simulated.defaults, simulated.files, simulated.clock,
                           simulated.launcher, simulated.text, simulated.loginItem, simulated.catalog,
                           simulated.hooks, simulated.games},
                   settings);
  }

  // An app that is known by the class of its window.
  void install(const std::string& name, const char* category) const {
    std::string text = "[Desktop Entry]\nType=Application\nExec=true\nName=";
    text.append(name).append("\nStartupWMClass=").append(name).append("\nCategories=").append(category);
    desktop.installDesktopFile("org.example." + name, text.append(";\n"));
  }

  // The parts of this process run while it waits for those of others.
  bool waitFor(const std::function<bool()>& condition) {
    return waitUntil([&] {
      loop.runUntil([] { return false; }, 1ms);
      return condition();
    });
  }

  Program& app(std::vector<std::string> command) {
    Program& program = desktop.launch(std::move(command));
    desktop.waitForWindow(program.pid());
    EXPECT_TRUE(waitFor([&] { return workspace->runningApplication(program.pid()) != nullptr; }));
    return program;
  }
  // Marks it as one that may be quit, by what the settings know it by.
  void mark(const Program& program) {
    const AppRef known = workspace->runningApplication(program.pid());
    std::vector<std::string> marked = settings.quittableApps.get();
    marked.push_back(known->bundleIdentifier().value_or(known->localizedName().value_or("")));
    settings.quittableApps.set(marked);
    settings.ramAction.set(RAMAction::quitMarked);
  }
  void play() {
    desktop.activate(app({testWindow(), "--class", "Game", "--background"}));
    ASSERT_TRUE(waitFor([&] { return engine->activeGame.get() != nullptr; }));
  }
  Program& editorWithUnsavedText() {
    Program& editor = app({"mousepad"});
    desktop.activate(editor);
    EXPECT_TRUE(waitFor([&] {
      desktop.run({"xdotool", "type", "unsaved"});
      const auto windows = desktop.windows().ofProcess(editor.pid());
      return std::any_of(windows.begin(), windows.end(),
                         [](const XWindows::Window& window) { return window.title.starts_with('*'); });
    })) << "nothing was typed";
    return editor;
  }

  // The notices in the order in which they were shown, "TITLE|BODY" each.
  std::vector<std::string> shown() const {
    std::vector<std::string> lines;
    const std::string all = daemon.shown();
    for (std::size_t at = 0, end = 0; (end = all.find('\n', at)) != std::string::npos; at = end + 1) {
      lines.push_back(all.substr(at, end - at).substr(std::string("Vantle|").size()));
    }
    return lines;
  }
  bool areShown(std::size_t count) {
    return waitFor([&] { return shown().size() >= count; });
  }

  VirtualDesktop desktop;
  NotificationDaemon daemon{desktop};
  PollEventLoop loop;
  ProcfsProcessTable processes{BootEpoch(0)};
  AnyBand band;
  SimulatedMachine simulated;
  BusConnection session{loop, desktop.busAddress()};
  DesktopNotifications notices{session};
  std::optional<WindowedWorkspace> workspace;
  AppSettings settings{simulated.defaults};
  std::optional<Engine> engine;
};

TEST_F(ShortMemory, MarkedAppsAreAskedAndUnsavedWorkAsksFirst) {
  Program& editor = editorWithUnsavedText();
  Program& calculator = app({"galculator"});
  Program& stubborn = app({testWindow(), "--class", "Stubborn", "--ignore-close"});
  Program& bystander = app({testWindow(), "--class", "Small"});
  for (const Program* program : {&editor, &calculator, &stubborn}) mark(*program);
  play();
  simulated.pressure.raise(true);

  EXPECT_TRUE(areShown(1));
  EXPECT_THAT(shown(),
              ElementsAre("Memory almost full|Quit Mousepad, Galculator, Stubborn to free up memory."));
  EXPECT_EQ(calculator.exitStatus(), 0);
  EXPECT_TRUE(waitFor([&] { return desktop.windows().ofProcess(editor.pid()).size() == 2; }))
      << "it asks whether to save";
  app({testWindow(), "--class", "Later", "--background"}); // the question, which came first, is known by then
  for (Program* program : {&editor, &stubborn, &bystander}) EXPECT_TRUE(program->isRunning());

  // Whoever stays is left in peace for 300 seconds, and is asked again afterwards; but not who is still
  // asking.
  simulated.clock.advance(300s);
  simulated.pressure.raise(true);
  simulated.pressure.raise(false);
  simulated.clock.advance(1s);
  simulated.pressure.raise(true);
  EXPECT_TRUE(areShown(2));
  EXPECT_THAT(shown(),
              ElementsAre("Memory almost full|Quit Mousepad, Galculator, Stubborn to free up memory.",
                          "Memory almost full|Quit Stubborn to free up memory."));
  EXPECT_EQ(daemon.displayed(), 1) << "the second has replaced the first";
  EXPECT_EQ(desktop.windows().ofProcess(editor.pid()).size(), 2U) << "the question is still there";
  EXPECT_TRUE(editor.isRunning());
  EXPECT_TRUE(stubborn.isRunning());
}

TEST_F(ShortMemory, TheAppInFrontIsSparedAndTheNoticeNamesTheLargest) {
  Program& calculator = app({"galculator"});
  app({"mousepad"});
  app({testWindow(), "--class", "Small"});
  mark(calculator);
  play();
  desktop.activate(calculator);
  ASSERT_TRUE(waitFor([&] { return workspace->runningApplication(calculator.pid())->isActive(); }));
  simulated.pressure.raise(true);
  EXPECT_TRUE(areShown(1));
  // The one in front is not in the background either.
  EXPECT_THAT(
      shown().front(),
      testing::MatchesRegex("Memory almost full\\|Using the most memory: Mousepad [0-9.]+ MB, Small [0-9]+ "
                            "KB\\. Quitting them will free up memory\\."));
  EXPECT_TRUE(calculator.isRunning());
}

TEST_F(ShortMemory, WithoutABoostNobodyIsAskedAndNothingIsShown) {
  Program& calculator = app({"galculator"});
  mark(calculator);
  simulated.pressure.raise(true);
  // Something that is sure to be shown comes after it.
  play();
  settings.quittableApps.set({});
  simulated.pressure.raise(false);
  EXPECT_TRUE(areShown(1));
  EXPECT_THAT(shown(), ElementsAre(testing::StartsWith("Memory is running low|")));
  EXPECT_TRUE(calculator.isRunning());
}

} // namespace
} // namespace vantle::desktop
