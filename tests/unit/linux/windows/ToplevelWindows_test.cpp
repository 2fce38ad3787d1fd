// SPDX-License-Identifier: MIT
// Whose the windows are of a compositor that does not say so, and what is made of what it would never say.
#include "platform/linux/windows/toplevels/ToplevelWindows.h"

#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/process/KernelFile.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/NamedSocket.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"
#include "tests/support/Wait.h"
#include "tests/unit/linux/windows/ScriptedCompositor.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vantle {
namespace {

using test::ForkedProcess;
using testing::ElementsAre;

using Steady = std::chrono::steady_clock;

// Stays open in a program that is started.
void connectForGood(const std::string& socket) {
  if (desktop::connectedSocket(socket, 0) < 0) ::_exit(1);
}

// A program of this name that is connected to some sockets, and does nothing.
class Client {
 public:
  Client(const std::string& program, const std::vector<std::string>& sockets, std::optional<uid_t> user = {})
      : m_process(
            [&] {
              if (user) test::becomeUser(*user);
              for (const std::string& socket : sockets) connectForGood(socket);
            },
            [&] {
              const bool isTail = program == "tail";
              ::execl(("/bin/" + program).c_str(), program.c_str(), isTail ? "-f" : "infinity",
                      isTail ? "/dev/null" : nullptr, nullptr);
            }) {
    desktop::require("the program", [&] {
      return readKernelFile("/proc/" + std::to_string(pid()) + "/comm") == program + "\n";
    });
  }
  Pid pid() const { return m_process.pid(); }
  void kill() { m_process.kill(); }

 private:
  ForkedProcess m_process;
};

class ToplevelWindowsTest : public testing::Test {
 protected:
  void SetUp() override { ::chmod(m_folder.path().c_str(), 0777); }
  void connect(const std::string& display = {}) {
    m_windows = std::make_unique<ToplevelWindows>(
        m_loop, m_kernel, m_compositor.connect(),
        ToplevelWindows::Options{
            std::make_shared<DesktopEntries>(std::vector<std::string>{m_folder.path().string()}), display});
    m_windows->start({.changed = [this] { ++m_changes; }, .lost = [this] { ++m_losses; }});
    settle();
  }
  // Lets the compositor answer until nothing more is asked, or looked for.
  void settle() {
    EXPECT_TRUE(desktop::waitUntil([&] {
      m_questions += m_compositor.serve();
      const bool isAllSent = m_compositor.flush();
      const bool isSettled = m_windows->settle(std::chrono::milliseconds(0));
      const int answered = m_compositor.serve();
      m_questions += answered;
      return (isAllSent && isSettled && answered == 0) || m_losses > 0;
    }));
  }
  bool runUntil(const std::function<bool()>& condition) {
    return m_loop.runUntil(
        [&] {
          m_compositor.serve();
          return condition();
        },
        desktop::guardLimit);
  }
  // An X server at an address of its own, where clients are taken once they have come.
  void startXServer() { m_xServer = Descriptor(desktop::listeningSocket(m_xSocket)); }
  void acceptXClient() {
    m_xClients.emplace_back(::accept4(m_xServer.get(), nullptr, nullptr, SOCK_CLOEXEC));
  }
  Client client(const std::string& program) { return {program, {m_socket}}; }
  // 0 for nobody's as well as for none.
  Pid ownerOf(WindowId id) const {
    const auto window = m_windows->known().find(id);
    return window == m_windows->known().end() ? 0 : window->second.pid;
  }
  bool isKnown(WindowId id) const { return m_windows->known().contains(id); }
  bool isX11(WindowId id) const { return m_windows->known().at(id).isX11; }

  desktop::TemporaryFolder m_folder;
  std::string m_socket = (m_folder.path() / "wayland-7").string();
  ScriptedCompositor m_compositor{m_socket};
  ProcKernel m_kernel;
  PollEventLoop m_loop;
  std::string m_display = ":" + std::to_string(1'000'000 + ::getpid());
  std::string m_xSocket = std::string(1, '\0') + "/tmp/.X11-unix/X" + m_display.substr(1);
  Descriptor m_xServer;
  std::vector<Descriptor> m_xClients;
  std::unique_ptr<ToplevelWindows> m_windows;
  int m_changes = 0;
  int m_losses = 0;
  int m_questions = 0;
};

TEST_F(ToplevelWindowsTest, AWindowIsTheOneClientsWhomItFits) {
  const Client first = client("sleep");
  const Client second = client("tail");
  m_compositor.open("sleep");
  m_compositor.open("org.example.Tail", true);
  connect();
  EXPECT_EQ(ownerOf(1), first.pid());
  EXPECT_EQ(ownerOf(2), second.pid());
  EXPECT_TRUE(m_windows->known().at(2).process);
  EXPECT_EQ(m_windows->known().at(2).applicationId, "org.example.Tail");
  EXPECT_TRUE(m_windows->known().at(2).canBeClosed);
  EXPECT_FALSE(isX11(2));
  EXPECT_EQ(m_windows->active(), 2U);
}

TEST_F(ToplevelWindowsTest, AProgramOfThatNameThatIsNoClientIsNobody) {
  const Client elsewhere("sleep", {});
  const Client stranger = client("tail");
  m_compositor.open("sleep");
  connect();
  ASSERT_TRUE(isKnown(1));
  EXPECT_EQ(ownerOf(1), 0);
}

TEST_F(ToplevelWindowsTest, WhereTwoFitNobodyIsBelieved) {
  const Client first = client("sleep");
  std::optional<Client> second(std::in_place, "sleep", std::vector<std::string>{m_socket});
  m_compositor.open("sleep");
  const auto its = m_compositor.open("sleep");
  connect();
  EXPECT_EQ(ownerOf(1), 0);
  EXPECT_EQ(ownerOf(2), 0);
  EXPECT_FALSE(m_windows->known().at(1).process);
  second->kill();
  m_compositor.close(its);
  settle();
  EXPECT_EQ(ownerOf(1), first.pid()) << "now it is certain";
}

TEST_F(ToplevelWindowsTest, TheSecondOfItsKindIsTheOneThatHasCome) {
  const Client first = client("sleep");
  m_compositor.open("sleep");
  connect();
  const Client second = client("sleep");
  m_compositor.open("sleep");
  settle();
  EXPECT_EQ(ownerOf(1), first.pid());
  EXPECT_EQ(ownerOf(2), second.pid());
  m_compositor.open("sleep"); // of either
  settle();
  EXPECT_EQ(ownerOf(3), 0);
}

TEST_F(ToplevelWindowsTest, AnIdThatFitsNobodyIsTheNewcomers) {
  const Client old = client("tail");
  m_compositor.open("tail");
  connect();
  const Client fresh = client("sleep");
  m_compositor.open("org.example.Other");
  m_compositor.open("org.example.Other");
  settle();
  EXPECT_EQ(ownerOf(2), fresh.pid());
  EXPECT_EQ(ownerOf(3), fresh.pid());
  m_compositor.open("org.example.Other"); // nobody has come since
  settle();
  EXPECT_EQ(ownerOf(4), 0);
}

TEST_F(ToplevelWindowsTest, TheFirstWindowOfAllMayBeANewcomers) {
  const Client old = client("tail");
  connect();
  const Client fresh = client("sleep");
  m_compositor.open("org.example.Other");
  settle();
  EXPECT_EQ(ownerOf(1), fresh.pid());
}

// It is connected a while before it shows anything, and what others open meanwhile has it seen.
TEST_F(ToplevelWindowsTest, ANewcomerMaySeeOthersWindowsComeBeforeItsOwn) {
  const Client old = client("tail");
  connect();
  const Client fresh = client("sleep");
  m_compositor.open("tail");
  settle();
  m_compositor.open("org.example.Other");
  settle();
  EXPECT_EQ(ownerOf(1), old.pid());
  EXPECT_EQ(ownerOf(2), fresh.pid());
}

TEST_F(ToplevelWindowsTest, OfTwoNewcomersNobodyIsBelieved) {
  m_compositor.open("x");
  connect();
  const Client first = client("sleep");
  const Client second = client("tail");
  m_compositor.open("org.example.Other");
  settle();
  EXPECT_EQ(ownerOf(2), 0);
}

TEST_F(ToplevelWindowsTest, OneNewcomerHasNotOpenedWindowsOfTwoApps) {
  connect(); // to no window at all
  const Client fresh = client("sleep");
  m_compositor.open("org.example.First");
  m_compositor.open("org.example.Second");
  settle();
  EXPECT_EQ(ownerOf(1), 0);
  EXPECT_EQ(ownerOf(2), 0);
}

TEST_F(ToplevelWindowsTest, ANewcomerWithAWindowIsNotGivenAnother) {
  m_compositor.open("x");
  connect();
  const Client fresh = client("sleep");
  m_compositor.open("org.example.Other");
  m_compositor.open("sleep");
  settle();
  EXPECT_EQ(ownerOf(2), 0);
  EXPECT_EQ(ownerOf(3), fresh.pid());
}

TEST_F(ToplevelWindowsTest, WhatWasThereAtTheStartHasNoNewcomer) {
  const Client only = client("sleep");
  m_compositor.open("org.example.Other");
  connect();
  EXPECT_EQ(ownerOf(1), 0);
}

TEST_F(ToplevelWindowsTest, ADesktopFileTellsWhatAProgramsWindowsAreCalled) {
  std::filesystem::create_directory(m_folder.path() / "applications");
  const auto install = [&](const std::string& id, const std::string& lines) {
    std::ofstream(m_folder.path() / "applications" / (id + ".desktop"))
        << "[Desktop Entry]\nType=Application\nName=An app\n" + lines;
  };
  install("org.example.ById", "Exec=/bin/sleep\n");
  install("org.example.ByClass", "Exec=/bin/tail\nStartupWMClass=Declared\n");
  const Client byId = client("sleep");
  const Client byClass = client("tail");
  m_compositor.open("org.example.ById");
  m_compositor.open("declared");
  connect();
  EXPECT_EQ(ownerOf(1), byId.pid());
  EXPECT_EQ(ownerOf(2), byClass.pid());
}

TEST_F(ToplevelWindowsTest, AnIdThatComesLaterCounts) {
  const Client app = client("sleep");
  const auto window = m_compositor.open("");
  connect();
  EXPECT_EQ(ownerOf(1), 0);
  m_compositor.rename(window, "sleep");
  settle();
  EXPECT_EQ(ownerOf(1), app.pid());
  EXPECT_EQ(m_windows->known().at(1).applicationId, "sleep");
  m_compositor.rename(window, "else");
  settle();
  EXPECT_EQ(ownerOf(1), app.pid());
  EXPECT_EQ(m_windows->known().at(1).applicationId, "else");
}

TEST_F(ToplevelWindowsTest, AChildThatInheritedAConnectionIsNotItsOwner) {
  // A copy of this process has all of its connections, and so has a copy of that one.
  const ForkedProcess app([&] { connectForGood(m_socket); },
                          [] {
                            if (::fork() == 0) ::prctl(PR_SET_PDEATHSIG, SIGKILL);
                            ::pause();
                          });
  const auto hasChild = [&] {
    const std::string of = "/proc/" + std::to_string(app.pid()) + "/task/" + std::to_string(app.pid());
    return !readKernelFile(of + "/children").value_or("").empty();
  };
  m_compositor.open("x");
  connect();
  ASSERT_TRUE(desktop::waitUntil(hasChild));
  const std::string own = readKernelFile("/proc/self/comm").value_or("");
  m_compositor.open(own.substr(0, own.size() - 1));
  settle();
  EXPECT_EQ(ownerOf(2), 0) << "this process and the other: two that fit, and no third";
}

TEST_F(ToplevelWindowsTest, AnXClientsWindowIsTheXServers) {
  startXServer();
  const Client native = client("tail");
  m_compositor.open("tail");
  m_compositor.open("Game");
  connect(m_display + ".0");
  EXPECT_FALSE(isX11(2)) << "there is no X client";
  Client game("sleep", {m_xSocket});
  acceptXClient();
  m_compositor.open("sleep");
  settle();
  EXPECT_EQ(ownerOf(3), 0);
  EXPECT_TRUE(isX11(3));
  EXPECT_TRUE(isX11(2)) << "it may be now";
  EXPECT_FALSE(isX11(1));
  EXPECT_EQ(ownerOf(1), native.pid());
  game.kill();
  m_compositor.open("another");
  settle();
  EXPECT_FALSE(isX11(2));
  EXPECT_FALSE(isX11(3));
}

TEST_F(ToplevelWindowsTest, AnXClientAndANativeOneThatFitAreTwo) {
  startXServer();
  const Client native = client("sleep");
  const Client game("sleep", {m_xSocket});
  acceptXClient();
  m_compositor.open("sleep");
  connect(m_display);
  EXPECT_EQ(ownerOf(1), 0);
  EXPECT_TRUE(isX11(1));
}

TEST_F(ToplevelWindowsTest, AnXClientsWindowIsNotANewcomers) {
  startXServer();
  const Client game("sleep", {m_xSocket});
  acceptXClient();
  connect(m_display);
  const Client fresh = client("tail");
  m_compositor.open("sleep");
  settle();
  EXPECT_EQ(ownerOf(1), 0);
  EXPECT_TRUE(isX11(1));
}

TEST_F(ToplevelWindowsTest, AnXClientWithAWindowIsNoNewcomerAnyMore) {
  startXServer();
  connect(m_display);
  const Client game("tail", {m_xSocket});
  acceptXClient();
  m_compositor.open("Game");
  settle();
  ASSERT_TRUE(isX11(1));
  const Client fresh = client("sleep");
  m_compositor.open("org.example.Other");
  settle();
  EXPECT_EQ(ownerOf(2), fresh.pid());
}

// Whose the window is would be a guess.
TEST_F(ToplevelWindowsTest, ANativeNewcomerBesideAnXClientWithoutAWindowIsNotBelieved) {
  startXServer();
  const Client old = client("tail");
  connect(m_display);
  const Client game("sleep", {m_xSocket});
  acceptXClient();
  const Client fresh = client("sleep");
  m_compositor.open("tail");
  settle();
  m_compositor.open("org.example.Other");
  settle();
  EXPECT_EQ(ownerOf(1), old.pid());
  EXPECT_EQ(ownerOf(2), 0);
}

// This program's own connection to the X server shows nothing.
TEST_F(ToplevelWindowsTest, WhoIsAnXClientItselfIsNone) {
  startXServer();
  const Descriptor own(desktop::connectedSocket(m_xSocket));
  acceptXClient();
  m_compositor.open("Game");
  connect(m_display);
  EXPECT_FALSE(isX11(1));
}

TEST_F(ToplevelWindowsTest, AChangeOfFocusIsAnEventAndNoSearch) {
  const Client first = client("sleep");
  const Client second = client("tail");
  const auto one = m_compositor.open("sleep", true);
  const auto two = m_compositor.open("tail");
  connect();
  m_changes = m_questions = 0;
  m_compositor.focus(two);
  ASSERT_TRUE(runUntil([&] { return m_windows->active() == 2; }));
  m_compositor.focus(0);
  ASSERT_TRUE(runUntil([&] { return m_windows->active() == 0; }));
  m_compositor.focus(one);
  ASSERT_TRUE(runUntil([&] { return m_windows->active() == 1; }));
  EXPECT_TRUE(m_windows->isActiveKnown());
  EXPECT_EQ(m_questions, 0);
  EXPECT_EQ(m_changes, 3);
}

TEST_F(ToplevelWindowsTest, AHundredChangesEndWithTheLast) {
  const auto one = m_compositor.open("a", true);
  const auto two = m_compositor.open("b");
  connect();
  m_changes = 0;
  for (int change = 0; change < 99; ++change) m_compositor.focus(change % 2 == 0 ? two : one);
  settle();
  EXPECT_EQ(m_windows->active(), 2U);
  EXPECT_GE(m_changes, 1);
}

TEST_F(ToplevelWindowsTest, AWindowInFrontIsKnownOnceItWasLookedFor) {
  connect();
  const Client app = client("sleep");
  m_compositor.open("sleep", true);
  ASSERT_TRUE(runUntil([&] { return m_windows->active() == 1; }));
  ASSERT_TRUE(runUntil([&] { return m_windows->isActiveKnown(); }));
  EXPECT_EQ(ownerOf(1), app.pid());
}

TEST_F(ToplevelWindowsTest, AClosedWindowIsGoneAndItsObjectToo) {
  const auto window = m_compositor.open("a", true);
  connect();
  m_compositor.close(window);
  // What still comes for it says nothing.
  m_compositor.tell(window, ScriptedCompositor::appId, ScriptedCompositor::text("b"));
  m_compositor.tell(window, ScriptedCompositor::done);
  m_compositor.tell(window, ScriptedCompositor::closed);
  settle();
  EXPECT_TRUE(m_windows->known().empty());
  EXPECT_EQ(m_windows->active(), 0U);
  EXPECT_THAT(m_compositor.destroyed, ElementsAre(window));
  EXPECT_EQ(m_losses, 0);
}

TEST_F(ToplevelWindowsTest, AsksForEachWindowToBeClosed) {
  const auto window = m_compositor.open("a");
  connect();
  EXPECT_TRUE(m_windows->requestClose(m_windows->known().at(1)));
  EXPECT_FALSE(m_windows->requestClose({.id = 99, .canBeClosed = true}));
  settle();
  EXPECT_THAT(m_compositor.askedToClose, ElementsAre(window));
}

TEST_F(ToplevelWindowsTest, ACompositorThatHangsIsAskedSoMuchAndNoMore) {
  m_compositor.open("a");
  connect();
  std::size_t asked = 0;
  while (asked < 1'000'000 && m_windows->requestClose(m_windows->known().at(1))) ++asked;
  EXPECT_GT(asked, 100U);
  EXPECT_LT(asked, 1'000'000U);
  ASSERT_TRUE(runUntil([&] { return m_compositor.askedToClose.size() == asked; }));
  ASSERT_TRUE(m_windows->requestClose(m_windows->known().at(1)) ||
              runUntil([&] { return m_windows->requestClose(m_windows->known().at(1)); }));
  EXPECT_EQ(m_losses, 0);
}

TEST_F(ToplevelWindowsTest, TheWindowOfAProcessThatHasEndedIsNobodys) {
  Client app = client("sleep");
  m_compositor.open("sleep");
  connect();
  ASSERT_EQ(ownerOf(1), app.pid());
  app.kill();
  m_windows->forget(app.pid());
  EXPECT_EQ(ownerOf(1), 0);
  const Client next = client("sleep");
  m_compositor.open("sleep");
  settle();
  EXPECT_EQ(ownerOf(1), 0) << "it was another's";
  EXPECT_EQ(ownerOf(2), next.pid());
}

TEST_F(ToplevelWindowsTest, AnotherUsersProcessIsNobody) {
  if (!test::runsAsRoot()) GTEST_SKIP() << "only root can start one";
  const Client stranger("sleep", {m_socket}, test::ordinaryUser);
  m_compositor.open("sleep");
  connect();
  ASSERT_TRUE(isKnown(1));
  EXPECT_EQ(ownerOf(1), 0);
}

TEST_F(ToplevelWindowsTest, OneThatDoesNotTellOfWindowsIsOfNoUse) {
  m_compositor.offersToplevels = false;
  connect();
  EXPECT_EQ(m_losses, 1);
  EXPECT_FALSE(m_windows->isOffered());
}

TEST_F(ToplevelWindowsTest, OneThatWillTellNoMoreIsTheEnd) {
  m_compositor.open("a", true);
  connect();
  m_compositor.finish();
  ASSERT_TRUE(runUntil([&] { return m_losses == 1; }));
  EXPECT_TRUE(m_windows->known().empty());
  EXPECT_EQ(m_windows->active(), 0U);
}

TEST_F(ToplevelWindowsTest, TheEndOfTheSocketIsTheEndOfTheDesktop) {
  m_compositor.open("a", true);
  connect();
  m_compositor.open("b");
  m_compositor.end();
  ASSERT_TRUE(m_loop.runUntil([&] { return m_losses > 0; }, desktop::guardLimit));
  EXPECT_EQ(m_losses, 1);
  EXPECT_TRUE(m_windows->known().empty());
  EXPECT_FALSE(m_windows->requestClose({.id = 1, .canBeClosed = true}));
  m_windows->forget(1234);
  EXPECT_EQ(m_losses, 1);
}

TEST_F(ToplevelWindowsTest, HalfAMessageIsAwaited) {
  const auto window = m_compositor.open("a");
  connect();
  using Compositor = ScriptedCompositor;
  const std::string activated = Compositor::number(4) + Compositor::number(2);
  const std::string bytes = Compositor::message(window, Compositor::state, activated) +
                            Compositor::message(window, Compositor::done);
  for (const char byte : bytes) {
    EXPECT_EQ(m_windows->active(), 0U);
    m_compositor.sendBytes({&byte, 1});
    m_windows->settle(std::chrono::milliseconds(0)); // takes what is there
  }
  EXPECT_EQ(m_windows->active(), 1U);
  EXPECT_EQ(m_losses, 0);
}

// What ends a connection: nothing that follows could be told apart.
class BrokenCompositor : public ToplevelWindowsTest, public testing::WithParamInterface<const char*> {};

std::string brokenBytes(const std::string& kind, ScriptedCompositor::Object window) {
  using Compositor = ScriptedCompositor;
  const std::string manyStates = Compositor::number(100'000'000) + Compositor::number(2);
  if (kind == "Garbage") return "HTTP/1.1 400 Bad Request\r\n\r\n";
  if (kind == "Zeros") return std::string(64, '\0');
  if (kind == "AnError")
    return Compositor::message(1, 0, Compositor::number(1) + Compositor::number(0) + Compositor::text("no"));
  if (kind == "AnUnknownEvent") return Compositor::message(window, 42);
  if (kind == "HundredMegabytesOfStates") return Compositor::message(window, Compositor::state, manyStates);
  if (kind == "HundredMegabytesOfText")
    return Compositor::message(window, Compositor::appId, Compositor::number(100'000'000));
  if (kind == "TextWithoutEnd")
    return Compositor::message(window, Compositor::appId, Compositor::number(4) + "abcd");
  if (kind == "NoText") return Compositor::message(window, Compositor::appId, Compositor::number(0));
  return Compositor::number(window) + Compositor::number(0xfffc0000 | Compositor::title) +
         std::string(65'528, 'x'); // longer than any message
}
INSTANTIATE_TEST_SUITE_P(Kinds, BrokenCompositor,
                         testing::Values("Garbage", "Zeros", "AnError", "AnUnknownEvent",
                                         "HundredMegabytesOfStates", "HundredMegabytesOfText",
                                         "TextWithoutEnd", "NoText", "LongMessage"),
                         [](const auto& tested) { return std::string(tested.param); });

TEST_P(BrokenCompositor, IsLetGo) {
  const auto window = m_compositor.open("a", true);
  connect();
  m_compositor.sendBytes(brokenBytes(GetParam(), window));
  const auto goesOn = [&] {
    m_compositor.tell(window, ScriptedCompositor::done);
    return m_losses > 0;
  };
  ASSERT_TRUE(m_loop.runUntil(goesOn, desktop::guardLimit));
  EXPECT_EQ(m_losses, 1);
  EXPECT_TRUE(m_windows->known().empty());
  EXPECT_EQ(m_windows->active(), 0U);
  EXPECT_FALSE(m_windows->isOffered());
}

TEST_F(ToplevelWindowsTest, AWindowOfANumberThatIsTakenEndsIt) {
  m_compositor.open("a", true);
  connect();
  m_compositor.tellOfWindow(1);
  EXPECT_TRUE(runUntil([&] { return m_losses == 1; }));
}

TEST_F(ToplevelWindowsTest, EventsForWindowsThatWereNeverToldOfChangeNothing) {
  m_compositor.open("a", true);
  connect();
  for (const ScriptedCompositor::Object window : {0xff0000ffU, 0xffffffffU, 1234U}) {
    m_compositor.tell(window, ScriptedCompositor::appId, ScriptedCompositor::text("b"));
    m_compositor.tell(window, ScriptedCompositor::done);
  }
  m_compositor.open("b");
  settle();
  EXPECT_EQ(m_windows->known().size(), 2U);
  EXPECT_EQ(m_windows->active(), 1U);
  EXPECT_EQ(m_losses, 0);
}

TEST_F(ToplevelWindowsTest, AFloodLeavesOthersTheirTurns) {
  const auto window = m_compositor.open("a", true);
  connect();
  const ForkedProcess flooder({}, [&] {
    ::fcntl(m_compositor.descriptor(), F_SETFL, 0); // each message whole, however slowly it is taken
    for (;;) m_compositor.rename(window, "b");
  });
  int turns = 0;
  std::unique_ptr<EventLoop::Handle> timer;
  const std::function<void()> again = [&] {
    if (++turns < 20) timer = m_loop.after(std::chrono::milliseconds(0), again);
  };
  again();
  EXPECT_TRUE(m_loop.runUntil([&] { return turns == 20; }, desktop::guardLimit));
  EXPECT_EQ(m_losses, 0);
}

TEST_F(ToplevelWindowsTest, AFloodOfWindowsIsLookedForTogether) {
  const Client app = client("sleep");
  connect();
  for (int window = 0; window < 1'000; ++window) m_compositor.open(window % 2 == 0 ? "sleep" : "other");
  settle();
  ASSERT_EQ(m_windows->known().size(), 1'000U);
  EXPECT_EQ(ownerOf(1), app.pid());
  EXPECT_EQ(ownerOf(2), 0);
}

TEST_F(ToplevelWindowsTest, ASearchTakesOneStepATimeWhateverThereIsToSee) {
  constexpr int many = 2'000;
  const ForkedProcess crowded([&] {
    const rlimit limit{many + 100, many + 100};
    ::setrlimit(RLIMIT_NOFILE, &limit);
    for (int count = 0; count < many; ++count) ::dup(0);
  });
  const Client app = client("sleep");
  const Descriptor own = m_compositor.connect();
  ClientSearch search(m_kernel, own.get(), "");
  int steps = 1;
  while (!search.advance(Steady::now())) ++steps;
  EXPECT_GT(steps, many);
  const auto isApp = [&](const DesktopClient& client) { return client.pid == app.pid(); };
  ASSERT_EQ(std::count_if(search.clients().begin(), search.clients().end(), isApp), 1);
  const auto found = std::find_if(search.clients().begin(), search.clients().end(), isApp);
  EXPECT_TRUE(found->isNative);
  EXPECT_FALSE(found->isX11);
  EXPECT_TRUE(found->isStillThere());
}

TEST_F(ToplevelWindowsTest, AProcessThatLeavesMeanwhileIsNotBelieved) {
  Client app = client("sleep");
  const Descriptor own = m_compositor.connect();
  ClientSearch search(m_kernel, own.get(), "");
  while (!search.advance(Steady::now())) continue;
  app.kill();
  for (const DesktopClient& client : search.clients()) {
    EXPECT_EQ(client.isStillThere(), client.pid != app.pid());
  }
}

} // namespace
} // namespace vantle
