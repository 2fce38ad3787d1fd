// SPDX-License-Identifier: MIT
// Who keeps the machine awake, asked of the real daemons of desktops, for apps as they are and in sandboxes.
#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/power/DesktopPowerAssertions.h"
#include "platform/linux/process/BootEpoch.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Props.h"
#include "tests/support/VirtualDesktop.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <unistd.h>
#include <vector>

namespace vantle::desktop {
namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;

namespace fs = std::filesystem;

const std::set<std::string> idle{"PreventUserIdleDisplaySleep", "PreventUserIdleSystemSleep"};
const std::set<std::string> sleepOnly{"PreventSystemSleep"};
const std::set<std::string> both{"PreventSystemSleep", "PreventUserIdleDisplaySleep",
                                 "PreventUserIdleSystemSleep"};

// The first of these that can be run; empty when none is installed.
std::string installed(const std::vector<std::string>& paths) {
  const auto found = std::find_if(paths.begin(), paths.end(),
                                  [](const std::string& path) { return ::access(path.c_str(), X_OK) == 0; });
  return found == paths.end() ? std::string() : *found;
}

// What an app calls, as the inhibitor of the stage has it as its arguments.
using Call = std::vector<std::string>;

const std::string app = fs::path(inhibitor()).filename().string(); // it calls itself so

Call sessionManager(const std::string& name, int flags) {
  return {"org.gnome.SessionManager", "/org/gnome/SessionManager", "org.gnome.SessionManager", "Inhibit",
          "('" + name + "', uint32 0, 'playing', uint32 " + std::to_string(flags) + ")"};
}
Call powerManagement(const std::string& service) {
  return {service, "/org/freedesktop/PowerManagement/Inhibit", "org.freedesktop.PowerManagement.Inhibit",
          "Inhibit", "('" + app + "', 'playing')"};
}
Call policyAgent(int policy) {
  return {"org.kde.Solid.PowerManagement.PolicyAgent", "/org/kde/Solid/PowerManagement/PolicyAgent",
          "org.kde.Solid.PowerManagement.PolicyAgent", "AddInhibition",
          "(uint32 " + std::to_string(policy) + ", '" + app + "', 'playing')"};
}

class Awake : public testing::Test {
 protected:
  Awake() {
    // Nothing but the daemon itself: no service of the system's, and nobody that a session starts by itself.
    desktop.setEnvironment("XDG_CONFIG_DIRS", desktop.folder().folder("no-autostart"));
    desktop.setEnvironment("DBUS_SYSTEM_BUS_ADDRESS", systemBus.address());
    desktop.setEnvironment("XDG_SESSION_TYPE", "x11");
  }

  Program& hold(const Call& call, const Environment& added = {}) {
    std::vector<std::string> command{inhibitor()};
    command.insert(command.end(), call.begin(), call.end());
    return desktop.launch(command, added);
  }
  std::map<Pid, std::set<std::string>> held() {
    std::map<Pid, std::set<std::string>> all;
    for (const auto& assertion : power.assertions()) all[assertion.pid].insert(assertion.type);
    return all;
  }
  void expectHeld(const Program& program, const std::set<std::string>& types) {
    EXPECT_TRUE(waitUntil([&] { return held()[program.pid()] == types; }))
        << testing::PrintToString(held()[program.pid()]);
  }
  void expectHeldUntilItsEnd(Program& program, const std::set<std::string>& types) {
    expectHeld(program, types);
    program.kill();
    EXPECT_TRUE(waitUntil([&] { return held().empty(); })) << testing::PrintToString(held());
  }
  // True when GNOME's session manager runs, with a session of nothing.
  bool startGnome() {
    const std::string manager = installed({"/usr/libexec/gnome-session-binary"});
    if (manager.empty()) return false;
    desktop.folder().write("home/.local/share/gnome-session/sessions/mini.session",
                           "[GNOME Session]\nName=Mini\nRequiredComponents=\n");
    // Version 43 has to be told to start its parts by itself, 48 does so and does not know the option.
    daemon = &desktop.launch({"sh", "-c",
                              "\"$0\" --help | grep -q -e --builtin && builtin=--builtin; "
                              "exec \"$0\" $builtin --session=mini --disable-acceleration-check",
                              manager},
                             {{"XDG_CURRENT_DESKTOP", "GNOME"}});
    desktop.waitForBusName("org.gnome.SessionManager");
    return true;
  }

  PrivateBus systemBus; // with nobody on it; session managers end without one
  VirtualDesktop desktop;
  Program* daemon = nullptr;
  PollEventLoop loop;
  PosixFileStore files{desktop.folder().path().string(), PosixFileStore::Sync::none};
  ProcfsProcessTable processes{BootEpoch::load(files, {}, "today")};
  BusConnection system{loop, systemBus.address()};
  BusConnection session{loop, desktop.busAddress()};
  DesktopPowerAssertions power{system, session, {processes, desktop.runtimeDir().string() + "/.flatpak"}};
};

TEST_F(Awake, OnXfceItsPowerManagementKnows) {
  const std::string manager = installed({"/usr/bin/xfce4-power-manager"});
  if (manager.empty()) GTEST_SKIP() << "Xfce's power management is not installed";
  desktop.launch({manager, "--no-daemon"});
  desktop.waitForBusName("org.freedesktop.PowerManagement");
  EXPECT_THAT(held(), IsEmpty());
  expectHeldUntilItsEnd(hold(powerManagement("org.freedesktop.PowerManagement")), idle);
}

TEST_F(Awake, OnPlasmaItsPolicyAgentKnows) {
  const std::string agent =
      installed({"/usr/lib/x86_64-linux-gnu/libexec/org_kde_powerdevil",
                 "/usr/lib/aarch64-linux-gnu/libexec/org_kde_powerdevil", "/usr/libexec/org_kde_powerdevil"});
  if (agent.empty()) GTEST_SKIP() << "Plasma's power management is not installed";
  desktop.launch({agent});
  desktop.waitForBusName("org.kde.Solid.PowerManagement.PolicyAgent");
  EXPECT_THAT(held(), IsEmpty());
  expectHeldUntilItsEnd(hold(policyAgent(1)), sleepOnly);
  expectHeldUntilItsEnd(hold(powerManagement("org.freedesktop.PowerManagement.Inhibit")), sleepOnly);
  Program& profile = hold(policyAgent(2));
  expectHeldUntilItsEnd(hold(policyAgent(5)), both);
  profile.kill();
}

TEST_F(Awake, OnGnomeItsSessionManagerKnows) {
  if (!startGnome()) GTEST_SKIP() << "GNOME's session manager is not installed";
  EXPECT_THAT(held(), IsEmpty());
  expectHeldUntilItsEnd(hold(sessionManager(app, 4)), sleepOnly);
  expectHeldUntilItsEnd(hold(sessionManager(app, 8)), idle);
  expectHeldUntilItsEnd(hold(sessionManager("com.example." + app, 12)), both);
  Program& other = hold(sessionManager(app, 3)); // logging out and switching the user
  expectHeldUntilItsEnd(hold(sessionManager(app, 15)), both);
  other.kill();
}

TEST_F(Awake, OnMateItsSessionManagerKnows) {
  const std::string manager = installed({"/usr/bin/mate-session"});
  if (manager.empty()) GTEST_SKIP() << "MATE's session manager is not installed";
  desktop.launch({manager}, {{"XDG_CURRENT_DESKTOP", "MATE"}});
  desktop.waitForBusName("org.gnome.SessionManager");
  EXPECT_THAT(held(), IsEmpty());
  expectHeldUntilItsEnd(hold(sessionManager(app, 12)), both);
}

TEST_F(Awake, OnCinnamonItsSessionManagerKnows) {
  const std::string manager = installed({"/usr/bin/cinnamon-session"});
  if (manager.empty()) GTEST_SKIP() << "Cinnamon's session manager is not installed";
  desktop.installDesktopFile("part", "[Desktop Entry]\nType=Application\nName=Part\nExec=sleep 60\n");
  desktop.folder().folder("home/.config/cinnamon-session/sessions");
  desktop.folder().write("home/.config/cinnamon-session/sessions/mini.session",
                         "[Cinnamon Session]\nName=Mini\nRequiredComponents=part;\n");
  desktop.launch({manager, "--session=mini"}, {{"XDG_CURRENT_DESKTOP", "X-Cinnamon"}});
  desktop.waitForBusName("org.gnome.SessionManager");
  expectHeldUntilItsEnd(hold(sessionManager(app, 12)), both);
}

TEST_F(Awake, ADaemonThatHangsOrDiesIsNobodysLoss) {
  const std::string xfce = installed({"/usr/bin/xfce4-power-manager"});
  if (xfce.empty() || !startGnome()) GTEST_SKIP() << "Xfce's power management or GNOME's session is missing";
  Program& manager = desktop.launch({xfce, "--no-daemon"});
  desktop.waitForBusName("org.freedesktop.PowerManagement");
  Program& player = hold(powerManagement("org.freedesktop.PowerManagement"));
  expectHeld(player, idle);
  daemon->signal(SIGSTOP);
  EXPECT_TRUE(waitUntil([&] { return held()[player.pid()] == idle; }));
  daemon->signal(SIGCONT);
  Program& other = hold(sessionManager(app, 4));
  manager.kill();
  // By its name each of them is found for the other.
  EXPECT_TRUE(waitUntil([&] { return held()[other.pid()] == sleepOnly; }));
}

// An app that has a bus to itself in the way of sandboxes.
TEST_F(Awake, BehindAProxyTheAppIsFoundAndNotTheProxy) {
  const std::string proxy = installed({"/usr/bin/xdg-dbus-proxy"});
  if (proxy.empty() || !startGnome()) GTEST_SKIP() << "the proxy or GNOME's session manager is missing";
  const std::string socket = (desktop.runtimeDir() / "proxied").string();
  Program& between = desktop.launch({proxy, desktop.busAddress(), socket, "--filter",
                                     "--talk=org.gnome.SessionManager", "--own=com.example." + app});
  require("the proxy", [&] { return fs::exists(socket); });
  const Environment inside{{"DBUS_SESSION_BUS_ADDRESS", "unix:path=" + socket},
                           {"OWNED", "com.example." + app}};
  Program& player = hold(sessionManager("com.example." + app, 8), inside);
  expectHeld(player, idle);
  EXPECT_THAT(held(), Not(Contains(testing::Key(between.pid()))));
}

// A real sandbox with nothing in it but the program that asks: made here, of files of this machine, and
// installed for the user of this desktop.
class AwakeInFlatpak : public Awake {
 protected:
  static constexpr const char* id = "org.example.Player";

  static bool isPossible() {
    return !installed({"/usr/bin/flatpak"}).empty() && !installed({"/usr/bin/xdg-dbus-proxy"}).empty();
  }
  bool makeApp() {
    const fs::path made = desktop.folder().folder("flatpak");
    const std::string script =
        "set -e; cd '" + made.string() +
        "'; arch=$(flatpak --default-arch)\n"
        "mkdir -p rt/files rt/usr/bin rt/usr/lib rt/usr/lib64 app/files/bin app/export\n"
        "cp -L '" +
        inhibitor() +
        "' app/files/bin/tune\n"
        // Libraries lie where the loader of this machine looks for them, whatever its processor.
        "ldd app/files/bin/tune | grep -o '/[^ ]*' | while read -r library; do\n"
        "  folder=rt/usr/$(dirname \"${library#/usr}\"); mkdir -p \"$folder\"; cp -L \"$library\" "
        "\"$folder\"\n"
        "done\n"
        "refs=\"runtime=org.example.Platform/$arch/1\nsdk=org.example.Platform/$arch/1\"\n"
        "printf '[Runtime]\\nname=org.example.Platform\\n%b\\n' \"$refs\" >rt/metadata\n"
        "printf '[Application]\\nname=" +
        std::string(id) +
        "\\n%b\\ncommand=tune\\n[Session Bus Policy]\\n"
        "org.gnome.SessionManager=talk\\n' \"$refs\" >app/metadata\n"
        "flatpak build-export --runtime repo rt 1; flatpak build-export repo app stable\n"
        "flatpak --user remote-add --no-gpg-verify here repo\n"
        "flatpak --user install -y --noninteractive here org.example.Platform//1\n"
        "flatpak --user install -y --noninteractive here " +
        std::string(id) +
        "\n"
        "flatpak --user run --command=tune " +
        std::string(id) + "|| test $? = 2\n"; // its own usage
    return desktop.run({"sh", "-c", script});
  }
  Program& holdInside(const std::string& option, const Call& call) {
    std::vector<std::string> command{"flatpak", "--user", "run", option, id};
    command.insert(command.end(), call.begin(), call.end());
    return desktop.launch(command);
  }
  std::string programOf(Pid pid) const {
    return fs::path(processes.executablePathBytes(pid).value_or("")).filename();
  }
  // The processes below this one that run that program.
  std::set<Pid> running(const Program& root, const std::string& program) const {
    std::set<Pid> found;
    for (const Pid pid : processesOf({root.pid()})) {
      if (programOf(pid) == program) found.insert(pid);
    }
    return found;
  }
};

// By the id of its sandbox alone: the program has another name, and the bus knows the proxy.
TEST_F(AwakeInFlatpak, TheAppIsFoundAndNotItsProxy) {
  if (!isPossible() || !startGnome()) GTEST_SKIP() << "Flatpak or GNOME's session manager is missing";
  if (!makeApp()) GTEST_SKIP() << "no sandboxes can be made here";
  for (const char* owned : {"--env=NOTHING=owned", "--env=OWNED=org.example.Player"}) {
    Program& sandbox = holdInside(owned, sessionManager(id, 8));
    EXPECT_TRUE(waitUntil([&] {
      const std::set<Pid> players = running(sandbox, "tune");
      const auto all = held();
      return !players.empty() &&
             std::all_of(players.begin(), players.end(), [&](Pid pid) { return all.contains(pid); });
    })) << owned;
    for (const auto& [pid, types] : held()) {
      EXPECT_EQ(types, idle);
      EXPECT_TRUE(processesOf({sandbox.pid()}).contains(pid)) << owned;
      EXPECT_NE(programOf(pid), "xdg-dbus-proxy") << owned;
    }
    endProcessesOf({sandbox.pid()});
    EXPECT_TRUE(waitUntil([&] { return held().empty(); })) << owned;
  }
}

// The portal asks the screen saver, which asks the session manager, each under its own name but with the
// app's id.
TEST_F(AwakeInFlatpak, ThroughThePortalTheAppIsFoundByItsId) {
  const std::string saver = installed({"/usr/libexec/gsd-screensaver-proxy"});
  const std::string portal = installed({"/usr/libexec/xdg-desktop-portal"});
  const std::string answerer = installed({"/usr/libexec/xdg-desktop-portal-gtk"});
  const std::string permissions = installed({"/usr/libexec/xdg-permission-store"});
  const bool isThere = !saver.empty() && !portal.empty() && !answerer.empty() && !permissions.empty();
  if (!isThere || !isPossible() || !startGnome()) GTEST_SKIP() << "a part of the portal is missing";
  if (!makeApp()) GTEST_SKIP() << "no sandboxes can be made here";
  desktop.launch({saver});
  desktop.waitForBusName("org.freedesktop.ScreenSaver");
  desktop.launch({permissions});
  desktop.waitForBusName("org.freedesktop.impl.portal.PermissionStore");
  desktop.launch({answerer});
  desktop.waitForBusName("org.freedesktop.impl.portal.desktop.gtk");
  desktop.launch({portal}, {{"XDG_CURRENT_DESKTOP", "GNOME"}});
  desktop.waitForBusName("org.freedesktop.portal.Desktop");
  Program& sandbox =
      holdInside("--env=NOTHING=owned",
                 {"org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop",
                  "org.freedesktop.portal.Inhibit", "Inhibit", "('', uint32 8, {'reason': <'playing'>})"});
  EXPECT_TRUE(waitUntil([&] {
    const std::set<Pid> players = running(sandbox, "tune");
    const auto all = held();
    return !players.empty() &&
           std::all_of(players.begin(), players.end(), [&](Pid pid) { return all.contains(pid); });
  }));
  for (const auto& [pid, types] : held()) EXPECT_TRUE(processesOf({sandbox.pid()}).contains(pid));
}

} // namespace
} // namespace vantle::desktop
