// SPDX-License-Identifier: MIT
// The apps of a real desktop, as the workspace sees them.
#include "platform/linux/windows/x11/X11Windows.h"

#include "platform/linux/workspace/WindowedWorkspace.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/InChild.h"
#include "tests/support/Props.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantle {
namespace {

using desktop::Program;
using desktop::VirtualDesktop;
using testing::ElementsAre;
using testing::IsEmpty;

class X11WorkspaceTest : public testing::Test {
 protected:
  enum class Shown { yes, no };

  Program& window(std::vector<std::string> arguments = {}, Shown shown = Shown::yes) {
    arguments.insert(arguments.begin(), desktop::testWindow());
    Program& program = m_desktop.launch(std::move(arguments));
    if (shown == Shown::yes) m_desktop.waitForWindow(program.pid());
    return program;
  }

  WindowedWorkspace& watch() {
    m_workspace = std::make_unique<WindowedWorkspace>(
        m_loop, std::make_unique<X11Windows>(m_loop, m_desktop.display()),
        WindowedWorkspace::Options{.installed = std::make_shared<DesktopEntries>(
                                       std::vector<std::string>{m_desktop.dataHome(), "/usr/share"}),
                                   .onDesktopLost = [this] { m_isLost = true; }});
    for (const auto& [event, name] : {std::pair{WorkspaceEvent::activated, "activated "},
                                      std::pair{WorkspaceEvent::launched, "launched "},
                                      std::pair{WorkspaceEvent::terminated, "terminated "}}) {
      m_registrations.push_back(
          m_workspace->observe(event, [this, name = std::string(name)](const AppRef& app) {
            m_events.push_back(name + std::to_string(app->processIdentifier()) +
                               (app->isActive() ? " active" : ""));
          }));
    }
    return *m_workspace;
  }

  bool runUntil(const std::function<bool()>& condition) {
    return m_loop.runUntil(condition, desktop::guardLimit);
  }
  bool isFront(const Program& program) {
    const AppRef front = m_workspace->frontmostApplication();
    return front && front->processIdentifier() == program.pid();
  }
  AppRef appOf(const Program& program) {
    AppRef app;
    runUntil([&] { return (app = m_workspace->runningApplication(program.pid())) != nullptr; });
    return app;
  }
  static std::string event(const char* name, const Program& program, bool isActive = false) {
    return std::string(name) + " " + std::to_string(program.pid()) + (isActive ? " active" : "");
  }

  VirtualDesktop m_desktop;
  PollEventLoop m_loop;
  std::unique_ptr<WindowedWorkspace> m_workspace;
  std::vector<std::unique_ptr<Registration>> m_registrations;
  std::vector<std::string> m_events;
  bool m_isLost = false;
};

TEST_F(X11WorkspaceTest, KnowsAtOnceWhatRunsAlready) {
  const Program& first = window();
  const Program& second = window();
  m_desktop.activate(first);
  watch();
  ASSERT_EQ(m_workspace->runningApplications().size(), 2U);
  EXPECT_EQ(m_workspace->runningApplications()[0]->processIdentifier(), first.pid());
  EXPECT_EQ(m_workspace->runningApplications()[1]->processIdentifier(), second.pid());
  EXPECT_TRUE(isFront(first));
  EXPECT_TRUE(m_workspace->runningApplication(first.pid())->isActive());
  EXPECT_FALSE(m_workspace->runningApplication(second.pid())->isActive());
  EXPECT_EQ(m_workspace->runningApplication(1), nullptr);
  EXPECT_THAT(m_events, IsEmpty());
}

TEST_F(X11WorkspaceTest, TellsTheFrontAppOnceAChange) {
  Program& first = window({"--windows", "2"});
  Program& second = window();
  m_desktop.activate(second);
  watch();
  m_desktop.activate(first);
  ASSERT_TRUE(runUntil([&] { return isFront(first); }));
  // The other window of the same app changes nothing.
  m_desktop.activate(m_desktop.windows().ofProcess(first.pid()).at(1).id);
  m_desktop.activate(second);
  ASSERT_TRUE(runUntil([&] { return isFront(second); }));
  EXPECT_THAT(m_events, ElementsAre(event("activated", first, true), event("activated", second, true)));
}

TEST_F(X11WorkspaceTest, TellsALaunchThenItsActivationThenItsEnd) {
  watch();
  Program& program = m_desktop.launch({desktop::testWindow()});
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 2; }));
  program.signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 3; }));
  EXPECT_THAT(m_events, ElementsAre(event("launched", program, true), event("activated", program, true),
                                    event("terminated", program)));
  EXPECT_THAT(m_workspace->runningApplications(), IsEmpty());
  EXPECT_EQ(m_workspace->frontmostApplication(), nullptr);
}

TEST_F(X11WorkspaceTest, TellsALaunchInTheBackgroundAsOne) {
  Program& front = window();
  m_desktop.activate(front);
  watch();
  Program& program = window({"--background"});
  ASSERT_TRUE(runUntil([&] { return !m_events.empty(); }));
  EXPECT_THAT(m_events, ElementsAre(event("launched", program)));
  EXPECT_TRUE(isFront(front));
}

TEST_F(X11WorkspaceTest, ListsAppsByTheStartOfTheirProcesses) {
  Program& late = window({"--windows", "0"}, Shown::no);
  Program& early = window();
  watch();
  late.signal(SIGUSR2); // its first window
  ASSERT_NE(appOf(late), nullptr);
  ASSERT_EQ(m_workspace->runningApplications().size(), 2U);
  EXPECT_EQ(m_workspace->runningApplications()[0]->processIdentifier(), late.pid());
  EXPECT_EQ(m_workspace->runningApplications()[1]->processIdentifier(), early.pid());
}

TEST_F(X11WorkspaceTest, LeavesOutWhatHasNoOrdinaryWindow) {
  window({"--windows", "0"}, Shown::no);
  window({"--override"}, Shown::no);
  window({"--type", "NOTIFICATION", "--title", "notice"});
  const Program& ordinary = window();
  watch();
  ASSERT_EQ(m_workspace->runningApplications().size(), 1U);
  EXPECT_NE(m_workspace->runningApplication(ordinary.pid()), nullptr);
}

TEST_F(X11WorkspaceTest, KeepsAnAppWhoseWindowsAreGone) {
  Program& program = window({"--ignore-close"});
  watch();
  m_desktop.activate(program);
  program.signal(SIGWINCH);
  ASSERT_TRUE(
      runUntil([&] { return m_desktop.windows().list().empty() && !m_workspace->frontmostApplication(); }));
  const AppRef app = m_workspace->runningApplication(program.pid());
  ASSERT_NE(app, nullptr);
  EXPECT_FALSE(app->isTerminated());
  EXPECT_FALSE(app->terminate()) << "without a window there is nobody to ask";
}

TEST_F(X11WorkspaceTest, PanelsAndDesktopsAreAccessoryAndNeverInFront) {
  Program& app = window();
  Program& panel = window({"--type", "DOCK"});
  Program& fileManager = window({"--type", "DESKTOP"});
  m_desktop.activate(app);
  watch();
  ASSERT_TRUE(isFront(app));
  EXPECT_EQ(appOf(app)->activationPolicy(), ActivationPolicy::regular);
  EXPECT_EQ(appOf(panel)->activationPolicy(), ActivationPolicy::accessory);
  EXPECT_EQ(appOf(fileManager)->activationPolicy(), ActivationPolicy::accessory);
  m_desktop.activate(fileManager);
  Program& after = window({"--background"});
  ASSERT_TRUE(runUntil([&] { return !m_events.empty(); }));
  EXPECT_THAT(m_events, ElementsAre(event("launched", after)));
  EXPECT_TRUE(isFront(app));
}

TEST_F(X11WorkspaceTest, KnowsAWindowWithoutAnyProperty) {
  const Program& program = window();
  watch();
  const AppRef app = appOf(program);
  ASSERT_NE(app, nullptr);
  EXPECT_EQ(app->bundleIdentifier(), std::nullopt);
  EXPECT_EQ(app->localizedName(), "vantle_test_window");
  EXPECT_EQ(app->executablePath(), desktop::testWindow());
}

TEST_F(X11WorkspaceTest, KnowsAnAppByWhatItsWindowSaysLate) {
  m_desktop.installDesktopFile(
      "org.example.Office",
      "[Desktop Entry]\nType=Application\nName=Office\nExec=true\nStartupWMClass=Office\n");
  Program& program = window({"--class", "early", "--next-class", "Office"});
  m_desktop.activate(program);
  watch();
  const AppRef app = appOf(program);
  ASSERT_EQ(app->bundleIdentifier(), std::nullopt);
  program.signal(SIGURG);
  ASSERT_TRUE(runUntil([&] { return app->bundleIdentifier() == "org.example.Office"; }));
  EXPECT_THAT(m_events, ElementsAre(event("activated", program, true)));
}

// Some programs change their title all the time.
TEST_F(X11WorkspaceTest, ListensToAWindowForAsLongAsItTakesToSayWhoItIs) {
  Program& program = window({"--class", "early", "--next-class", "late"});
  X11Windows windows(m_loop, m_desktop.display());
  ASSERT_TRUE(runUntil([&] { return windows.known().size() == 1; }));
  const WindowFacts& facts = windows.known().begin()->second;
  // What is told of a later window is told after all that was before.
  const auto openAnother = [&] {
    const std::size_t before = windows.known().size();
    program.signal(SIGUSR2);
    return runUntil([&] { return windows.known().size() == before + 1; });
  };
  program.signal(SIGIO);
  const auto lastTitle = [&] { return m_desktop.windows().list().at(0).title == "100"; };
  desktop::require("all titles", lastTitle);
  ASSERT_TRUE(openAnother());
  program.signal(SIGURG);
  desktop::require("the new name", [&] {
    return m_desktop.windows().classOf(static_cast<std::uint32_t>(facts.id)) == "late";
  });
  ASSERT_TRUE(openAnother());
  EXPECT_EQ(facts.className, "early");
}

// How many of this process's descriptors stand for processes.
long processDescriptors() {
  long count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code error;
    count += std::filesystem::read_symlink(entry.path(), error) == "anon_inode:[pidfd]" ? 1 : 0;
  }
  return count;
}

TEST_F(X11WorkspaceTest, HoldsOneDescriptorForAllWindowsOfAProcess) {
  Program& program = window({"--windows", "300"});
  desktop::require("all windows", [&] { return m_desktop.windows().list().size() == 300; });
  const long before = processDescriptors();
  X11Windows windows(m_loop, m_desktop.display());
  ASSERT_TRUE(runUntil([&] { return windows.known().size() == 300; }));
  EXPECT_EQ(processDescriptors(), before + 1);
  for (const auto& [id, facts] : windows.known()) EXPECT_EQ(facts.pid, program.pid());
}

// What puts everybody back needs descriptors, and there may be more apps than descriptors.
TEST_F(X11WorkspaceTest, LeavesMostDescriptorsToOthers) {
  const std::string wrong = test::inChild([]() -> std::string {
    VirtualDesktop desktop;
    std::vector<Program*> programs(40);
    for (Program*& program : programs) program = &desktop.launch({desktop::testWindow()});
    for (const Program* program : programs) desktop.waitForWindow(program->pid());
    const rlimit limit{64, 64};
    if (::setrlimit(RLIMIT_NOFILE, &limit) != 0) return "no limit";
    PollEventLoop loop;
    WindowedWorkspace workspace(loop, std::make_unique<X11Windows>(loop, desktop.display()), {});
    loop.runUntil([] { return false; }, std::chrono::milliseconds(500));
    const std::size_t some = workspace.runningApplications().size();
    if (some == 0 || some == programs.size()) return std::to_string(some) + " apps";
    for (int held = 0; held < 24; ++held) {
      if (::dup(STDERR_FILENO) < 0) return "no descriptor is left after " + std::to_string(held);
    }
    // When some end, others take their place.
    for (int at = 0; at < 20; ++at) programs.at(static_cast<std::size_t>(at))->kill();
    const auto knowsTheRest = [&] {
      return std::all_of(programs.begin() + 20, programs.begin() + 23, [&](const Program* program) {
        return workspace.runningApplication(program->pid()) != nullptr;
      });
    };
    return loop.runUntil(knowsTheRest, desktop::guardLimit) ? "" : "nobody takes the free places";
  });
  EXPECT_EQ(wrong, "");
}

// A server gives the number of a window away again as soon as its client is gone.
class ReusedWindowNumber : public X11WorkspaceTest {
 protected:
  void stopWindowManager() {
    desktop::require("a moment in which it has not grabbed the server", [&] {
      m_desktop.windowManager().signal(SIGSTOP);
      if (m_desktop.run({"timeout", "2", "xdotool", "getmouselocation"})) return true;
      m_desktop.windowManager().signal(SIGCONT);
      return false;
    });
  }
  // None when somebody else has the number, and keeps it.
  Program* startWithTheNumberOf(std::uint32_t id) {
    for (int attempt = 0; attempt < 5; ++attempt) {
      Program* const program = &m_desktop.launch({desktop::testWindow()});
      // The window manager, which is stopped, still names the old window, and the server knows whose it is
      // now. A window with another number is on nobody's list.
      const auto hasIt = [&] {
        const auto windows = m_desktop.windows().ofProcess(program->pid());
        return !windows.empty() && windows.front().id == id;
      };
      if (desktop::waitUntil(hasIt, std::chrono::seconds(1))) return program;
      program->kill();
    }
    return nullptr;
  }
  // A game that is restarted twenty times, each time with the window of the one before.
  void restart(const std::function<void(const Program&)>& whenItIsGone) {
    Program* game = &window();
    watch();
    becomesFront(*game);
    int reused = 0;
    for (int round = 0; round < 20 && !HasFatalFailure(); ++round) {
      const std::uint32_t id = m_desktop.waitForWindow(game->pid()).id;
      stopWindowManager();
      game->kill();
      whenItIsGone(*game);
      Program* const same = startWithTheNumberOf(id);
      m_desktop.windowManager().signal(SIGCONT);
      reused += same != nullptr ? 1 : 0;
      game = same != nullptr ? same : &window();
      becomesFront(*game);
    }
    EXPECT_GT(reused, 10);
  }

 private:
  void becomesFront(const Program& program) {
    ASSERT_TRUE(runUntil([&] { return isFront(program); }));
  }
};

TEST_F(ReusedWindowNumber, OfAGameThatWasRestartedUnseenIsTheNewGames) {
  restart([](const Program&) {});
}

TEST_F(ReusedWindowNumber, ThatWasNobodysForAMomentIsTheNewGames) {
  restart([this](const Program& game) {
    ASSERT_TRUE(runUntil([&] { return !m_events.empty() && m_events.back() == event("terminated", game); }));
    m_loop.runUntil([] { return false; }, std::chrono::milliseconds(30)); // the answer: nobody's
  });
}

TEST_F(X11WorkspaceTest, SurvivesHostileProperties) {
  const std::string longText(10'000, 'x');
  std::vector<const Program*> programs;
  for (const std::string& text : {longText, std::string("a\nb\x01[](){}"), std::string("\xff\xfe\xc0\x80"),
                                  std::string("com.example/../../etc/passwd")}) {
    programs.push_back(
        &window({"--title", text, "--raw-class", text, "--app-id", text, "--claim-pid", "4294967295"}));
  }
  watch();
  for (const Program* program : programs) {
    const AppRef app = appOf(*program);
    ASSERT_NE(app, nullptr);
    EXPECT_EQ(app->localizedName(), "vantle_test_window");
    EXPECT_EQ(app->bundleIdentifier(), std::nullopt);
  }
}

TEST_F(X11WorkspaceTest, IsNotDeceivedInsidePidNamespaces) {
  Program& wrapper =
      m_desktop.launch({"unshare", "--map-root-user", "--user", "--pid", "--fork", "--kill-child",
                        desktop::testWindow(), "--claim-pid", "1", "--title", "inside"});
  const auto found = [&] { return !m_desktop.windows().list().empty() || !wrapper.isRunning(); };
  desktop::require("a window or a refusal", found);
  if (!wrapper.isRunning()) GTEST_SKIP() << "no user namespaces here";
  watch();
  ASSERT_EQ(m_workspace->runningApplications().size(), 1U);
  const Pid pid = m_workspace->runningApplications()[0]->processIdentifier();
  EXPECT_TRUE(desktop::processesOf({wrapper.pid()}).contains(pid));
  EXPECT_NE(pid, wrapper.pid());
}

TEST_F(X11WorkspaceTest, BringsAnAppToTheFront) {
  Program& first = window({});
  Program& second = window({});
  watch();
  m_desktop.activate(second);
  ASSERT_TRUE(runUntil([&] { return appOf(second)->isActive(); }));
  EXPECT_TRUE(appOf(first)->canComeToFront());
  EXPECT_TRUE(appOf(first)->bringToFront());
  EXPECT_TRUE(runUntil([&] { return appOf(first)->isActive(); }));
}

TEST_F(X11WorkspaceTest, BringsAnAppToTheFrontFromAnotherDesktop) {
  Program& first = window({});
  Program& second = window({});
  watch();
  const std::string id = std::to_string(m_desktop.waitForWindow(first.pid()).id);
  ASSERT_TRUE(m_desktop.run({"wmctrl", "-i", "-r", id, "-t", "2"}));
  ASSERT_TRUE(runUntil([&] { return appOf(second)->isActive(); }));
  EXPECT_TRUE(appOf(first)->bringToFront());
  EXPECT_TRUE(runUntil([&] { return appOf(first)->isActive(); }));
}

TEST_F(X11WorkspaceTest, ClosesPolitely) {
  Program& polite = window({"--windows", "2"});
  Program& stubborn = window({"--ignore-close"});
  watch();
  EXPECT_TRUE(appOf(stubborn)->terminate());
  EXPECT_TRUE(appOf(polite)->terminate());
  ASSERT_TRUE(runUntil([&] { return !m_events.empty() && m_events.back() == event("terminated", polite); }));
  EXPECT_EQ(polite.exitStatus(), 0);
  EXPECT_TRUE(stubborn.isRunning());
  EXPECT_FALSE(appOf(stubborn)->isTerminated());
}

TEST_F(X11WorkspaceTest, AppsOutliveTheirEndAndTheWorkspace) {
  Program& program = window();
  Program& other = window();
  watch();
  const AppRef app = appOf(program);
  const AppRef kept = appOf(other);
  program.kill();
  ASSERT_TRUE(runUntil([&] { return app->isTerminated(); }));
  EXPECT_FALSE(app->isActive());
  EXPECT_FALSE(app->terminate());
  EXPECT_EQ(app->localizedName(), "vantle_test_window");
  m_workspace.reset();
  EXPECT_FALSE(kept->isActive());
  EXPECT_FALSE(kept->terminate());
}

TEST_F(X11WorkspaceTest, OutlastsItsWindowManager) {
  Program& first = window();
  Program& second = window();
  m_desktop.activate(first);
  watch();
  m_desktop.windowManager().kill();
  m_desktop.startWindowManager();
  m_desktop.activate(second);
  ASSERT_TRUE(runUntil([&] { return isFront(second); }));
  EXPECT_EQ(m_workspace->runningApplications().size(), 2U);
  for (const std::string& told : m_events) EXPECT_TRUE(told.starts_with("activated")) << told;
}

TEST_F(X11WorkspaceTest, TellsWhenTheServerGoesAway) {
  Program& program = window();
  m_desktop.activate(program);
  watch();
  ASSERT_NE(m_workspace->frontmostApplication(), nullptr);
  const AppRef app = appOf(program);
  m_desktop.xServer().signal(SIGKILL);
  ASSERT_TRUE(runUntil([&] { return m_isLost; }));
  EXPECT_EQ(m_workspace->frontmostApplication(), nullptr);
  EXPECT_FALSE(app->terminate());
  ASSERT_TRUE(runUntil([&] { return app->isTerminated(); })) << "it ended with its server";
}

TEST_F(X11WorkspaceTest, IsNotHeldUpByAServerThatHangs) {
  using Clock = std::chrono::steady_clock;
  Program& program = window();
  m_desktop.activate(program);
  watch();
  m_desktop.xServer().signal(SIGSTOP);
  const Clock::time_point start = Clock::now();
  EXPECT_TRUE(appOf(program)->terminate());
  EXPECT_TRUE(isFront(program));
  {
    const WindowedWorkspace another(m_loop, std::make_unique<X11Windows>(m_loop, m_desktop.display()), {});
    EXPECT_TRUE(another.runningApplications().empty());
    EXPECT_EQ(another.frontmostApplication(), nullptr);
  }
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(5)) << "far from waiting for good";
  m_desktop.xServer().signal(SIGCONT);
  ASSERT_TRUE(runUntil([&] { return !m_workspace->runningApplication(program.pid()); })) << "asked to close";
}

TEST_F(X11WorkspaceTest, AppsOfAServerThatWasSlowArriveAsLaunches) {
  Program& program = window();
  m_desktop.activate(program);
  m_desktop.xServer().signal(SIGSTOP);
  watch();
  EXPECT_TRUE(m_workspace->runningApplications().empty());
  m_desktop.xServer().signal(SIGCONT);
  ASSERT_TRUE(runUntil([&] { return m_events.size() == 2; }));
  EXPECT_THAT(m_events, ElementsAre(event("launched", program, true), event("activated", program, true)));
}

TEST(X11WorkspaceAlone, HasNoAppsWithoutAServer) {
  PollEventLoop loop;
  bool isLost = false;
  const WindowedWorkspace workspace(loop, std::make_unique<X11Windows>(loop, ":54321"),
                                    {.onDesktopLost = [&] { isLost = true; }});
  EXPECT_TRUE(workspace.runningApplications().empty());
  EXPECT_EQ(workspace.frontmostApplication(), nullptr);
  EXPECT_EQ(workspace.runningApplication(1), nullptr);
  EXPECT_FALSE(loop.runUntil([&] { return isLost; }, std::chrono::milliseconds(20)));
}

// Apps that people really use, installed on the machine.
class RealAppsTest : public X11WorkspaceTest {
 protected:
  Program& start(const std::vector<std::string>& command, const desktop::Environment& added = {}) {
    Program& program = m_desktop.launch(command, added);
    m_desktop.waitForWindow(program.pid());
    return program;
  }
};

TEST_F(RealAppsTest, AreKnownByTheirDesktopFiles) {
  const Program& xterm = start({"xterm"});
  const Program& mousepad = start({"mousepad", "--disable-server"});
  const Program& galculator = start({"galculator"});
  const Program& game = start({"chromium-bsu", "-w"}, {{"SDL_VIDEO_MINIMIZE_ON_FOCUS_LOSS", "0"}});
  const Program& kobo = start({"kobodl"});
  watch();
  const auto expectApp = [&](const Program& program, const char* id, const char* name, const char* category) {
    const AppRef app = appOf(program);
    ASSERT_NE(app, nullptr) << id;
    EXPECT_EQ(app->bundleIdentifier(), id);
    EXPECT_EQ(app->localizedName(), name);
    EXPECT_EQ(app->bundleCategory(), std::string("public.app-category.") + category);
    EXPECT_EQ(app->activationPolicy(), ActivationPolicy::regular);
    EXPECT_TRUE(app->iconName().has_value());
    EXPECT_TRUE(app->executablePath()->starts_with("/usr/"));
    EXPECT_TRUE(app->bundlePath()->ends_with(std::string(id) + ".desktop"));
  };
  expectApp(xterm, "debian-xterm", "XTerm", "utilities");
  expectApp(mousepad, "org.xfce.mousepad", "Mousepad", "utilities");
  expectApp(galculator, "galculator", "Galculator", "utilities");
  expectApp(game, "chromium-bsu", "Chromium B.S.U.", "games");
  expectApp(kobo, "kobodeluxe", "Kobo Deluxe", "games");
}

TEST_F(RealAppsTest, CloseOrAskAboutUnsavedWork) {
  Program& galculator = start({"galculator"});
  Program& mousepad = start({"mousepad", "--disable-server"});
  const std::uint32_t window = m_desktop.waitForWindow(mousepad.pid()).id;
  m_desktop.activate(window);
  ASSERT_TRUE(m_desktop.run({"xdotool", "type", "unsaved"}));
  desktop::require("unsaved text", [&] {
    return m_desktop.windows().ofProcess(mousepad.pid()).at(0).title.starts_with("*");
  });
  watch();
  ASSERT_TRUE(appOf(galculator)->terminate());
  ASSERT_TRUE(appOf(mousepad)->terminate());
  EXPECT_EQ(galculator.exitStatus(), 0);
  desktop::require("the question", [&] { return m_desktop.windows().ofProcess(mousepad.pid()).size() == 2; });
  EXPECT_TRUE(mousepad.isRunning());
}

} // namespace
} // namespace vantle
