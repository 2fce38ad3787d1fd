// SPDX-License-Identifier: MIT
// What the workspace makes of a desktop's windows, whichever desktop that is. The windows are a script's and
// the time is the test's; the processes are real.
#include "platform/linux/workspace/WindowedWorkspace.h"

#include "platform/shared/PollEventLoop.h"
#include "tests/simulation/linux/SimulatedLoop.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"
#include "tests/unit/linux/windows/ScriptedWindows.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace vantle {
namespace {

using namespace std::chrono_literals;
using test::ForkedProcess;
using testing::ElementsAre;
using testing::IsEmpty;

// Time passes when the test says so; processes end when they end.
class StagedLoop final : public EventLoop {
 public:
  std::unique_ptr<Handle> watch(int descriptor, Readiness readiness, std::function<void()> ready) override {
    return m_descriptors.watch(descriptor, readiness, std::move(ready));
  }
  std::unique_ptr<Handle> after(std::chrono::milliseconds delay, std::function<void()> due) override {
    return m_timers.after(delay, std::move(due));
  }
  void pass(std::chrono::milliseconds time) { m_timers.run(time); }
  bool awaitProcesses(const std::function<bool()>& condition) {
    return m_descriptors.runUntil(condition, desktop::guardLimit);
  }

 private:
  SimulatedCalls m_calls;
  SimulatedClock m_clock{m_calls};
  SimulatedLoop m_timers{m_clock};
  PollEventLoop m_descriptors;
};

class WindowedWorkspaceTest : public testing::Test {
 protected:
  void watch(
      FrontRule front = FrontRule::settled, const std::function<void()>& whenSettling = [] {}) {
    auto windows = std::make_unique<ScriptedWindows>();
    m_windows = windows.get();
    m_windows->whenSettling = whenSettling;
    m_workspace = std::make_unique<WindowedWorkspace>(
        m_loop, std::move(windows),
        WindowedWorkspace::Options{
            .installed = std::make_shared<DesktopEntries>(std::vector<std::string>{m_data.path().string()}),
            .onDesktopLost = [this] { m_isLost = true; },
            .front = front});
    for (const auto& [event, name] : {std::pair{WorkspaceEvent::activated, "activated "},
                                      std::pair{WorkspaceEvent::launched, "launched "},
                                      std::pair{WorkspaceEvent::terminated, "terminated "}}) {
      m_registrations.push_back(
          m_workspace->observe(event, [this, name = std::string(name)](const AppRef& app) {
            m_events.push_back(name + std::to_string(app->processIdentifier()));
          }));
    }
  }
  // A desktop with the first process's window 1 in front and the second's window 2 behind it.
  void watchTwo(FrontRule front) {
    watch(front, [this] {
      m_windows->open(1, m_first.pid());
      m_windows->open(2, m_second.pid());
      m_windows->show(1);
    });
  }
  Pid front() const {
    const AppRef app = m_workspace->frontmostApplication();
    return app ? app->processIdentifier() : 0;
  }
  static std::string event(const char* name, Pid pid) {
    return std::string(name) + " " + std::to_string(pid);
  }

  desktop::TemporaryFolder m_data;
  ForkedProcess m_first;
  ForkedProcess m_second;
  StagedLoop m_loop;
  std::unique_ptr<WindowedWorkspace> m_workspace;
  ScriptedWindows* m_windows = nullptr;
  std::vector<std::unique_ptr<Registration>> m_registrations;
  std::vector<std::string> m_events;
  bool m_isLost = false;
};

// What holds on every desktop.
class OnEveryDesktop : public WindowedWorkspaceTest, public testing::WithParamInterface<FrontRule> {};
INSTANTIATE_TEST_SUITE_P(Fronts, OnEveryDesktop, testing::Values(FrontRule::asTold, FrontRule::settled),
                         [](const testing::TestParamInfo<FrontRule>& tested) {
                           return std::string(tested.param == FrontRule::asTold ? "AsTold" : "Settled");
                         });

TEST_P(OnEveryDesktop, AppsOfTheStartAreNoNews) {
  watchTwo(GetParam());
  EXPECT_EQ(m_windows->settledFor, 200ms);
  EXPECT_EQ(m_workspace->runningApplications().size(), 2U);
  EXPECT_EQ(front(), m_first.pid());
  m_loop.pass(1s);
  EXPECT_THAT(m_events, IsEmpty());
}

TEST_P(OnEveryDesktop, WhatWasKnownBeforeAnybodyListenedIsNoNewsEither) {
  watch(GetParam(), [this] {
    m_windows->open(1, m_first.pid());
    m_windows->front = 1;
  });
  EXPECT_EQ(front(), m_first.pid());
  m_windows->tell();
  m_loop.pass(1s);
  EXPECT_THAT(m_events, IsEmpty());
}

TEST_P(OnEveryDesktop, ALaunchIsToldWithItsActivation) {
  watchTwo(GetParam());
  const ForkedProcess app;
  m_windows->open(3, app.pid());
  m_windows->tell();
  m_loop.pass(149ms);
  EXPECT_THAT(m_events, IsEmpty());
  m_windows->show(3);
  EXPECT_THAT(m_events, ElementsAre(event("launched", app.pid()), event("activated", app.pid())));
}

TEST_P(OnEveryDesktop, ALaunchInTheBackgroundIsToldAfterAMoment) {
  watchTwo(GetParam());
  const ForkedProcess app;
  m_windows->open(3, app.pid());
  m_windows->tell();
  m_loop.pass(150ms);
  EXPECT_THAT(m_events, ElementsAre(event("launched", app.pid())));
  EXPECT_EQ(front(), m_first.pid());
}

TEST_P(OnEveryDesktop, NobodyHearsOfALaterAppFirst) {
  watchTwo(GetParam());
  const ForkedProcess early;
  const ForkedProcess late;
  m_windows->open(3, early.pid());
  m_windows->tell();
  m_windows->open(4, late.pid());
  m_windows->show(4);
  EXPECT_THAT(m_events, ElementsAre(event("launched", early.pid()), event("launched", late.pid()),
                                    event("activated", late.pid())));
}

TEST_P(OnEveryDesktop, WhatIsToldTwiceIsNewsOnce) {
  watchTwo(GetParam());
  for (int times = 0; times < 3; ++times) m_windows->show(2);
  EXPECT_THAT(m_events, ElementsAre(event("activated", m_second.pid())));
}

TEST_P(OnEveryDesktop, TwoWindowsAndADialogAreOneApp) {
  watchTwo(GetParam());
  m_windows->open(3, m_first.pid());
  m_windows->open(4, m_first.pid());
  for (const WindowId window : {3U, 4U, 1U}) m_windows->show(window);
  EXPECT_THAT(m_events, IsEmpty());
  EXPECT_EQ(m_workspace->runningApplications().size(), 2U);
}

TEST_P(OnEveryDesktop, AHundredChangesAreToldOneByOne) {
  watchTwo(GetParam());
  for (int change = 0; change < 100; ++change) m_windows->show(change % 2 == 0 ? 2 : 1);
  ASSERT_EQ(m_events.size(), 100U);
  EXPECT_EQ(m_events.front(), event("activated", m_second.pid()));
  EXPECT_EQ(m_events.back(), event("activated", m_first.pid()));
  EXPECT_EQ(front(), m_first.pid());
}

// Some desktops tell of the activation first.
TEST_P(OnEveryDesktop, TheFrontIsAwaitedUntilItsWindowIsKnown) {
  watchTwo(GetParam());
  const ForkedProcess app;
  m_windows->show(7);
  EXPECT_EQ(front(), m_first.pid());
  m_windows->open(7, app.pid());
  m_windows->tell();
  EXPECT_EQ(front(), app.pid());
  EXPECT_THAT(m_events, ElementsAre(event("launched", app.pid()), event("activated", app.pid())));
}

TEST_P(OnEveryDesktop, WindowsWithoutAProcessAreNobodysApps) {
  watchTwo(GetParam());
  const ForkedProcess withoutDescriptor;
  const ForkedProcess menu;
  m_windows->windows[3] = {.id = 3};
  m_windows->windows[4] = {.id = 4, .pid = withoutDescriptor.pid()};
  m_windows->open(5, menu.pid()).kind = WindowKind::passing;
  m_windows->tell();
  m_loop.pass(1s);
  EXPECT_THAT(m_events, IsEmpty());
  EXPECT_EQ(m_workspace->runningApplications().size(), 2U);
}

TEST_P(OnEveryDesktop, TheDesktopsOwnWindowsTakeNothingOutOfTheFront) {
  watchTwo(GetParam());
  const ForkedProcess panel;
  m_windows->open(3, panel.pid()).kind = WindowKind::shell;
  m_windows->show(3);
  m_loop.pass(1s);
  EXPECT_EQ(front(), m_first.pid());
  EXPECT_THAT(m_events, ElementsAre(event("launched", panel.pid())));
}

TEST_P(OnEveryDesktop, TheEndOfAProcessIsTheEndOfItsApp) {
  watchTwo(GetParam());
  const AppRef app = m_workspace->runningApplication(m_first.pid());
  m_first.kill();
  ASSERT_TRUE(m_loop.awaitProcesses([&] { return app->isTerminated(); }));
  EXPECT_THAT(m_windows->forgotten, ElementsAre(m_first.pid()));
  EXPECT_EQ(front(), 0) << "there is nothing to wait for";
  EXPECT_THAT(m_events, ElementsAre(event("terminated", m_first.pid())));
}

TEST_P(OnEveryDesktop, ALauncherMayCloseBehindItsGame) {
  watchTwo(GetParam());
  const ForkedProcess game;
  m_windows->open(3, game.pid());
  m_windows->show(3);
  m_first.kill();
  ASSERT_TRUE(m_loop.awaitProcesses([&] { return m_events.size() == 3; }));
  EXPECT_EQ(front(), game.pid());
  EXPECT_THAT(m_events, ElementsAre(event("launched", game.pid()), event("activated", game.pid()),
                                    event("terminated", m_first.pid())));
}

TEST_P(OnEveryDesktop, EachOrdinaryWindowIsAskedToClose) {
  watchTwo(GetParam());
  m_windows->open(3, m_first.pid());
  m_windows->open(4, m_first.pid()).kind = WindowKind::passing;
  m_windows->open(5, m_first.pid()).canBeClosed = false;
  m_windows->tell();
  EXPECT_TRUE(m_workspace->runningApplication(m_first.pid())->terminate());
  EXPECT_THAT(m_windows->askedToClose, ElementsAre(1U, 3U));
  m_windows->windows.erase(2);
  m_windows->tell();
  EXPECT_FALSE(m_workspace->runningApplication(m_second.pid())->terminate());
}

TEST_P(OnEveryDesktop, AQuestionWhetherToSaveIsLeftOpen) {
  watchTwo(GetParam());
  const AppRef app = m_workspace->runningApplication(m_first.pid());
  m_windows->open(3, m_first.pid());
  m_windows->tell();
  EXPECT_TRUE(app->terminate());
  m_windows->windows.erase(3);
  m_windows->open(4, m_first.pid()); // whether to save what is in 1
  m_windows->tell();
  m_windows->askedToClose.clear();
  EXPECT_FALSE(app->terminate());
  EXPECT_THAT(m_windows->askedToClose, IsEmpty());
  m_windows->windows.erase(4); // the person has said no
  m_windows->tell();
  EXPECT_TRUE(app->terminate());
  EXPECT_THAT(m_windows->askedToClose, ElementsAre(1U));
}

TEST_P(OnEveryDesktop, WhoeverOutlivesItsWindowsIsNotAskedAgain) {
  watchTwo(GetParam());
  const AppRef app = m_workspace->runningApplication(m_first.pid());
  EXPECT_TRUE(app->terminate());
  m_windows->windows.erase(1);
  m_windows->tell();
  EXPECT_FALSE(app->terminate());
  m_windows->open(5, m_first.pid());
  m_windows->tell();
  EXPECT_FALSE(app->terminate());
  EXPECT_THAT(m_windows->askedToClose, ElementsAre(1U));
}

TEST_P(OnEveryDesktop, AnAppsFirstOrdinaryWindowComesToTheFrontWhereThatCanBeAsked) {
  watchTwo(GetParam());
  m_windows->open(3, m_first.pid());
  m_windows->windows.at(1).kind = WindowKind::passing;
  m_windows->windows.at(2).canBeClosed = false;
  m_windows->tell();
  const AppRef first = m_workspace->runningApplication(m_first.pid());
  EXPECT_TRUE(first->canComeToFront());
  EXPECT_TRUE(first->bringToFront());
  EXPECT_THAT(m_windows->askedToFront, ElementsAre(3U));
  const AppRef second = m_workspace->runningApplication(m_second.pid());
  EXPECT_FALSE(second->canComeToFront());
  EXPECT_FALSE(second->bringToFront());
}

TEST_P(OnEveryDesktop, ADesktopThatGoesAwayHasNothingInFront) {
  watchTwo(GetParam());
  m_windows->lose();
  EXPECT_TRUE(m_isLost);
  EXPECT_EQ(front(), 0);
}

TEST_P(OnEveryDesktop, AppsThatAreKnownNoMoreHaveEndedToEverybodyUntilTheyAreSeenAgain) {
  watchTwo(GetParam());
  const ForkedProcess late;
  m_windows->open(3, late.pid());
  m_windows->tell();
  const AppRef app = m_workspace->runningApplication(m_first.pid());
  m_events.clear();
  m_windows->startOver();
  EXPECT_THAT(m_events, ElementsAre(event("launched", late.pid()), event("terminated", m_first.pid()),
                                    event("terminated", m_second.pid()), event("terminated", late.pid())));
  EXPECT_TRUE(app->isTerminated());
  EXPECT_EQ(front(), 0);
  EXPECT_THAT(m_workspace->runningApplications(), IsEmpty());
  EXPECT_FALSE(m_isLost);
  m_loop.pass(1s);
  m_events.clear();
  m_windows->open(7, m_first.pid());
  m_windows->show(7);
  EXPECT_THAT(m_events, ElementsAre(event("launched", m_first.pid()), event("activated", m_first.pid())));
}

TEST_P(OnEveryDesktop, ADesktopThatWasNeverThereIsNotLost) {
  watch(GetParam(), [this] { m_windows->lose(); });
  EXPECT_FALSE(m_isLost);
  EXPECT_THAT(m_workspace->runningApplications(), IsEmpty());
}

// Some windows say what they are a moment after they were opened.
TEST_P(OnEveryDesktop, AnAppIsKnownByWhatItsWindowSaysAtItsLaunch) {
  m_data.write("applications/org.example.Late.desktop",
               "[Desktop Entry]\nType=Application\nName=Late\nExec=true\nStartupWMClass=Late\n");
  watchTwo(GetParam());
  const ForkedProcess app;
  m_windows->open(3, app.pid());
  m_windows->tell();
  m_windows->windows[3].className = "Late";
  m_windows->show(3);
  const AppRef known = m_workspace->runningApplication(app.pid());
  EXPECT_EQ(known->localizedName(), "Late");
  EXPECT_EQ(known->bundleIdentifier(), "org.example.Late");
  // From then on it is who it is.
  m_windows->windows[3].className = "Other";
  m_windows->show(1);
  m_windows->show(3);
  EXPECT_EQ(known->localizedName(), "Late");
}

// A game that a person has downloaded and started, in one file that brings everything along.
TEST_F(WindowedWorkspaceTest, AnImageThatNobodyInstalledIsWhatItSaysOfItself) {
  const desktop::TemporaryFolder image;
  image.write("fine.desktop",
              "[Desktop Entry]\nType=Application\nName=Fine Game\nExec=fine\nCategories=Game;\n");
  const std::string game = (image.folder("usr/bin") / "fine").string();
  std::filesystem::copy_file("/bin/sleep", game);
  desktop::Start start{.command = {game, "1000"}};
  start.environment = {{"APPDIR", image.path()}, {"APPIMAGE", "/home/person/Fine.AppImage"}};
  const desktop::Program program(start);
  desktop::Start outside{.command = {"sleep", "1000"}};
  outside.environment = start.environment;
  const desktop::Program other(outside);
  desktop::require("the programs", [&] {
    return !readEvidence(program.pid()).imageFolder.empty() &&
           readEvidence(other.pid()).executable.ends_with("/sleep");
  });
  EXPECT_EQ(readEvidence(program.pid()).program, "/home/person/Fine.AppImage");
  watch(FrontRule::asTold, [&] {
    m_windows->open(1, program.pid());
    m_windows->open(2, other.pid());
  });
  const AppRef app = m_workspace->runningApplication(program.pid());
  EXPECT_EQ(app->localizedName(), "Fine Game");
  EXPECT_EQ(app->bundleIdentifier(), "fine");
  EXPECT_EQ(app->bundleCategory(), "public.app-category.games");
  EXPECT_EQ(m_workspace->runningApplication(other.pid())->localizedName(), "sleep") << "it came from outside";
}

// A game that has started another one and whose window comes after that one's.
TEST_F(WindowedWorkspaceTest, WhatWaitsIsNoWrapperOnceItHasAWindow) {
  const desktop::TemporaryFolder folder;
  const std::filesystem::path script =
      folder.write("start.sh", "#!/bin/sh\n/bin/sleep 1000 &\necho $! >pid\nwait\n");
  std::filesystem::permissions(script, std::filesystem::perms::owner_all);
  m_data.write("applications/waiting.desktop", "[Desktop Entry]\nType=Application\nName=Waiting\nExec=" +
                                                   script.string() + "\nCategories=Game;\n");
  desktop::Start start{.command = {script.string()}};
  start.workingFolder = folder.path();
  const desktop::Program wrapper(start);
  Pid child = 0;
  desktop::require("the child", [&] {
    std::ifstream(folder.path() / "pid") >> child;
    return child != 0 && readEvidence(child).executable.ends_with("/sleep");
  });
  watch();
  m_windows->open(1, child);
  m_windows->tell();
  ASSERT_EQ(m_workspace->runningApplication(child)->localizedName(), "Waiting");
  m_windows->open(2, wrapper.pid());
  m_windows->tell();
  m_loop.pass(1s);
  EXPECT_EQ(m_workspace->runningApplication(child)->localizedName(), "sleep");
  EXPECT_EQ(m_workspace->runningApplication(wrapper.pid())->localizedName(), "Waiting");
}

// An office's window is there before the document that it is called after.
class LateNames : public WindowedWorkspaceTest {
 protected:
  LateNames() {
    m_data.write("applications/org.example.Late.desktop",
                 "[Desktop Entry]\nType=Application\nName=Late\n"
                 "Exec=true\nCategories=Game;\nStartupWMClass=Late\n");
    watchTwo(FrontRule::asTold);
  }
  void say(WindowId window, const char* name) {
    m_windows->windows[window].className = name;
    m_windows->tell();
  }
  std::string nameOf(const ForkedProcess& app) const {
    return *m_workspace->runningApplication(app.pid())->localizedName();
  }
};

TEST_F(LateNames, OfTheAppInFrontAreNewsAsIfItHadJustComeThere) {
  const AppRef before = m_workspace->frontmostApplication();
  say(1, "Early");
  EXPECT_THAT(m_events, IsEmpty()) << "nothing is known of that name";
  say(1, "Late");
  EXPECT_EQ(nameOf(m_first), "Late");
  EXPECT_EQ(before->bundleCategory(), "public.app-category.games");
  EXPECT_EQ(m_workspace->frontmostApplication(), before) << "it is the same app";
  EXPECT_THAT(m_events, ElementsAre(event("activated", m_first.pid())));
}

TEST_F(LateNames, OfAnAppBehindAreNewsAsOfALaunch) {
  say(2, "Late");
  EXPECT_EQ(nameOf(m_second), "Late");
  EXPECT_EQ(front(), m_first.pid());
  EXPECT_THAT(m_events, ElementsAre(event("launched", m_second.pid())));
}

TEST_F(LateNames, OfALaterWindowAreNotTheApps) {
  m_windows->open(3, m_second.pid());
  say(3, "Late");
  EXPECT_NE(nameOf(m_second), "Late");
}

TEST_F(LateNames, AreTakenUntilADesktopFileIsFound) {
  say(1, "Late");
  say(1, "Early");
  EXPECT_EQ(nameOf(m_first), "Late");
}

// A browser whose windows may be a web app's, which has a desktop file of its own.
class WebApps : public WindowedWorkspaceTest {
 protected:
  WebApps() {
    m_data.write("applications/browser.desktop",
                 "[Desktop Entry]\nType=Application\nName=Browser\nExec=true\nStartupWMClass=Browser\n");
    m_data.write("applications/browser-game.desktop",
                 "[Desktop Entry]\nType=Application\nName=Web Game\nExec=true --app=game\n"
                 "Categories=Game;\nStartupWMClass=crx_game\n");
  }
  void openWindow(WindowId id, const char* instance) {
    WindowFacts& window = m_windows->open(id, m_browser.pid());
    window.instance = instance;
    window.className = "Browser";
  }
  std::string frontName() const {
    const AppRef app = m_workspace->frontmostApplication();
    return app ? *app->localizedName() : "nothing";
  }
  std::string known() const { return *m_workspace->runningApplication(m_browser.pid())->localizedName(); }
  std::string browsers(const char* name) const { return event(name, m_browser.pid()); }

  ForkedProcess m_browser;
};

TEST_F(WebApps, TheWindowInFrontSaysWhichAppIsInFront) {
  watch(FrontRule::asTold, [this] {
    openWindow(1, "browser");
    m_windows->show(1);
  });
  EXPECT_EQ(frontName(), "Browser");
  openWindow(2, "crx_game");
  m_windows->show(2);
  EXPECT_EQ(frontName(), "Web Game");
  EXPECT_EQ(m_workspace->frontmostApplication()->bundleCategory(), "public.app-category.games");
  EXPECT_EQ(m_workspace->runningApplications().size(), 1U) << "it is one process";
  const AppRef game = m_workspace->frontmostApplication();
  m_windows->show(1);
  EXPECT_EQ(frontName(), "Browser");
  m_windows->show(2);
  EXPECT_EQ(m_workspace->frontmostApplication(), game) << "the same one again";
  EXPECT_THAT(m_events, ElementsAre(browsers("launched"), browsers("activated"), browsers("activated"),
                                    browsers("activated")));
}

TEST_F(WebApps, EndsWithItsLastWindow) {
  watch(FrontRule::asTold, [this] {
    openWindow(1, "browser");
    m_windows->show(1);
  });
  openWindow(2, "crx_game");
  openWindow(3, "crx_game");
  m_windows->show(2);
  const AppRef game = m_workspace->frontmostApplication();
  m_windows->windows.erase(2);
  m_windows->show(1);
  EXPECT_FALSE(game->isTerminated());
  m_events.clear();
  m_windows->windows.erase(3);
  m_windows->tell();
  EXPECT_TRUE(game->isTerminated());
  EXPECT_EQ(known(), "Browser");
  EXPECT_EQ(frontName(), "Browser");
  EXPECT_THAT(m_events, ElementsAre(browsers("terminated"), browsers("launched")));
}

TEST_F(WebApps, EndsInFrontAsWell) {
  watch(FrontRule::asTold, [this] {
    openWindow(1, "browser");
    m_windows->show(1);
  });
  openWindow(2, "crx_game");
  m_windows->show(2);
  m_events.clear();
  m_windows->windows.erase(2);
  m_windows->show(0);
  EXPECT_EQ(frontName(), "nothing");
  EXPECT_EQ(known(), "Browser");
  m_windows->show(1);
  EXPECT_EQ(frontName(), "Browser");
  EXPECT_THAT(m_events, ElementsAre(browsers("terminated"), browsers("launched"), browsers("activated")));
}

TEST_F(WebApps, OneThatBeganTheProcessIsNotItsBrowser) {
  watch(FrontRule::asTold, [this] {
    openWindow(1, "crx_game");
    m_windows->show(1);
  });
  EXPECT_EQ(frontName(), "Web Game");
  const AppRef game = m_workspace->frontmostApplication();
  openWindow(2, "browser");
  m_windows->show(2);
  EXPECT_EQ(frontName(), "Browser");
  m_windows->windows.erase(1);
  m_windows->tell();
  EXPECT_TRUE(game->isTerminated());
  EXPECT_EQ(known(), "Browser");
}

TEST_F(WebApps, WithoutAnyWindowTheProcessStaysWhatItWas) {
  watch(FrontRule::asTold, [this] {
    openWindow(1, "browser");
    m_windows->show(1);
  });
  openWindow(2, "crx_game");
  m_windows->show(2);
  m_windows->windows.clear();
  m_windows->show(0);
  EXPECT_EQ(known(), "Web Game") << "a game that changes to the full screen may open its window anew";
}

TEST_F(WebApps, OnlyTheWindowsOfTheOneInFrontLastAreAskedToClose) {
  watch(FrontRule::asTold, [this] {
    openWindow(1, "browser");
    m_windows->show(1);
  });
  openWindow(2, "crx_game");
  m_windows->show(2);
  m_windows->show(1);
  EXPECT_TRUE(m_workspace->runningApplication(m_browser.pid())->terminate());
  EXPECT_THAT(m_windows->askedToClose, ElementsAre(1));
  EXPECT_TRUE(m_workspace->runningApplication(m_browser.pid())->bringToFront());
  EXPECT_THAT(m_windows->askedToFront, ElementsAre(1));
}

TEST_F(WebApps, ADialogThatDeclaresNothingIsItsApps) {
  watch(FrontRule::asTold, [this] {
    openWindow(1, "crx_game");
    m_windows->show(1);
  });
  m_windows->open(2, m_browser.pid()).className = "Some-Dialog";
  m_windows->show(2);
  EXPECT_EQ(frontName(), "Web Game");
  m_windows->open(3, m_browser.pid()); // says nothing at all
  m_windows->show(3);
  EXPECT_EQ(frontName(), "Web Game");
  EXPECT_THAT(m_events, IsEmpty());
}

// An emulator that nobody has installed calls each window after its game.
TEST_F(WebApps, AWindowThatIsCalledAfterAGameIsThatOfAnUnknownProcess) {
  watch(FrontRule::asTold, [this] {
    m_windows->open(1, m_browser.pid()).className = "Emulator";
    m_windows->show(1);
  });
  const std::string unknown = frontName();
  m_windows->open(2, m_browser.pid()).className = "Browser-Game";
  m_windows->show(2);
  const AppRef game = m_workspace->frontmostApplication();
  EXPECT_EQ(frontName(), "Web Game");
  EXPECT_EQ(game->knownBy()->rule, "window class as id");
  m_windows->show(1);
  EXPECT_EQ(frontName(), unknown);
  m_windows->windows.erase(2);
  m_windows->tell();
  EXPECT_TRUE(game->isTerminated());
  EXPECT_EQ(known(), unknown);
}

TEST_F(WebApps, AreKnownHoweverManyNamesTheWindowsHaveHad) {
  watch(FrontRule::asTold, [this] {
    openWindow(1, "browser");
    m_windows->show(1);
  });
  openWindow(2, "crx_game");
  m_windows->show(2);
  const AppRef game = m_workspace->frontmostApplication();
  for (int page = 0; page < 200; ++page) {
    openWindow(3, ("page " + std::to_string(page)).c_str());
    m_windows->show(3);
    ASSERT_EQ(frontName(), "Browser");
  }
  m_windows->show(2);
  EXPECT_EQ(m_workspace->frontmostApplication(), game);
}

TEST_F(WebApps, TheEndOfTheProcessIsTheEndOfAll) {
  watch(FrontRule::asTold, [this] {
    openWindow(1, "browser");
    m_windows->show(1);
  });
  const AppRef browser = m_workspace->frontmostApplication();
  openWindow(2, "crx_game");
  m_windows->show(2);
  const AppRef game = m_workspace->frontmostApplication();
  m_browser.kill();
  ASSERT_TRUE(m_loop.awaitProcesses([&] { return game->isTerminated(); }));
  EXPECT_TRUE(browser->isTerminated());
  EXPECT_THAT(m_workspace->runningApplications(), IsEmpty());
}

// A launcher that its desktop file calls a game, and a game that it starts.
class GameLaunchers : public WindowedWorkspaceTest {
 protected:
  GameLaunchers() {
    for (const char* name : {"launcher", "game"}) {
      m_data.write(std::string("applications/") + name + ".desktop",
                   std::string("[Desktop Entry]\nType=Application\nExec=true\nCategories=Game;\nName=") +
                       name + "\nStartupWMClass=" + name + "\n");
    }
    watch(FrontRule::asTold);
    m_windows->open(1, ::getpid()).className = "launcher"; // whose children the test's processes are
    m_windows->show(1);
    m_launcher = m_workspace->frontmostApplication();
  }
  void showGame(const char* className) {
    m_windows->open(2, m_first.pid()).className = className;
    m_windows->show(2);
  }

  AppRef m_launcher;
};

TEST_F(GameLaunchers, AreNoGamesOnceTheyHaveStartedOne) {
  EXPECT_EQ(m_launcher->bundleCategory(), gamesCategory);
  m_events.clear();
  showGame("game");
  const std::string self = std::to_string(::getpid());
  EXPECT_THAT(m_events, ElementsAre("terminated " + self, "launched " + self,
                                    event("launched", m_first.pid()), event("activated", m_first.pid())));
  EXPECT_TRUE(m_launcher->isTerminated());
  const AppRef now = m_workspace->runningApplication(::getpid());
  EXPECT_EQ(now->localizedName(), "launcher");
  EXPECT_EQ(now->bundleIdentifier(), m_launcher->bundleIdentifier());
  EXPECT_FALSE(now->bundleCategory());
  EXPECT_FALSE(now->isTerminated());
  m_events.clear();
  m_windows->show(1);
  EXPECT_EQ(m_workspace->frontmostApplication(), now);
  m_windows->show(2);
  EXPECT_EQ(m_events.size(), 2U) << "it is known once";
}

TEST_F(GameLaunchers, AreNotTheGameItselfInAnotherProcess) {
  showGame("launcher");
  EXPECT_FALSE(m_launcher->isTerminated());
}

TEST_F(GameLaunchers, AreNotKnownByWhatIsNoGame) {
  showGame("calculator");
  EXPECT_FALSE(m_launcher->isTerminated());
}

// A front end that leaves its process to another program: `exec`.
class Successors : public WindowedWorkspaceTest {
 protected:
  Successors() {
    m_game = m_folder.path() / "game";
    std::filesystem::copy_file("/bin/sleep", m_game);
    m_front = script("front.sh", waits + "exec \"$2\" 1000\n");
    m_data.write("applications/front.desktop", desktopFile("Front", m_front, "Office"));
    m_data.write("applications/game.desktop", desktopFile("Game", m_game, "Game"));
  }
  static std::string desktopFile(const std::string& name, const std::string& program, const char* category) {
    return "[Desktop Entry]\nType=Application\nName=" + name + "\nExec=" + program +
           "\nCategories=" + category + ";\n";
  }
  std::string script(const char* name, const std::string& lines) {
    const std::filesystem::path path = m_folder.write(name, "#!/bin/sh\necho >>\"$0.runs\"\n" + lines);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path;
  }
  // Starts it and shows its window 3 in front.
  void start(const std::vector<std::string>& command, const std::string& name) {
    m_program = std::make_unique<desktop::Program>(desktop::Start{.command = command, .environment = {}});
    desktop::require("the front end", [&] { return std::filesystem::exists(m_front + ".runs"); });
    watchTwo(FrontRule::asTold);
    m_windows->open(3, pid());
    m_windows->show(3);
    EXPECT_EQ(frontName(), name);
    m_before = m_workspace->frontmostApplication();
  }
  void closeAndGo(const std::string& path) {
    m_windows->windows.erase(3);
    m_windows->show(0);
    go([&] { return runs(path); });
  }
  bool runs(const std::string& path) const { // and the kernel has told it with what
    const AppEvidence evidence = readEvidence(pid());
    return evidence.program == path && !evidence.arguments.empty();
  }
  void go(const std::function<bool()>& isThere) {
    m_events.clear();
    m_folder.write("go", "");
    desktop::require("another program", isThere);
  }
  void showNext() {
    m_windows->open(4, pid());
    m_windows->show(4);
  }
  Pid pid() const { return m_program->pid(); }
  std::string goFile() const { return m_folder.path() / "go"; }
  std::string frontName() const {
    const AppRef app = m_workspace->frontmostApplication();
    return app ? *app->localizedName() : "nothing";
  }
  auto becameAnother() const {
    return ElementsAre(event("terminated", pid()), event("launched", pid()), event("activated", pid()));
  }

  const std::string waits = "while [ ! -e \"$1\" ]; do sleep 0.05; done\n";
  desktop::TemporaryFolder m_folder;
  std::string m_front;
  std::string m_game;
  std::unique_ptr<desktop::Program> m_program;
  AppRef m_before;
};

TEST_F(Successors, AreKnownFromTheirFirstWindowOn) {
  start({m_front, goFile(), m_game}, "Front");
  closeAndGo(m_game);
  EXPECT_THAT(m_events, IsEmpty());
  showNext();
  EXPECT_EQ(frontName(), "Game");
  EXPECT_EQ(m_workspace->frontmostApplication()->bundleCategory(), gamesCategory);
  EXPECT_EQ(m_workspace->runningApplication(pid()), m_workspace->frontmostApplication());
  EXPECT_EQ(m_workspace->runningApplications().size(), 3U);
  EXPECT_TRUE(m_before->isTerminated());
  EXPECT_THAT(m_events, becameAnother());
  EXPECT_THAT(m_windows->forgotten, IsEmpty()) << "the window is the living process's";
  m_events.clear();
  m_program->kill();
  ASSERT_TRUE(m_loop.awaitProcesses([&] { return !m_events.empty(); }));
  EXPECT_THAT(m_events, ElementsAre(event("terminated", pid())));
}

TEST_F(Successors, AreKnownBehindAsWell) {
  start({m_front, goFile(), m_game}, "Front");
  closeAndGo(m_game);
  m_windows->open(4, pid());
  m_windows->show(1);
  EXPECT_EQ(m_workspace->runningApplication(pid())->localizedName(), "Game");
}

TEST_F(Successors, AreKnownWhenTheyComeToTheFrontAgain) {
  start({m_front, goFile(), m_game}, "Front");
  m_windows->show(1);
  go([&] { return runs(m_game); });
  m_windows->tell();
  EXPECT_THAT(m_events, IsEmpty()) << "nobody has looked";
  m_windows->show(3);
  EXPECT_EQ(frontName(), "Game");
  EXPECT_THAT(m_events, becameAnother());
}

TEST_F(Successors, OfACompiledProgramMayBeNoGame) {
  m_data.write("applications/game.desktop", desktopFile("Game", m_game, "Office"));
  const std::string first = m_folder.path() / "first";
  std::filesystem::copy_file("/bin/sh", first);
  m_data.write("applications/first.desktop", desktopFile("First", first, "Game"));
  start({first, "-c", "echo >\"$0.runs\"; " + waits + "exec \"$2\" 1000", m_front, goFile(), m_game},
        "First");
  EXPECT_EQ(m_before->bundleCategory(), gamesCategory);
  closeAndGo(m_game);
  showNext();
  EXPECT_EQ(frontName(), "Game");
  EXPECT_NE(m_workspace->frontmostApplication()->bundleCategory(), gamesCategory);
}

TEST_F(Successors, MayBeAnotherScriptOfTheSameInterpreter) {
  const std::string other = script("other.sh", "while :; do sleep 1; done\n");
  m_data.write("applications/other.desktop", desktopFile("Other", other, "Game"));
  start({m_front, goFile(), other}, "Front");
  closeAndGo(other);
  showNext();
  EXPECT_EQ(frontName(), "Other");
}

TEST_F(Successors, ThatNobodyKnowsGoByTheirOwnName) {
  std::filesystem::remove(m_data.path() / "applications/game.desktop");
  start({m_front, goFile(), m_game}, "Front");
  closeAndGo(m_game);
  showNext();
  EXPECT_EQ(frontName(), "game");
}

TEST_F(Successors, AreTheSameAppIfTheyStartOver) {
  const std::string again = script("again.sh", waits + "rm \"$1\"; exec \"$0\" \"$@\"\n");
  m_data.write("applications/front.desktop", desktopFile("Front", again, "Office"));
  m_front = again;
  start({again, goFile()}, "Front");
  m_windows->windows.erase(3);
  m_windows->show(0);
  go([&] { return std::filesystem::file_size(again + ".runs") == 2; });
  showNext();
  EXPECT_EQ(m_workspace->frontmostApplication(), m_before);
  EXPECT_THAT(m_events, ElementsAre(event("activated", pid())));
}

// The desktop has started the front end, whatever that has become since.
class LaunchedSuccessors : public Successors {
 protected:
  void launch() {
    const std::string file = m_data.path() / "applications/front.desktop";
    start({"/bin/sh", "-c",
           "GIO_LAUNCHED_DESKTOP_FILE_PID=$$ GIO_LAUNCHED_DESKTOP_FILE=" + file + " exec " + m_front + " " +
               goFile() + " " + m_game},
          "Front");
    ASSERT_EQ(m_before->knownBy()->rule, "launched file");
  }
};

TEST_F(LaunchedSuccessors, AreKnownByWhatTheyAre) {
  launch();
  closeAndGo(m_game);
  showNext();
  EXPECT_EQ(frontName(), "Game");
  m_windows->windows[4].className = "late";
  m_windows->show(1);
  m_windows->show(4);
  EXPECT_EQ(frontName(), "Game") << "whenever they are looked at";
}

TEST_F(LaunchedSuccessors, AreKnownByTheirLaunchIfByNothingElse) {
  std::filesystem::remove(m_data.path() / "applications/game.desktop");
  launch();
  closeAndGo(m_game);
  showNext();
  EXPECT_EQ(m_workspace->frontmostApplication(), m_before);
  EXPECT_THAT(m_events, ElementsAre(event("activated", pid())));
}

TEST_F(WindowedWorkspaceTest, NothingInFrontCountsAtOnceWhereItIsAsTold) {
  watchTwo(FrontRule::asTold);
  m_windows->show(0);
  EXPECT_EQ(front(), 0);
}

TEST_F(WindowedWorkspaceTest, NothingInFrontCountsOnceItHasLasted) {
  watchTwo(FrontRule::settled);
  m_windows->show(0);
  m_loop.pass(30ms);
  m_windows->tell(); // again, which starts nothing anew
  m_loop.pass(19ms);
  EXPECT_EQ(front(), m_first.pid());
  m_loop.pass(1ms);
  EXPECT_EQ(front(), 0);
  EXPECT_THAT(m_events, IsEmpty());
  m_windows->show(1);
  EXPECT_THAT(m_events, ElementsAre(event("activated", m_first.pid())));
}

TEST_F(WindowedWorkspaceTest, AGapBetweenTwoWindowsIsNotSeen) {
  watchTwo(FrontRule::settled);
  m_windows->show(0);
  m_loop.pass(49ms);
  m_windows->show(2);
  m_windows->show(0);
  m_loop.pass(49ms);
  EXPECT_EQ(front(), m_second.pid()) << "each gap has its own time";
  m_windows->show(2);
  m_loop.pass(1s);
  EXPECT_EQ(front(), m_second.pid());
  EXPECT_THAT(m_events, ElementsAre(event("activated", m_second.pid())));
}

TEST_F(WindowedWorkspaceTest, ThisProgramsOwnWindowsTakeNothingOutOfASettledFront) {
  watchTwo(FrontRule::settled);
  m_windows->open(3, ::getpid());
  m_windows->show(3);
  m_loop.pass(1s);
  EXPECT_EQ(front(), m_first.pid());
  m_windows->show(0); // the panel closes, and the game is back in a moment
  m_loop.pass(49ms);
  m_windows->show(1);
  EXPECT_THAT(m_events, ElementsAre(event("launched", ::getpid())));
}

TEST_F(WindowedWorkspaceTest, ThisProgramsOwnWindowsAreNeverASettledFront) {
  watch(FrontRule::settled, [this] {
    m_windows->open(3, ::getpid());
    m_windows->show(3);
  });
  EXPECT_EQ(front(), 0);
}

TEST_F(WindowedWorkspaceTest, ThisProgramsOwnWindowsAreInFrontWhereItIsAsTold) {
  watchTwo(FrontRule::asTold);
  m_windows->open(3, ::getpid());
  m_windows->show(3);
  EXPECT_EQ(front(), ::getpid());
}

} // namespace
} // namespace vantle
