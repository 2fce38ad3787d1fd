// SPDX-License-Identifier: MIT
#include "platform/linux/power/DesktopPowerAssertions.h"

#include "engine/Protection.h"
#include "platform/linux/audio/LinuxAudio.h"
#include "platform/linux/power/InhibitorReaders.h"
#include "platform/posix/Descriptor.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/FakeService.h"
#include "tests/support/NamedSocket.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <chrono>
#include <future>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantle {
namespace {

using desktop::FakeService;
using desktop::PrivateBus;
using testing::IsEmpty;
using testing::Pair;
using testing::UnorderedElementsAre;

constexpr const char* sleepType = "PreventSystemSleep";
constexpr const char* idleSystemType = "PreventUserIdleSystemSleep";
constexpr const char* idleDisplayType = "PreventUserIdleDisplaySleep";

struct Inhibitor {
  const char* what;
  const char* mode;
  std::uint32_t user;
  std::uint32_t pid;
};

class Programs final : public ProcessTable {
 public:
  std::map<Pid, std::string> paths;

  std::optional<ProcessRecord> record(Pid) const override { return {}; }
  std::vector<ProcessRecord> scan() const override {
    std::vector<ProcessRecord> all;
    for (const auto& [pid, path] : paths) all.push_back({pid, 1, 0, 0});
    return all;
  }
  std::optional<std::string> executablePathBytes(Pid pid) const override {
    const auto found = paths.find(pid);
    return found == paths.end() ? std::nullopt : std::optional(found->second);
  }
  std::optional<std::uint64_t> footprint(Pid) const override { return {}; }
  std::optional<std::uint64_t> cpuTime(Pid) const override { return {}; }
  std::optional<int> schedulerPriority(Pid) const override { return {}; }
};

// One bus stands for the system's and the session's. The session manager is a thread of this very process.
struct Assertions : testing::Test {
  void inhibitors(const std::vector<Inhibitor>& list) {
    logind.answer("", "ListInhibitors", [list](sd_bus_message*, sd_bus_message* reply) {
      sd_bus_message_open_container(reply, 'a', "(ssssuu)");
      for (const Inhibitor& entry : list) {
        sd_bus_message_append(reply, "(ssssuu)", entry.what, "somebody", "for a reason", entry.mode,
                              entry.user, entry.pid);
      }
      sd_bus_message_close_container(reply);
    });
  }

  // What the session manager holds for others: one object each, named by its place.
  struct Held {
    std::uint32_t flags;
    const char* client;
    const char* appId;
  };
  void sessionHolds(const std::vector<Held>& list) {
    session = std::make_unique<FakeService>(bus.address(), "org.gnome.SessionManager");
    std::vector<std::string> paths;
    for (const Held& held : list) {
      const std::string path = "/org/gnome/SessionManager/Inhibitor" + std::to_string(paths.size());
      paths.push_back(path);
      session->answer(path, "GetFlags", [held](sd_bus_message*, sd_bus_message* reply) {
        sd_bus_message_append(reply, "u", held.flags);
      });
      session->answer(path, "GetAppId", [held](sd_bus_message*, sd_bus_message* reply) {
        sd_bus_message_append(reply, "s", held.appId);
      });
      session->answer(path, "GetClientId", [held](sd_bus_message*, sd_bus_message* reply) {
        sd_bus_message_append(reply, "o", held.client);
      });
    }
    session->answer("", "GetInhibitors", [paths](sd_bus_message*, sd_bus_message* reply) {
      sd_bus_message_open_container(reply, 'a', "o");
      for (const std::string& path : paths) sd_bus_message_append(reply, "o", path.c_str());
      sd_bus_message_close_container(reply);
    });
  }

  // A daemon that tells names only.
  static FakeService::Answer names(const std::vector<std::string>& list) {
    return [list](sd_bus_message*, sd_bus_message* reply) {
      sd_bus_message_open_container(reply, 'a', "s");
      for (const std::string& name : list) sd_bus_message_append(reply, "s", name.c_str());
      sd_bus_message_close_container(reply);
    };
  }
  // PowerDevil, as it was seen; policies 1: suspending, 2: its profile, 4: the screen.
  std::unique_ptr<FakeService> plasma(const std::vector<std::string>& apps,
                                      const std::set<std::uint32_t>& policies) const {
    auto agent = std::make_unique<FakeService>(bus.address(), "org.kde.Solid.PowerManagement.PolicyAgent");
    agent->answer("", "ListInhibitions", [apps](sd_bus_message*, sd_bus_message* reply) {
      sd_bus_message_open_container(reply, 'a', "(ss)");
      for (const std::string& app : apps) sd_bus_message_append(reply, "(ss)", app.c_str(), "a reason");
      sd_bus_message_close_container(reply);
    });
    agent->answer("", "HasInhibition", [policies](sd_bus_message* call, sd_bus_message* reply) {
      std::uint32_t policy = 0;
      sd_bus_message_read(call, "u", &policy);
      sd_bus_message_append(reply, "b", policies.contains(policy) ? 1 : 0);
    });
    return agent;
  }

  std::vector<std::pair<Pid, std::string>> ask() {
    std::vector<std::pair<Pid, std::string>> pairs;
    for (const auto& [pid, type] : power.assertions()) pairs.emplace_back(pid, type);
    return pairs;
  }

  const std::uint32_t self = static_cast<std::uint32_t>(::getpid());
  PrivateBus bus;
  FakeService logind{bus.address(), "org.freedesktop.login1"};
  std::unique_ptr<FakeService> session;
  PollEventLoop loop;
  BusConnection system{loop, bus.address()};
  BusConnection user{loop, bus.address()};
  Programs programs;
  DesktopPowerAssertions power{system, user, {programs}};
};

TEST(KindsFromList, OrderAndNeighboursDoNotMatter) {
  struct Row {
    const char* list;
    bool sleep;
    bool idle;
  };
  for (const Row& row : {Row{"sleep", true, false}, Row{"idle", false, true}, Row{"idle:sleep", true, true},
                         Row{"handle-lid-switch:sleep:shutdown", true, false},
                         Row{"shutdown:handle-power-key:idle", false, true}, Row{"shutdown", false, false},
                         Row{"handle-suspend-key", false, false}, Row{"asleep:idleness", false, false},
                         Row{"", false, false}, Row{":::", false, false}, Row{":sleep:", true, false}}) {
    EXPECT_EQ(kindsFromList(row.list).sleep, row.sleep) << row.list;
    EXPECT_EQ(kindsFromList(row.list).idle, row.idle) << row.list;
  }
}

TEST(IsProgramOfApp, ComparesTheLastPartOfPathAndId) {
  for (const auto& [path, id] :
       std::vector<std::pair<const char*, const char*>>{{"/usr/lib/firefox/firefox", "firefox"},
                                                        {"/usr/lib/firefox-esr/firefox-esr", "firefox"},
                                                        {"/usr/lib/firefox/firefox", "org.mozilla.firefox"},
                                                        {"/usr/bin/totem", "org.gnome.Totem"},
                                                        {"/usr/bin/vlc", "/usr/bin/vlc"},
                                                        {"/opt/app/org.example.App", "org.example.App"}}) {
    EXPECT_TRUE(isProgramOfApp(path, id)) << path << " " << id;
  }
  for (const auto& [path, id] :
       std::vector<std::pair<const char*, const char*>>{{"/usr/bin/firefoxes", "firefox"},
                                                        {"/usr/bin/fire", "firefox"},
                                                        {"/usr/bin/sh", ""},
                                                        {"", "firefox"},
                                                        {"", ""},
                                                        {"/usr/bin/app", "org.example."}}) {
    EXPECT_FALSE(isProgramOfApp(path, id)) << path << " " << id;
  }
}

TEST_F(Assertions, BlockingInhibitorsOfSleepAndIdlenessCount) {
  inhibitors({{"sleep", "block", 1000, 101},
              {"idle", "block", 1000, 102},
              {"handle-lid-switch:idle:sleep", "block", 1000, 103},
              {"sleep:idle", "delay", 1000, 104},
              {"sleep", "block-weak", 1000, 105},
              {"shutdown:handle-power-key", "block", 1000, 106}});
  EXPECT_THAT(ask(), UnorderedElementsAre(Pair(101, sleepType), Pair(102, idleSystemType),
                                          Pair(102, idleDisplayType), Pair(103, sleepType),
                                          Pair(103, idleSystemType), Pair(103, idleDisplayType)));
}

TEST_F(Assertions, HoldersOfOtherUsersCountAndImpossibleOnesDoNot) {
  inhibitors({{"sleep", "block", 0, 201},
              {"sleep", "block", 1001, 202},
              {"sleep", "block", 1000, 0},
              {"sleep", "block", 1000, 4294967295}});
  EXPECT_THAT(ask(), UnorderedElementsAre(Pair(201, sleepType), Pair(202, sleepType)));
}

TEST_F(Assertions, ADaemonThatSaysSomethingElseHoldsNothing) {
  logind.answer("", "ListInhibitors",
                [](sd_bus_message*, sd_bus_message* reply) { sd_bus_message_append(reply, "s", "none"); });
  EXPECT_THAT(ask(), IsEmpty());
  inhibitors({});
  EXPECT_THAT(ask(), IsEmpty());
}

TEST_F(Assertions, TheSessionManagerStandsForTheAppsBehindIt) {
  programs.paths = {
      {301, "/usr/bin/bash"}, {302, "/usr/lib/firefox/firefox"}, {303, "/usr/lib/firefox/firefox"}};
  inhibitors({{"sleep:idle", "block", 1000, self}, {"idle", "block", 1000, 300}});
  sessionHolds({{12, "/org/gnome/SessionManager/Client1", "some app"}, // registered
                {8, "/", "org.example.Player"},                        // owns the name of its id
                {4, "/", "firefox"},                                   // only its program is called so
                {3, "/", "org.example.Editor"},                        // logging out and switching the user
                {8, "/", "nobody"}});
  session->answer("/org/gnome/SessionManager/Client1", "GetUnixProcessId",
                  [](sd_bus_message*, sd_bus_message* reply) { sd_bus_message_append(reply, "u", 310); });
  const FakeService player(bus.address(), "org.example.Player");

  // The player is a thread of this process as well: it alone brings the number in.
  EXPECT_THAT(ask(), UnorderedElementsAre(
                         Pair(300, idleSystemType), Pair(300, idleDisplayType), Pair(310, sleepType),
                         Pair(310, idleSystemType), Pair(310, idleDisplayType), Pair(self, idleSystemType),
                         Pair(self, idleDisplayType), Pair(302, sleepType), Pair(303, sleepType)));
}

TEST_F(Assertions, TheSessionManagerItselfHoldsNothing) {
  inhibitors({{"sleep", "block", 1000, self}, {"idle", "block", 1000, 400}});
  sessionHolds({});
  EXPECT_THAT(ask(), UnorderedElementsAre(Pair(400, idleSystemType), Pair(400, idleDisplayType)));
}

TEST_F(Assertions, ASessionManagerThatHangsHidesNobodyElse) {
  inhibitors({{"sleep", "block", 1000, self}, {"sleep", "block", 1000, 500}});
  sessionHolds({{4, "/", "firefox"}});
  session->ignore("GetInhibitors");
  // A hundred questions that each waited would take twenty seconds.
  const auto start = std::chrono::steady_clock::now();
  std::size_t answered = 0;
  for (int at = 0; at < 100; ++at) answered += ask().size();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_GT(answered, 90U) << "a busy machine may let one be missed, not more";
  EXPECT_THAT(ask(), UnorderedElementsAre(Pair(500, sleepType)));
  EXPECT_EQ(session->calls("GetInhibitors"), 1); // it is not asked again while it owes an answer
}

TEST_F(Assertions, WhatTheSessionManagerKeepsToItselfCountsAsWell) {
  inhibitors({});
  sessionHolds({{8, "/", "org.example.Player"}});
  const FakeService player(bus.address(), "org.example.Player");
  EXPECT_THAT(ask(), UnorderedElementsAre(Pair(self, idleSystemType), Pair(self, idleDisplayType)));
}

TEST_F(Assertions, ALoginDaemonThatHangsDoesNotHideWhatTheSessionManagerKnows) {
  logind.ignore("ListInhibitors");
  sessionHolds({{4, "/", "org.example.Player"}});
  const FakeService player(bus.address(), "org.example.Player");
  // The first time already, but for a machine too busy to answer in the time there is.
  EXPECT_TRUE(desktop::waitUntil([this] { return !ask().empty(); }));
  EXPECT_THAT(ask(), UnorderedElementsAre(Pair(self, sleepType)));
  EXPECT_EQ(logind.calls("ListInhibitors"), 1);
}

// A sound server that takes the whole time leaves those on the buses theirs, and they take none beside it.
TEST_F(Assertions, SoundAndBusesAreAskedInTheSameTime) {
  const desktop::TemporaryFolder folder;
  const std::string socket = (folder.path() / "pipewire").string();
  const Descriptor hung(desktop::listeningSocket(socket)); // nobody accepts
  ASSERT_TRUE(hung);
  inhibitors({{"sleep", "block", 1000, 720}});
  FakeService xfce(bus.address(), "org.freedesktop.PowerManagement");
  const auto decide = [&] {
    LinuxAudio audio(std::make_shared<ProcKernel>(), {socket, "unix:" + (folder.path() / "none").string()},
                     {&power.question()});
    return shieldedPIDs(audio, power).keepsAwake;
  };
  EXPECT_TRUE(desktop::waitUntil([&] { return decide() == std::set<Pid>{720}; }));
  xfce.ignore("GetInhibitors");
  // Each of them on its own waits for 200 ms. A busy machine has more than one try.
  EXPECT_TRUE(desktop::waitUntil([&] {
    DesktopPowerAssertions fresh{system, user, {programs}};
    LinuxAudio audio(std::make_shared<ProcKernel>(), {socket, "unix:" + (folder.path() / "none").string()},
                     {&fresh.question()});
    const auto start = std::chrono::steady_clock::now();
    const std::set<Pid> awake = shieldedPIDs(audio, fresh).keepsAwake;
    const auto took = std::chrono::steady_clock::now() - start;
    EXPECT_GE(took, std::chrono::milliseconds(200));
    return awake == std::set<Pid>{720} && took < std::chrono::milliseconds(300);
  }));
}

TEST_F(Assertions, PlasmaNamesTheAppsThatItHoldsFor) {
  programs.paths = {{701, "/usr/bin/haruna"}, {702, "/usr/bin/bash"}};
  inhibitors({});
  auto agent = plasma({"Haruna", "nobody"}, {1, 4});
  EXPECT_THAT(ask(), UnorderedElementsAre(Pair(701, sleepType), Pair(701, idleSystemType),
                                          Pair(701, idleDisplayType)));
  agent.reset();
  agent = plasma({"org.kde.haruna"}, {4});
  EXPECT_THAT(ask(), UnorderedElementsAre(Pair(701, idleSystemType), Pair(701, idleDisplayType)));
  agent.reset();
  agent = plasma({"haruna"}, {2}); // only its profile
  EXPECT_THAT(ask(), IsEmpty());
}

TEST_F(Assertions, EveryDaemonOfTheSessionIsAsked) {
  inhibitors({});
  struct Row {
    const char* name;
    const char* said;
  };
  // As xfce4-power-manager, another one of its kind, and the screen savers answer.
  for (const Row& row : {Row{"org.freedesktop.PowerManagement", "player"},
                         Row{"org.freedesktop.PowerManagement.Inhibit", "/usr/bin/player"},
                         Row{"org.freedesktop.ScreenSaver", "Player"},
                         Row{"org.mate.ScreenSaver",
                             "Application=\"player\"; Since=\"2026-11-22T18:54:38Z\"; Reason=\"why\";"},
                         Row{"org.xfce.ScreenSaver", "org.example.Player"}}) {
    FakeService daemon(bus.address(), row.name);
    daemon.answer("", "GetInhibitors", names({"nobody", row.said}));
    programs.paths = {{711, "/usr/bin/player"}};
    EXPECT_THAT(ask(), UnorderedElementsAre(Pair(711, idleSystemType), Pair(711, idleDisplayType)))
        << row.name;
  }
  EXPECT_THAT(ask(), IsEmpty());
}

// An app that asks again and again, and a daemon that forgets nobody.
TEST_F(Assertions, NobodyIsHiddenByALongList) {
  programs.paths = {{731, "/usr/bin/one"}, {732, "/usr/bin/two"}, {733, "/usr/bin/three"}};
  inhibitors({});
  std::vector<std::string> repeated(20'000, "leak");
  repeated.push_back("one");
  FakeService xfce(bus.address(), "org.freedesktop.PowerManagement");
  xfce.answer("", "GetInhibitors", names(repeated));
  std::vector<std::string> many;
  for (int at = 0; at < 3000; ++at) many.push_back("app" + std::to_string(at));
  many.push_back("two");
  const auto agent = plasma(many, {4});
  std::vector<Held> held(300, {8, "/", "nobody"});
  held.push_back({8, "/", "three"});
  sessionHolds(held);
  // A busy machine needs more than one try to answer all of that.
  EXPECT_TRUE(desktop::waitUntil([&] {
    std::set<Pid> pids;
    for (const auto& [pid, type] : ask()) pids.insert(pid);
    return pids == std::set<Pid>{731, 732, 733};
  }));
}

// Each hangs in its turn, and all the others are asked and heard.
TEST_F(Assertions, NobodyIsLeftUnaskedBecauseAnotherHangs) {
  programs.paths = {{721, "/usr/bin/one"}, {722, "/usr/bin/two"}, {723, "/usr/bin/three"}};
  inhibitors({{"idle", "block", 1000, 720}});
  sessionHolds({{8, "/", "one"}});
  const auto agent = plasma({"two"}, {4});
  FakeService xfce(bus.address(), "org.freedesktop.PowerManagement");
  xfce.answer("", "GetInhibitors", names({"three"}));
  const auto heard = [&] {
    std::set<Pid> pids;
    for (const auto& [pid, type] : ask()) pids.insert(pid);
    return pids;
  };
  EXPECT_TRUE(desktop::waitUntil([&] { return heard() == std::set<Pid>{720, 721, 722, 723}; }));
  struct Row {
    FakeService* daemon;
    const char* member;
    std::set<Pid> others;
  };
  for (const Row& row :
       {Row{&xfce, "GetInhibitors", {720, 721, 722}}, Row{agent.get(), "ListInhibitions", {720, 721}},
        Row{session.get(), "GetInhibitors", {720}}, Row{&logind, "ListInhibitors", {}}}) {
    row.daemon->ignore(row.member);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(desktop::waitUntil([&] { return heard() == row.others; })) << row.member;
    // What is under way is not waited for a second time: a hundred that were would take twenty seconds.
    for (int at = 0; at < 100; ++at) heard();
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(15));
  }
}

// Its answer comes when the decision is made; the loop never ran in between.
TEST_F(Assertions, ADaemonThatWasTooLateIsHeardTheNextTime) {
  programs.paths = {{731, "/usr/bin/player"}};
  inhibitors({});
  FakeService xfce(bus.address(), "org.freedesktop.PowerManagement");
  std::promise<void> isOver;
  std::shared_future<void> over = isOver.get_future().share();
  xfce.answer("", "GetInhibitors", [over](sd_bus_message* call, sd_bus_message* reply) {
    over.wait();
    names({"player"})(call, reply);
  });
  EXPECT_THAT(ask(), IsEmpty());
  EXPECT_THAT(ask(), IsEmpty());
  isOver.set_value();
  EXPECT_TRUE(desktop::waitUntil([&] { return ask().size() == 2; }));
  EXPECT_GE(xfce.calls("GetInhibitors"), 2) << "what came late belongs to an earlier decision";
}

TEST_F(Assertions, ADaemonThatEndsInTheMiddleOrComesBackIsNobodysLoss) {
  programs.paths = {{741, "/usr/bin/player"}};
  inhibitors({{"sleep", "block", 1000, 740}});
  auto xfce = std::make_unique<FakeService>(bus.address(), "org.freedesktop.PowerManagement");
  xfce->ignore("GetInhibitors");
  EXPECT_TRUE(desktop::waitUntil([&] { return !ask().empty(); }));
  xfce.reset();
  EXPECT_TRUE(desktop::waitUntil([&] { return ask().size() == 1; }));
  xfce = std::make_unique<FakeService>(bus.address(), "org.freedesktop.PowerManagement");
  xfce->answer("", "GetInhibitors", names({"player"}));
  EXPECT_TRUE(desktop::waitUntil([&] { return ask().size() == 3; }));
}

TEST_F(Assertions, AFloodOfNamesHidesNobodyElseAndEnds) {
  programs.paths = {{751, "/usr/bin/player"}, {752, "/usr/bin/other"}};
  inhibitors({{"sleep", "block", 1000, 750}});
  FakeService xfce(bus.address(), "org.freedesktop.PowerManagement");
  std::vector<std::string> flood;
  constexpr std::size_t many = 100'000;
  flood.reserve(many);
  for (std::size_t count = 0; count < many; ++count)
    flood.push_back(std::to_string(count) + std::string(300, 'x'));
  xfce.answer("", "GetInhibitors", names(flood));
  const auto agent = plasma({"other"}, {4});
  EXPECT_TRUE(desktop::waitUntil([&] {
    const auto held = ask();
    return held.size() == 3 && held.front().first == 750 && held.back().first == 752;
  }));
}

TEST_F(Assertions, AProxyIsNotTheAppBehindIt) {
  // Which sandbox it belongs to nobody knows here: the programs of the app's name are what is left.
  programs.paths = {{static_cast<Pid>(self), "/usr/bin/xdg-dbus-proxy"}, {761, "/app/bin/player"}};
  inhibitors({{"sleep", "block", 1000, self}});
  sessionHolds({{8, "/org/gnome/SessionManager/Client1", "org.example.Player"}});
  session->answer(
      "/org/gnome/SessionManager/Client1", "GetUnixProcessId",
      [this](sd_bus_message*, sd_bus_message* reply) { sd_bus_message_append(reply, "u", self); });
  const FakeService player(bus.address(), "org.example.Player");
  EXPECT_THAT(ask(), UnorderedElementsAre(Pair(761, idleSystemType), Pair(761, idleDisplayType)));
}

TEST_F(Assertions, ThePortalsRequestersStandForWhomNobodyCanName) {
  inhibitors({});
  FakeService portal(bus.address(), "org.freedesktop.portal.Desktop");
  FakeService player(bus.address(), "org.example.Player");
  std::string name;
  player.perform([&](sd_bus* connection) {
    const char* unique = "";
    sd_bus_get_unique_name(connection, &unique);
    name = unique;
  });
  std::replace(name.begin(), name.end(), '.', '_');
  portal.answer("/org/freedesktop/portal/desktop/request", "Introspect",
                [name](sd_bus_message*, sd_bus_message* reply) {
                  sd_bus_message_append(reply, "s",
                                        ("<node><node name=\"" + name.substr(1) + "\"/></node>").c_str());
                });
  auto agent = plasma({}, {4});
  EXPECT_THAT(ask(), IsEmpty()) << "a dialog keeps no machine awake";
  agent.reset();
  agent = plasma({""}, {4}); // for an app without an id
  EXPECT_THAT(ask(), UnorderedElementsAre(Pair(self, sleepType), Pair(self, idleSystemType),
                                          Pair(self, idleDisplayType)));
}

} // namespace
} // namespace vantle
