// SPDX-License-Identifier: MIT
// The band where a user manager weighs apps: its orders, and what it does when they fail.
#include "tests/support/Wait.h"
#include "tests/unit/linux/band/UserManagerFixture.h"

#include <fstream>
#include <gmock/gmock.h>
#include <thread>

namespace vantle {

namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Mood = ScriptedUserManager::Mood;

TEST_F(UserManagerBand, SlowsAUnitAndPutsItBack) {
  const TestProcess app;
  stand(app.pid(), "app-a-1.scope");
  const std::string before = schedulingState(app.pid());
  EXPECT_TRUE(enter(app.pid(), {app.pid()}));
  EXPECT_EQ(m_band->isInBackgroundBand(app.pid()), true);
  EXPECT_EQ(idle("app-a-1.scope"), "1");
  EXPECT_EQ(autogroupLine(app.pid()), "nice 0") << "one lever is enough";
  EXPECT_THAT(ledger(), HasSubstr("app-a-1.scope"));
  EXPECT_TRUE(m_band->leaveBackgroundBand(app.pid()));
  EXPECT_TRUE(settled());
  EXPECT_EQ(idle("app-a-1.scope"), "0");
  EXPECT_EQ(schedulingState(app.pid()), before);
  EXPECT_THAT(ledger(), HasSubstr("\"units\":[]"));
  EXPECT_THAT(m_manager.takeOrders(),
              ElementsAre("Get app-a-1.scope", "SetUnitProperties app-a-1.scope runtime CPUWeight 0",
                          "SetUnitProperties app-a-1.scope runtime CPUWeight unset"));
}

TEST_F(UserManagerBand, OneCallCoversAUnitAndNamesMayHoldEscapes) {
  const std::string unit = "app-org.example.Editor\\x2dplus-1:2@3.service";
  const TestProcess app;
  const Pid child = app.ask('f');
  stand(app.pid(), unit, 250);
  stand(child, unit, 250);
  EXPECT_TRUE(enter(app.pid(), {app.pid(), child}));
  EXPECT_TRUE(m_band->leaveBackgroundBand(app.pid()));
  EXPECT_TRUE(m_band->leaveBackgroundBand(child));
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_manager.weight(unit), 250U);
  EXPECT_EQ(m_manager.takeOrders().size(), 3U);
}

TEST_F(UserManagerBand, AppsInASliceOfTheirOwnAreWeighedByTheSlice) {
  const TestProcess app;
  m_manager.addUnit("app-nested.slice");
  m_groups.place(app.pid(), FakeControlGroups::appSlice() + "/app-nested.slice/inner.service");
  const std::ofstream list(m_groups.sysRoot() + "/fs/cgroup" + FakeControlGroups::appSlice() +
                           "/app-nested.slice/cgroup.procs");
  EXPECT_TRUE(enter(app.pid(), {app.pid()}));
  EXPECT_EQ(idle("app-nested.slice"), "1");
  m_band->leaveBackgroundBand(app.pid());
  EXPECT_TRUE(settled());
  EXPECT_EQ(idle("app-nested.slice"), "0");
}

TEST_F(UserManagerBand, AUnitWithAnotherAppInItIsNeverLowered) {
  const TestProcess app;
  const Pid child = app.ask('f');
  const TestProcess other;
  for (const Pid pid : {app.pid(), child, other.pid()}) stand(pid, "shared.scope");
  EXPECT_TRUE(enter(app.pid(), {app.pid(), child}, {other.pid()}));
  EXPECT_EQ(idle("shared.scope"), "0");
  const std::string own = m_groups.pathOf(app.pid());
  EXPECT_THAT(own, HasSubstr("/app.slice/app-vantle-"));
  EXPECT_EQ(m_groups.pathOf(child), own);
  EXPECT_THAT(m_groups.pathOf(other.pid()), HasSubstr("shared.scope"));
  EXPECT_EQ(m_groups.idle(own), "1");
  m_band->leaveBackgroundBand(app.pid());
  m_band->leaveBackgroundBand(child);
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_groups.idle(own), "0");

  // The second time it stands in a unit of its own already.
  m_manager.takeOrders();
  EXPECT_TRUE(enter(app.pid(), {app.pid(), child}, {other.pid()}));
  for (const std::string& order : m_manager.takeOrders()) EXPECT_EQ(order.find("StartTransient"), order.npos);
}

TEST_F(UserManagerBand, AnOrphanInTheUnitOfOneAppIsSlowedWithIt) {
  if (!runsAsRoot()) GTEST_SKIP() << "a look without the program itself takes root for its user";
  const TestProcess app;
  const TestProcess orphan; // its parent stands nowhere that can be seen
  for (const Pid pid : {app.pid(), orphan.pid()}) stand(pid, "app-a-1.scope");
  const std::vector<Pid> all = m_user->look({app.pid(), m_front.pid()}).processesOf(app.pid());
  EXPECT_THAT(all, testing::UnorderedElementsAre(app.pid(), orphan.pid()));
  EXPECT_TRUE(enter(app.pid(), all));
  EXPECT_EQ(idle("app-a-1.scope"), "1");
  EXPECT_THAT(m_groups.pathOf(orphan.pid()), HasSubstr("/app-a-1.scope"));
  EXPECT_THAT(m_user->leave(all, {app.pid()}), IsEmpty());
  EXPECT_TRUE(settled());
  EXPECT_EQ(idle("app-a-1.scope"), "0");
}

TEST_F(UserManagerBand, AppsOfALoginSessionAreAdoptedTheOneInFrontIncluded) {
  const TestProcess front;
  const TestProcess app;
  const Pid child = app.ask('f');
  const TestProcess server(TestProcess::Session::own, [](char) {
    std::ofstream("/proc/self/comm") << "Xorg";
    return 0;
  });
  server.ask('!');
  for (const Pid pid : {front.pid(), app.pid(), child, server.pid()}) {
    m_groups.place(pid, FakeControlGroups::loginSession());
  }
  makeRoomFor(front.pid(), {front.pid()});
  EXPECT_THAT(m_groups.pathOf(front.pid()), HasSubstr("/app.slice/app-vantle-"));
  EXPECT_TRUE(m_user->enter(app.pid(), {app.pid(), child}, {}, front.pid()));
  EXPECT_EQ(m_groups.pathOf(child), m_groups.pathOf(app.pid()));
  EXPECT_EQ(m_groups.idle(m_groups.pathOf(app.pid())), "1");
  EXPECT_NE(m_groups.idle(m_groups.pathOf(front.pid())), "1");
  EXPECT_FALSE(m_user->enter(server.pid(), {server.pid()}, {}, front.pid()));
  EXPECT_EQ(m_groups.pathOf(server.pid()), FakeControlGroups::loginSession());
}

TEST_F(UserManagerBand, AServicesMainProcessStaysWhereItIsWatched) {
  const TestProcess service;
  const TestProcess guest;
  stand(service.pid(), "shared.service");
  stand(guest.pid(), "shared.service");
  EXPECT_FALSE(enter(service.pid(), {service.pid()}));
  EXPECT_THAT(m_groups.pathOf(service.pid()), HasSubstr("shared.service"));
  EXPECT_EQ(ProcKernel().ioPriority(service.pid()), 0);
}

// As GNOME's apps are started where the bus is dbus-daemon: in its service, as children of the manager.
TEST_F(UserManagerBand, WhatAServiceHasStartedAndLeftBehindIsGivenAPlaceOfItsOwn) {
  const TestProcess bus;
  const TestProcess game(TestProcess::Session::inherited);
  const TestProcess app(TestProcess::Session::inherited);
  m_manager.addUnit("dbus.service", ScriptedUserManager::notSet);
  const std::string slice = FakeControlGroups::appSlice();
  const std::string service = slice.substr(0, slice.rfind('/')) + "/session.slice/dbus.service";
  for (const Pid pid : {bus.pid(), game.pid(), app.pid()}) m_groups.place(pid, service);
  makeRoomFor(game.pid(), {game.pid(), app.pid()});
  EXPECT_THAT(m_groups.pathOf(game.pid()), HasSubstr("/app.slice/app-vantle-"));
  EXPECT_TRUE(m_user->enter(app.pid(), {app.pid()}, {game.pid()}, game.pid()));
  EXPECT_THAT(m_groups.pathOf(app.pid()), HasSubstr("/app.slice/app-vantle-"));
  EXPECT_EQ(idleAround(app.pid()), "1");
  EXPECT_NE(idleAround(game.pid()), "1");
  EXPECT_EQ(m_groups.pathOf(bus.pid()), service);
  EXPECT_NE(m_groups.idle(service), "1");
}

// Where nobody else can be the main process, it may be the one that the manager watches.
TEST_F(UserManagerBand, TheLastOneOfAServiceStaysThoughItIsNotTheFirstOfASession) {
  const TestProcess daemon(TestProcess::Session::inherited);
  const TestProcess elsewhere;
  m_manager.addUnit("forking.service", ScriptedUserManager::notSet);
  m_manager.addUnit("other.service", ScriptedUserManager::notSet);
  const std::string slice = FakeControlGroups::appSlice();
  const std::string place = slice.substr(0, slice.rfind('/')) + "/session.slice/";
  m_groups.place(daemon.pid(), place + "forking.service");
  m_groups.place(elsewhere.pid(), place + "other.service");
  makeRoomFor(daemon.pid(), {daemon.pid()});
  EXPECT_THAT(m_groups.pathOf(daemon.pid()), HasSubstr("forking.service"));
}

TEST_F(UserManagerBand, SuccessWithoutEffectIsNoSuccess) {
  const TestProcess app;
  stand(app.pid(), "app-a-1.scope");
  m_manager.setMood(Mood::lying);
  EXPECT_FALSE(enter(app.pid(), {app.pid()}));
  EXPECT_EQ(m_band->isInBackgroundBand(app.pid()), false);
  EXPECT_EQ(ProcKernel().ioPriority(app.pid()), 0);
  m_manager.setMood(Mood::obedient);
  EXPECT_TRUE(settled());
  EXPECT_THAT(ledger(), HasSubstr("\"units\":[]"));
}

TEST_F(UserManagerBand, ARefusalLeavesTheAppAsItIs) {
  const TestProcess app;
  const TestProcess shared;
  stand(app.pid(), "app-a-1.scope");
  m_groups.place(shared.pid(), FakeControlGroups::loginSession());
  m_manager.setMood(Mood::refusing);
  EXPECT_FALSE(enter(app.pid(), {app.pid()}));
  EXPECT_FALSE(enter(shared.pid(), {shared.pid()}));
  EXPECT_EQ(m_groups.pathOf(shared.pid()), FakeControlGroups::loginSession());
  EXPECT_EQ(ledger(), "");
}

TEST_F(UserManagerBand, AUnitThatIsGoneByNowLeavesTheAppAsItIs) {
  const TestProcess app;
  m_groups.place(app.pid(),
                 FakeControlGroups::appSlice() + "/app-gone-1.scope"); // the manager has no such unit
  EXPECT_FALSE(enter(app.pid(), {app.pid()}));
  EXPECT_EQ(m_band->isInBackgroundBand(app.pid()), false);
  EXPECT_EQ(ProcKernel().ioPriority(app.pid()), 0);
  EXPECT_NE(idle("app-gone-1.scope"), "1");
}

TEST_F(UserManagerBand, WithoutABusNothingIsTouched) {
  const TestProcess app;
  stand(app.pid(), "app-a-1.scope");
  m_bus.kill();
  start();
  EXPECT_FALSE(enter(app.pid(), {app.pid()}));
  EXPECT_EQ(ProcKernel().ioPriority(app.pid()), 0);
  EXPECT_EQ(idle("app-a-1.scope"), "0");
  EXPECT_EQ(ledger(), "");
  m_manager.disconnect();
}

TEST_F(UserManagerBand, AUnitIsNotLoweredForNothing) {
  const TestProcess app;
  stand(app.pid(), "app-a-1.scope", 40);
  // Hints are what the mark cannot remember, so the process itself is refused.
  ASSERT_TRUE(ProcKernel().setIoPriority(app.pid(), (2 << 13) | (1 << 3) | 4) == Change::done);
  EXPECT_FALSE(enter(app.pid(), {app.pid()}));
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_manager.weight("app-a-1.scope"), 40U);
  EXPECT_EQ(idle("app-a-1.scope"), "0");
}

TEST_F(UserManagerBand, ASilentManagerHoldsNobodyUp) {
  const TestProcess app;
  stand(app.pid(), "app-a-1.scope");
  start(std::chrono::milliseconds(200));
  m_manager.setMood(Mood::silent);
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_FALSE(enter(app.pid(), {app.pid()}));
  EXPECT_FALSE(enter(app.pid(), {app.pid()})) << "and is not asked again before it has answered";
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(4))
      << "an order's own limit is 5 s";
  EXPECT_EQ(m_band->isInBackgroundBand(app.pid()), false);
  m_manager.setMood(Mood::obedient);
}

TEST_F(UserManagerBand, WhatComesTooLateIsTakenBack) {
  const TestProcess app;
  stand(app.pid(), "app-a-1.scope");
  for (const int limit : {300, 500, 700, 900}) {
    start(std::chrono::milliseconds(limit));
    m_manager.setDelay(std::chrono::milliseconds(250)); // cuts the pass off at one order after the other
    const bool entered = enter(app.pid(), {app.pid()});
    EXPECT_EQ(m_band->isInBackgroundBand(app.pid()), entered);
    m_manager.setDelay({});
    if (entered) {
      m_band->leaveBackgroundBand(app.pid());
    }
    EXPECT_TRUE(settled());
    EXPECT_NE(idle("app-a-1.scope"), "1");
    EXPECT_EQ(m_manager.weight("app-a-1.scope"), ScriptedUserManager::notSet);
  }
}

TEST_F(UserManagerBand, TheBusDiesAndComesBackInTheMiddle) {
  const TestProcess app;
  stand(app.pid(), "app-a-1.scope", 77);
  EXPECT_TRUE(enter(app.pid(), {app.pid()}));
  m_bus.kill();
  m_manager.disconnect();
  EXPECT_TRUE(m_band->leaveBackgroundBand(app.pid()));
  EXPECT_EQ(m_band->isInBackgroundBand(app.pid()), false);
  EXPECT_FALSE(m_band->settle(std::chrono::milliseconds(100)));
  EXPECT_THAT(ledger(), HasSubstr("app-a-1.scope")) << "still owed";
  m_bus.start();
  m_manager.connect();
  // Nobody asks: the band comes back to it by itself.
  EXPECT_TRUE(m_loop.runUntil([&] { return m_manager.weight("app-a-1.scope") == 77; }, guard));
  EXPECT_TRUE(settled());
  EXPECT_TRUE(enter(app.pid(), {app.pid()}));
  EXPECT_TRUE(m_band->leaveBackgroundBand(app.pid()));
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_manager.weight("app-a-1.scope"), 77U);
}

// Whoever computes is seen out when it has had a little processor time, which a lowered unit hardly gets: the
// order that raises the unit must not wait for that, nor for anybody to read what the bus has to say.
TEST_F(UserManagerBand, AUnitIsRaisedBeforeItsLastProcessIsSeenOut) {
  const TestProcess app;
  stand(app.pid(), "app-a-1.scope");
  m_groups.setComputing(app.pid(), true);
  EXPECT_TRUE(enter(app.pid(), {app.pid()}));
  m_bus.kill();
  m_manager.disconnect();
  m_bus.start();
  m_manager.connect();
  EXPECT_TRUE(m_band->leaveBackgroundBand(app.pid()));
  bool isRaised = false;
  std::thread processor([&] {
    isRaised =
        desktop::waitUntil([&] { return m_manager.weight("app-a-1.scope") == ScriptedUserManager::notSet; });
    m_groups.setComputing(app.pid(), false);
  });
  EXPECT_TRUE(settled());
  processor.join();
  EXPECT_TRUE(isRaised);
  EXPECT_EQ(idle("app-a-1.scope"), "0");
}

TEST_F(UserManagerBand, TheNextStartPutsBackAUnitWhoseProcessesAreAllNew) {
  {
    const TestProcess app;
    stand(app.pid(), "worker.service", 30);
    EXPECT_TRUE(enter(app.pid(), {app.pid()}));
  }
  killed();
  EXPECT_EQ(m_manager.weight("worker.service"), 0U);
  start();
  m_band->reclaim(nullptr);
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_manager.weight("worker.service"), 30U);
}

TEST_F(UserManagerBand, AScopeThatHasEndedIsForgotten) {
  {
    const TestProcess app;
    stand(app.pid(), "app-a-1.scope");
    EXPECT_TRUE(enter(app.pid(), {app.pid()}));
  }
  m_groups.removeFolder(FakeControlGroups::appSlice() + "/app-a-1.scope");
  m_manager.takeOrders();
  m_band->reclaim(nullptr);
  EXPECT_TRUE(settled());
  EXPECT_THAT(m_manager.takeOrders(), IsEmpty());
  EXPECT_THAT(ledger(), HasSubstr("\"units\":[]"));
}

TEST_F(UserManagerBand, AWeightOfSomebodyElseStays) {
  const TestProcess app;
  stand(app.pid(), "app-a-1.scope", 30);
  EXPECT_TRUE(enter(app.pid(), {app.pid()}));
  m_manager.setWeight("app-a-1.scope", 500);
  EXPECT_TRUE(m_band->leaveBackgroundBand(app.pid()));
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_manager.weight("app-a-1.scope"), 500U);

  const TestProcess idler;
  stand(idler.pid(), "app-idle-1.scope", 0);
  m_groups.setIdle(FakeControlGroups::appSlice() + "/app-idle-1.scope", true);
  EXPECT_FALSE(enter(idler.pid(), {idler.pid()})) << "somebody else's, who will take it out again";
}

TEST_F(UserManagerBand, WithoutALedgerNothingIsLowered) {
  const TestProcess app;
  stand(app.pid(), "app-a-1.scope");
  m_ledgers = {"/proc/vantle/band.json"}; // where nobody can write
  start();
  EXPECT_FALSE(enter(app.pid(), {app.pid()}));
  EXPECT_EQ(m_manager.weight("app-a-1.scope"), ScriptedUserManager::notSet);
}

TEST_F(UserManagerBand, AFolderThatCannotBeWrittenHasAnotherStandIn) {
  const TestProcess app;
  const TestProcess second;
  stand(app.pid(), "app-a-1.scope", 30);
  stand(second.pid(), "app-b-1.scope", 40);
  const std::string good = m_ledgers.front();
  const std::string spare = (m_groups.folder() / "run/Vantle/band.json").string();
  m_ledgers = {"/proc/vantle/band.json", spare};
  start();
  EXPECT_TRUE(enter(app.pid(), {app.pid()}));
  EXPECT_EQ(idle("app-a-1.scope"), "1");
  EXPECT_THAT(textOf(spare), HasSubstr("app-a-1.scope"));
  killed();

  // By now the first can be written, and has all of it; the other must not contradict it later.
  m_ledgers = {good, spare};
  start();
  EXPECT_TRUE(enter(second.pid(), {second.pid()}));
  EXPECT_THAT(textOf(good), testing::AllOf(HasSubstr("app-a-1.scope"), HasSubstr("app-b-1.scope")));
  EXPECT_THAT(textOf(spare), HasSubstr("\"units\":[]"));
  killed();

  start();
  m_band->reclaim(nullptr);
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_manager.weight("app-a-1.scope"), 30U);
  EXPECT_EQ(m_manager.weight("app-b-1.scope"), 40U);
  for (const std::string& path : m_ledgers) EXPECT_THAT(textOf(path), HasSubstr("\"units\":[]"));
}

TEST_F(UserManagerBand, TheNextStartReadsTheStandInAlone) {
  {
    const TestProcess app;
    stand(app.pid(), "worker.service", 30);
    m_ledgers = {"/proc/vantle/band.json", (m_groups.folder() / "run/band.json").string()};
    start();
    EXPECT_TRUE(enter(app.pid(), {app.pid()}));
  }
  killed();
  start();
  m_band->reclaim(nullptr);
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_manager.weight("worker.service"), 30U);
  EXPECT_THAT(textOf(m_ledgers.back()), HasSubstr("\"units\":[]"));
}

TEST_F(UserManagerBand, NobodyLooksForABoostAppThatHasAPlace) {
  bool hasLooked = false;
  m_band->makeRoomFor(m_front.pid(), [&]() -> const ProcessView& {
    static const ProcessView nobody;
    hasLooked = true;
    return nobody;
  });
  EXPECT_FALSE(hasLooked);
  EXPECT_THAT(m_manager.takeOrders(), IsEmpty());
}

TEST_F(UserManagerBand, LedgersThatAreNotOursCountAsEmpty) {
  stand(m_front.pid(), "app-front-1.scope");
  const std::string unit = R"({"name":"app-front-1.scope","path":"/x","weight":5})";
  const std::vector<std::string> contents = {"",
                                             "[]",
                                             "{",
                                             std::string(2'000'000, 'x'),
                                             R"({"boot":"of another day","units":[)" + unit + "]}",
                                             R"({"boot":7,"units":3})",
                                             "\xff\xfe"};
  for (const std::string& content : contents) {
    std::filesystem::create_directories(std::filesystem::path(m_ledgers.front()).parent_path());
    std::ofstream(m_ledgers.front()) << content;
    start();
    m_manager.takeOrders();
    m_band->reclaim(nullptr);
    EXPECT_THAT(m_manager.takeOrders(), IsEmpty()) << content.substr(0, 40);
  }
}

} // namespace

} // namespace vantle
