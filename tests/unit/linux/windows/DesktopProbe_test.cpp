// SPDX-License-Identifier: MIT
// Which source of windows is chosen, by what answers and not by what is named.
#include "platform/linux/windows/DesktopProbe.h"

#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/windows/fed/FedWindows.h"
#include "platform/linux/windows/gnome/GnomeExtension.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/FakeService.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/NamedSocket.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"
#include "tests/support/Wait.h"
#include "tests/unit/linux/windows/ScriptedCompositor.h"
#include "tests/unit/linux/windows/ScriptedKWin.h"
#include "tests/unit/linux/windows/ScriptedSway.h"

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <poll.h>
#include <string>
#include <string_view>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vantle {
namespace {

using test::ForkedProcess;

constexpr const char* noServer = ":54321";
constexpr const char* feedName = "com.halvo.vantle.test.feed";

// Takes clients one after another and answers them as sway would.
void serve(const Descriptor& listener, const std::string& version) {
  for (;;) {
    ScriptedSway sway(Descriptor(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC)));
    sway.version = version;
    pollfd waiting{sway.descriptor(), POLLIN, 0};
    while (::poll(&waiting, 1, -1) == 1 && sway.serve() > 0) {
    }
  }
}

// Takes them one after another as well.
void serve(ScriptedCompositor& compositor) {
  for (;;) {
    compositor.takeClient();
    pollfd waiting{compositor.descriptor(), POLLIN, 0};
    while (::poll(&waiting, 1, -1) == 1 && compositor.serve() > 0) {
    }
  }
}

// Says to everybody who comes what niri says to those who want events.
void agree(const Descriptor& listener) {
  for (std::vector<Descriptor> clients;;) {
    clients.emplace_back(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    const std::string_view line = "{\"Ok\":\"Handled\"}\n";
    ::send(clients.back().get(), line.data(), line.size(), MSG_NOSIGNAL);
  }
}

// A process with a compositor's socket, and one for questions.
class Compositor {
 public:
  enum class Kind { sway, silent, stranger, wlroots, hyprland, niri };

  Compositor(const std::string& display, const std::string& questions, Kind kind = Kind::sway,
             std::optional<uid_t> user = {})
      : m_process(
            [&] {
              if (user) test::becomeUser(*user);
              if (kind == Kind::wlroots) {
                m_wlroots.emplace(display).open("app", true);
              } else {
                m_display = Descriptor(desktop::listeningSocket(display));
              }
              m_questions = Descriptor(desktop::listeningSocket(questions));
              const std::string folder = questions.substr(0, questions.rfind('/') + 1);
              if (kind == Kind::hyprland)
                m_others = Descriptor(desktop::listeningSocket(folder + ".socket.sock"));
            },
            [this, kind] {
              if (kind == Kind::sway) serve(m_questions, R"({"major":1})");
              if (kind == Kind::stranger) serve(m_questions, R"({"error":"no such method"})");
              if (kind == Kind::wlroots) serve(*m_wlroots);
              if (kind == Kind::niri) agree(m_questions);
              ::pause();
            }) {}

  Pid pid() const { return m_process.pid(); }
  void kill() { m_process.kill(); }

 private:
  Descriptor m_display; // in the process itself, as are the next three
  std::optional<ScriptedCompositor> m_wlroots;
  Descriptor m_questions;
  Descriptor m_others;
  ForkedProcess m_process;
};

class DesktopProbeTest : public testing::Test {
 protected:
  std::string path(const std::string& name) const { return (m_folder.path() / name).string(); }
  DesktopSource find(const std::string& waylandDisplay, const std::string& swaySocket) {
    return find({.waylandDisplay = waylandDisplay, .swaySocket = swaySocket});
  }
  DesktopSource find(SessionNames names) {
    names.display = noServer;
    names.runtimeFolder = m_folder.path().string();
    return DesktopProbe(m_loop, m_kernel, m_bus, names, feedName, m_installed).find();
  }
  // For what others know, and tell nobody.
  bool serveUntil(const std::function<bool()>& condition) {
    return desktop::waitUntil([&] {
      m_loop.runUntil([] { return false; }, std::chrono::milliseconds(1));
      return condition();
    });
  }
  void SetUp() override { ::chmod(m_folder.path().c_str(), 0777); }

  desktop::TemporaryFolder m_folder;
  ProcKernel m_kernel;
  PollEventLoop m_loop;
  std::shared_ptr<DesktopEntries> m_installed = std::make_shared<DesktopEntries>(std::vector<std::string>{});
  desktop::PrivateBus m_daemon;
  BusConnection m_bus{m_loop, m_daemon.address()};
};

void expectX11(const DesktopSource& found) {
  EXPECT_EQ(*found.name, "X11");
  EXPECT_EQ(found.front, FrontRule::asTold);
  EXPECT_EQ(found.longestStart, std::chrono::milliseconds(200));
}

void expectSway(const DesktopSource& found) {
  EXPECT_EQ(*found.name, "sway (native apps and X11 apps)");
  EXPECT_EQ(found.front, FrontRule::settled);
}

void expectPlasma(const DesktopSource& found) {
  EXPECT_EQ(*found.name, "Plasma (native apps and X11 apps)");
  EXPECT_EQ(found.front, FrontRule::settled);
}

void expectXwayland(const DesktopSource& found) {
  EXPECT_EQ(*found.name, "Xwayland (X11 apps only)");
  EXPECT_EQ(found.front, FrontRule::settled);
}

TEST_F(DesktopProbeTest, WithoutAWaylandDisplayItIsX11) {
  const Compositor sway(path("wayland-1"), path("sway.sock"));
  expectX11(find("", path("sway.sock")));
}

TEST_F(DesktopProbeTest, AWaylandDisplayThatIsGoneIsNone) {
  Compositor sway(path("wayland-1"), path("sway.sock"));
  sway.kill();
  expectX11(find("wayland-1", path("sway.sock")));
  expectX11(find("never-there", ""));
  expectX11(find(std::string(500, 'x'), std::string(500, 'x')));
}

TEST_F(DesktopProbeTest, FindsSwayWhereTheEnvironmentSays) {
  const Compositor sway(path("wayland-1"), path("sway.sock"));
  const DesktopSource found = find("wayland-1", path("sway.sock"));
  expectSway(found);
  EXPECT_TRUE(found.windows->known().empty());
  expectSway(find(path("wayland-1"), path("sway.sock"))); // a path is as good
}

TEST_F(DesktopProbeTest, FindsSwayByItsProcess) {
  const std::string usual = "sway-ipc." + std::to_string(::geteuid()) + ".";
  // Its number is known once it runs; the socket that it serves gets its name then.
  const Compositor sway(path("wayland-1"), path("sway.sock"));
  std::filesystem::rename(path("sway.sock"), path(usual + std::to_string(sway.pid()) + ".sock"));
  expectSway(find("wayland-1", ""));
  expectSway(find("wayland-1", path("stale.sock")));
}

TEST_F(DesktopProbeTest, ASwayThatIsSlowIsSway) {
  const Compositor sway(path("wayland-1"), path("sway.sock"), Compositor::Kind::silent);
  expectSway(find("wayland-1", path("sway.sock")));
}

TEST_F(DesktopProbeTest, TheSwayOfAnotherDesktopIsNotThisOnes) {
  const Compositor outer(path("wayland-1"), path("sway.sock"));
  const Compositor inner(path("wayland-2"), path("other.sock"), Compositor::Kind::silent);
  expectXwayland(find("wayland-2", path("sway.sock")));
}

TEST_F(DesktopProbeTest, WhatListensUnderItsNameNeedNotBeSway) {
  const Compositor other(path("wayland-1"), path("sway.sock"), Compositor::Kind::stranger);
  expectXwayland(find("wayland-1", path("sway.sock")));
}

TEST_F(DesktopProbeTest, AnotherUsersDesktopIsNone) {
  if (!test::runsAsRoot()) GTEST_SKIP() << "only root can start one";
  const Compositor theirs(path("wayland-1"), path("sway.sock"), Compositor::Kind::sway, test::ordinaryUser);
  expectX11(find("wayland-1", path("sway.sock")));
  const Compositor ours(path("wayland-2"), path("other.sock"), Compositor::Kind::silent);
  expectXwayland(find("wayland-2", path("sway.sock")));
}

TEST_F(DesktopProbeTest, FindsHyprlandByItsFolder) {
  const std::string run = path("hypr/4a3f_17");
  std::filesystem::create_directories(run);
  std::filesystem::create_directories(path("hypr/dead_16"));
  const Compositor hyprland(path("wayland-1"), run + "/.socket2.sock", Compositor::Kind::hyprland);
  for (const char* const name : {"4a3f_17", "", "dead_16", "../.."}) {
    const DesktopSource found = find({.waylandDisplay = "wayland-1", .hyprland = name});
    EXPECT_EQ(*found.name, "Hyprland (native apps and X11 apps)") << name;
    EXPECT_EQ(found.front, FrontRule::settled);
  }
}

TEST_F(DesktopProbeTest, WhoTakesNoQuestionsIsNotHyprland) {
  std::filesystem::create_directories(path("hypr/run"));
  const Compositor other(path("wayland-1"), path("hypr/run/.socket2.sock"), Compositor::Kind::silent);
  expectXwayland(find({.waylandDisplay = "wayland-1", .hyprland = "run"}));
}

TEST_F(DesktopProbeTest, FindsNiriByItsSocketOrItsProcess) {
  const Compositor niri(path("wayland-1"), path("niri.sock"), Compositor::Kind::niri);
  const std::string name = "niri (native apps and X11 apps)";
  EXPECT_EQ(*find({.waylandDisplay = "wayland-1", .niriSocket = path("niri.sock")}).name, name);
  std::filesystem::rename(path("niri.sock"), path("niri.wayland-1." + std::to_string(niri.pid()) + ".sock"));
  EXPECT_EQ(*find({.waylandDisplay = "wayland-1", .niriSocket = path("niri.sock")}).name, name);
  const Compositor other(path("wayland-2"), path("other.sock"), Compositor::Kind::silent);
  expectXwayland(find({.waylandDisplay = "wayland-2", .niriSocket = path("niri.sock")}));
}

TEST_F(DesktopProbeTest, WhoTellsOfNoEventsIsNotNiri) {
  const Compositor other(path("wayland-1"), path("niri.sock"), Compositor::Kind::stranger);
  expectXwayland(find({.waylandDisplay = "wayland-1", .niriSocket = path("niri.sock")}));
}

TEST_F(DesktopProbeTest, FindsACompositorThatTellsOfItsWindows) {
  const Compositor compositor(path("wayland-1"), path("other.sock"), Compositor::Kind::wlroots);
  m_daemon.daemon().signal(SIGSTOP); // the bus is not needed
  const DesktopSource found = find("wayland-1", "");
  m_daemon.daemon().signal(SIGCONT);
  EXPECT_EQ(*found.name, "wlroots (X11 apps, and native apps where it is certain which they are)");
  EXPECT_EQ(found.front, FrontRule::settled);
  found.windows->start({});
  EXPECT_TRUE(found.windows->settle(desktop::guardLimit));
  EXPECT_EQ(found.windows->known().size(), 1U);
  EXPECT_NE(found.windows->active(), 0U);
}

TEST_F(DesktopProbeTest, FindsPlasmaOnTheSessionBus) {
  // A script's file is no use in a folder that everybody may write to.
  ::chmod(m_folder.path().c_str(), 0700);
  const ForkedProcess app;
  const ScriptedKWin kwin(m_daemon.address(), {.windows = {{"{1}", app.pid()}}});
  expectX11(find("", ""));
  const Compositor compositor(path("wayland-1"), path("other.sock"), Compositor::Kind::silent);
  const DesktopSource found = find("wayland-1", "");
  expectPlasma(found);
  found.windows->start({});
  EXPECT_TRUE(found.windows->settle(desktop::guardLimit));
  EXPECT_EQ(found.windows->known().size(), 1U);
  EXPECT_NE(found.windows->active(), 0U);
  EXPECT_EQ(kwin.seen().runs, 1);
}

TEST_F(DesktopProbeTest, APlasmaThatTakesNoScriptIsSeenThroughXwayland) {
  ::chmod(m_folder.path().c_str(), 0700);
  const ScriptedKWin kwin(m_daemon.address(), {.takesScripts = false});
  const Compositor compositor(path("wayland-1"), path("other.sock"), Compositor::Kind::silent);
  const DesktopSource found = find("wayland-1", "");
  expectPlasma(found);
  bool isLost = false; // by the X server in the end: there is none
  found.windows->start({.lost = [&] { isLost = true; }});
  ASSERT_TRUE(m_loop.runUntil([&] { return isLost; }, desktop::guardLimit));
  expectXwayland(found);
}

// GNOME's shell, with the extension in it from when it begins to tell.
class ScriptedGnome {
 public:
  explicit ScriptedGnome(const std::string& address) : m_service(address, "org.gnome.Shell") {
    m_service.answer(GnomeExtension::path, "Sync", [](sd_bus_message*, sd_bus_message*) {});
    for (const char* method : {"Close", "Front"})
      m_service.answer(GnomeExtension::path, method, [this, method](sd_bus_message* call, sd_bus_message*) {
        const char* window = "";
        sd_bus_message_read(call, "s", &window);
        m_orders.push_back(std::string(method) + " " + window);
      });
  }

  bool isAwaited() { // by a feed
    int isThere = 0;
    m_service.perform([&](sd_bus* bus) {
      sd_bus_message* reply = nullptr;
      sd_bus_call_method(bus, "org.freedesktop.DBus", "/", "org.freedesktop.DBus", "NameHasOwner", nullptr,
                         &reply, "s", feedName);
      sd_bus_message_read(reply, "b", &isThere);
      sd_bus_message_unref(reply);
    });
    return isThere != 0;
  }
  void tellOf(Pid pid) {
    m_service.perform([pid](sd_bus* bus) {
      const auto tell = [bus](const char* member, const char* types, auto... values) {
        sd_bus_call_method_async(bus, nullptr, feedName, FedWindows::path, FedWindows::interface, member,
                                 nullptr, nullptr, types, values...);
      };
      tell("Ready", "s", "gnome");
      tell("Window", "sissssb", "1", pid, "", "", "org.example.App", "ordinary", 0);
      tell("Front", "s", "1");
    });
  }
  std::vector<std::string> orders() {
    std::vector<std::string> orders;
    m_service.perform([&](sd_bus*) { orders = m_orders; });
    return orders;
  }

 private:
  std::vector<std::string> m_orders; // in the service's thread
  desktop::FakeService m_service;
};

TEST_F(DesktopProbeTest, GnomeIsSeenThroughXwaylandUntilItsExtensionTells) {
  const Compositor compositor(path("wayland-1"), path("other.sock"), Compositor::Kind::silent);
  ScriptedGnome shell(m_daemon.address());
  const ForkedProcess app;
  const DesktopSource found = find("wayland-1", "");
  expectXwayland(found);
  bool isXServerGone = false; // there is none, which is not the end as long as the extension may come
  found.windows->start({.startedOver = [&] { isXServerGone = true; }});
  ASSERT_TRUE(serveUntil([&] { return isXServerGone && shell.isAwaited(); }));
  shell.tellOf(app.pid());
  ASSERT_TRUE(serveUntil([&] { return found.windows->active() != 0; }));
  EXPECT_EQ(*found.name, "GNOME (native apps and X11 apps)");
  const WindowFacts& window = found.windows->known().at(found.windows->active());
  EXPECT_EQ(window.pid, app.pid());
  EXPECT_TRUE(found.windows->canBringToFront(window));
  EXPECT_TRUE(found.windows->requestFront(window));
  EXPECT_TRUE(found.windows->requestClose(window));
  EXPECT_TRUE(serveUntil([&] { return shell.orders() == std::vector<std::string>{"Front 1", "Close 1"}; }));
}

TEST_F(DesktopProbeTest, ABusThatHangsIsNoPlasma) {
  ::chmod(m_folder.path().c_str(), 0700);
  const Compositor compositor(path("wayland-1"), path("other.sock"), Compositor::Kind::silent);
  m_daemon.daemon().signal(SIGSTOP);
  expectXwayland(find("wayland-1", ""));
  m_daemon.daemon().signal(SIGCONT);
}

TEST_F(DesktopProbeTest, WithoutAnyNameThereIsNoDesktop) {
  ::unsetenv("DISPLAY");
  const DesktopSource found = DesktopProbe(m_loop, m_kernel, m_bus, {}, "", m_installed).find();
  EXPECT_EQ(*found.name, "no desktop (nothing is seen)");
  bool isLost = false;
  found.windows->start({.changed = [] {}, .lost = [&] { isLost = true; }});
  EXPECT_TRUE(m_loop.runUntil([&] { return isLost; }, desktop::guardLimit));
}

} // namespace
} // namespace vantle
