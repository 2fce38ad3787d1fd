// SPDX-License-Identifier: MIT
// Apps that another app has started, from a terminal or a file manager: each is an app of its own, in
// whatever place it stands.
#include "tests/unit/linux/band/BandFixture.h"
#include "tests/unit/linux/band/UserManagerFixture.h"

#include <gmock/gmock.h>
#include <sched.h>

namespace vantle {

namespace {

using namespace test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class NestedApps : public LinuxBandTest {};

// Nothing of it was touched, its session included.
void expectUntouched(Band& band, Pid pid) {
  EXPECT_EQ(band.band.isInBackgroundBand(pid), false) << pid;
  EXPECT_EQ(ProcKernel().ioPriority(pid), 0) << pid;
  EXPECT_EQ(autogroupLine(pid), "nice 0") << pid;
}

TEST_F(NestedApps, OneInASessionOfItsOwnIsNotSlowedWithTheAppThatStartedIt) {
  asBoth([] {
    const TestProcess terminal;
    const Pid player = terminal.ask('s');
    Band band;
    EXPECT_TRUE(band.allEnterTogether({terminal.pid()}, {player}));
    band.settled();
    EXPECT_EQ(autogroupLine(terminal.pid()), "nice 19");
    expectUntouched(band, player);
    EXPECT_THAT(band.leave({terminal.pid()}, {terminal.pid(), player}), IsEmpty());
    band.settled();
  });
}

TEST_F(NestedApps, OneInTheSameSessionThatIsNotSlowedKeepsItAtItsSpeed) {
  asBoth([] {
    const TestProcess terminal;
    const Pid shell = terminal.ask('f');
    const Pid player = terminal.ask('f');
    Band band;
    EXPECT_THAT(refusalsAmong(band.answersFor(terminal.pid(), {terminal.pid(), shell}, {player})),
                ElementsAre(BandRefusal::shared, BandRefusal::shared));
    EXPECT_THAT(refusalsAmong(band.answersFor(player, {player}, {terminal.pid()})),
                ElementsAre(BandRefusal::shared));
    band.settled();
    for (const Pid pid : {terminal.pid(), shell, player}) expectUntouched(band, pid);
  });
}

TEST_F(NestedApps, TwoInOneSessionAreSlowedTogether) {
  asBoth([] {
    const TestProcess terminal;
    const Pid shell = terminal.ask('f');
    const Pid player = terminal.ask('f');
    const std::set<Pid> everyApp{terminal.pid(), player};
    Band band;
    EXPECT_TRUE(band.allEnterTogether({terminal.pid(), player}));
    band.settled();
    EXPECT_EQ(autogroupLine(player), "nice 19");

    // The session has its speed back with the one that comes to the front, so the other has to be told.
    EXPECT_THAT(band.leave({player}, everyApp), UnorderedElementsAre(terminal.pid(), shell));
    band.settled();
    expectUntouched(band, player);
    EXPECT_EQ(autogroupLine(terminal.pid()), "nice 0");
    EXPECT_TRUE(band.band.carriesOwnMark(terminal.pid()));

    // What else there is: its class, for those who can give it back.
    const auto answers =
        band.answersFor(terminal.pid(), {terminal.pid(), shell}, {}, player, {terminal.pid()});
    for (const BandAnswer& answer : answers) {
      EXPECT_EQ(answer.entered(), runsAsRoot());
      if (answer.entered()) {
        EXPECT_EQ(answer.lever, BandLever::schedulingClass);
      }
    }
    band.settled();
    EXPECT_EQ(autogroupLine(player), "nice 0");
    if (runsAsRoot()) {
      EXPECT_EQ(ProcKernel().scheduling(shell)->policy, SCHED_IDLE);
    }
    EXPECT_THAT(band.leave({terminal.pid(), shell}, everyApp), IsEmpty());
    band.settled();
    for (const Pid pid : {terminal.pid(), shell, player}) expectUntouched(band, pid);
  });
}

TEST_F(NestedApps, TwoInOneSessionThatLeaveTogetherMissNobody) {
  asBoth([] {
    const TestProcess terminal;
    const Pid player = terminal.ask('f');
    Band band;
    EXPECT_TRUE(band.allEnterTogether({terminal.pid(), player}));
    band.settled();
    EXPECT_THAT(band.leave({terminal.pid(), player}, {terminal.pid(), player}), IsEmpty());
    band.settled();
    for (const Pid pid : {terminal.pid(), player}) expectUntouched(band, pid);
  });
}

TEST_F(NestedApps, OneThatFollowsIntoASlowedSessionEnters) {
  asBoth([] {
    const TestProcess terminal;
    Band band;
    EXPECT_TRUE(band.enter(terminal.pid(), {terminal.pid()}));
    band.settled();
    const Pid player = terminal.ask('f');
    const BandAnswer answer = band.answersFor(player, {player}, {}, 0, {terminal.pid()}).at(0);
    EXPECT_TRUE(answer.entered());
    EXPECT_EQ(answer.lever, BandLever::session);
    EXPECT_THAT(band.leave({terminal.pid()}, {terminal.pid(), player}), ElementsAre(player));
    EXPECT_THAT(band.leave({player}, {terminal.pid(), player}), IsEmpty());
    band.settled();
    for (const Pid pid : {terminal.pid(), player}) expectUntouched(band, pid);
  });
}

TEST_F(NestedApps, WhatIsRefusedKeepsItsMarkUntilItLeaves) {
  asBoth([] {
    const TestProcess terminal;
    Band band;
    EXPECT_TRUE(band.enter(terminal.pid(), {terminal.pid()}));
    band.settled();
    const Pid player = terminal.ask('f'); // an app by now, and nobody wants it slowed
    const std::set<Pid> everyApp{terminal.pid(), player};
    EXPECT_THAT(
        refusalsAmong(band.answersFor(terminal.pid(), {terminal.pid()}, everyApp, 0, {terminal.pid()})),
        ElementsAre(BandRefusal::shared));
    EXPECT_TRUE(band.band.carriesOwnMark(terminal.pid()));
    EXPECT_THAT(band.leave({player}, everyApp), ElementsAre(terminal.pid()));
    EXPECT_THAT(band.leave({terminal.pid()}, everyApp), IsEmpty());
    band.settled();
    for (const Pid pid : {terminal.pid(), player}) expectUntouched(band, pid);
  });
}

TEST_F(NestedApps, OneThatOutlivedItsStarterInTheSessionIsNotItsOrphan) {
  asBoth([] {
    const TestProcess fileManager;
    const Pid editor = fileManager.ask('o');
    Band band;
    EXPECT_THAT(band.look({fileManager.pid(), editor}).processesOf(fileManager.pid()),
                ElementsAre(fileManager.pid()));
    EXPECT_FALSE(band.enter(fileManager.pid(), {fileManager.pid()}, {editor}));
    band.settled();
    expectUntouched(band, editor);
    expectUntouched(band, fileManager.pid());
  });
}

TEST_F(NestedApps, EachIsSlowedAndPutBackByItself) {
  asBoth([] {
    const TestProcess terminal;
    const Pid editor = terminal.ask('s');
    const std::set<Pid> everyApp{terminal.pid(), editor};
    Band band;
    EXPECT_TRUE(band.allEnterTogether({terminal.pid(), editor}));
    band.settled();
    EXPECT_THAT(band.leave({terminal.pid()}, everyApp), IsEmpty());
    band.settled();
    EXPECT_EQ(autogroupLine(terminal.pid()), "nice 0");
    EXPECT_EQ(autogroupLine(editor), "nice 19");
    EXPECT_EQ(band.band.isInBackgroundBand(editor), true);
    EXPECT_THAT(band.leave({editor}, everyApp), IsEmpty());
    band.settled();
    EXPECT_EQ(autogroupLine(editor), "nice 0");
  });
}

TEST_F(NestedApps, OneThatTheBoostAppStartedIsSlowed) {
  asBoth([] {
    const TestProcess editor;
    const Pid browser = editor.ask('s');
    Band band;
    EXPECT_TRUE(band.enter(browser, {browser}, {}, editor.pid()));
    band.settled();
    EXPECT_EQ(autogroupLine(browser), "nice 19");
    expectUntouched(band, editor.pid());
    EXPECT_THAT(band.leave({browser}, {browser, editor.pid()}), IsEmpty());
    band.settled();
  });
}

TEST_F(NestedApps, OneThatWasBornSlowedCarriesTheMarkAndComesOutByItself) {
  asBoth([] {
    const TestProcess terminal;
    Band band;
    EXPECT_TRUE(band.enter(terminal.pid(), {terminal.pid()}));
    band.settled();
    const Pid editor = terminal.ask('s');
    EXPECT_TRUE(band.band.carriesOwnMark(editor)) << "a child inherits the band";
    EXPECT_THAT(band.leave({editor}, {terminal.pid(), editor}), IsEmpty());
    band.settled();
    expectUntouched(band, editor);
    EXPECT_FALSE(band.band.carriesOwnMark(editor));
    EXPECT_EQ(band.band.isInBackgroundBand(terminal.pid()), true);
    EXPECT_EQ(autogroupLine(terminal.pid()), "nice 19");
    EXPECT_THAT(band.leave({terminal.pid()}, {terminal.pid(), editor}), IsEmpty());
    band.settled();
  });
}

TEST_F(NestedApps, WhatSomebodyElseMadeIdleCarriesNoMark) {
  asBoth([] {
    const TestProcess app;
    ASSERT_TRUE(ProcKernel().setIoPriority(app.pid(), 3 << 13) == Change::done);
    const Band band;
    EXPECT_FALSE(band.band.carriesOwnMark(app.pid()));
    EXPECT_FALSE(band.band.carriesOwnMark(0));
  });
}

class NestedAppsInUnits : public UserManagerBand {};

TEST_F(NestedAppsInUnits, AUnitWithANestedAppInItIsNeverLowered) {
  const TestProcess terminal;
  const Pid shell = terminal.ask('f');
  const Pid player = terminal.ask('f');
  for (const Pid pid : {terminal.pid(), shell, player}) stand(pid, "app-terminal-1.scope");
  EXPECT_TRUE(enter(terminal.pid(), {terminal.pid(), shell}, {player}));
  EXPECT_THAT(m_groups.pathOf(player), HasSubstr("/app-terminal-1.scope"));
  EXPECT_EQ(idle("app-terminal-1.scope"), "0");
  EXPECT_EQ(m_band->isInBackgroundBand(player), false);
  EXPECT_EQ(m_groups.pathOf(shell), m_groups.pathOf(terminal.pid()));
  EXPECT_EQ(idleAround(shell), "1");
}

TEST_F(NestedAppsInUnits, AnAppOfALoginSessionIsAdoptedWithoutThem) {
  const TestProcess terminal;
  const Pid shell = terminal.ask('f');
  const Pid player = terminal.ask('s');
  for (const Pid pid : {terminal.pid(), shell, player}) {
    m_groups.place(pid, FakeControlGroups::loginSession());
  }
  EXPECT_TRUE(enter(terminal.pid(), {terminal.pid(), shell}, {player}));
  EXPECT_EQ(m_groups.pathOf(player), FakeControlGroups::loginSession());
  EXPECT_EQ(m_band->isInBackgroundBand(player), false);
  EXPECT_EQ(idleAround(shell), "1");
}

TEST_F(NestedAppsInUnits, TheBoostAppIsMovedWithoutThem) {
  const TestProcess launcher;
  const Pid player = launcher.ask('s');
  for (const Pid pid : {launcher.pid(), player}) m_groups.place(pid, FakeControlGroups::loginSession());
  makeRoomFor(launcher.pid(), {launcher.pid(), player});
  EXPECT_THAT(m_groups.pathOf(launcher.pid()), HasSubstr("/app.slice/app-vantle-"));
  EXPECT_EQ(m_groups.pathOf(player), FakeControlGroups::loginSession());
}

TEST_F(NestedAppsInUnits, EachOfTwoInOneUnitIsSlowedAndPutBackByItself) {
  const TestProcess terminal;
  const Pid editor = terminal.ask('f');
  for (const Pid pid : {terminal.pid(), editor}) stand(pid, "app-terminal-1.scope");
  EXPECT_TRUE(m_user->allEnterTogether({terminal.pid(), editor}, {}, m_front.pid()));
  EXPECT_NE(m_groups.pathOf(editor), m_groups.pathOf(terminal.pid()));
  EXPECT_THAT(m_user->leave({editor}, {terminal.pid(), editor}), IsEmpty());
  EXPECT_TRUE(settled());
  EXPECT_EQ(idleAround(editor), "0");
  EXPECT_EQ(idleAround(terminal.pid()), "1");
}

TEST_F(NestedAppsInUnits, OneThatWasBornInALoweredUnitIsMovedOutAndTheUnitStaysLowered) {
  const TestProcess terminal;
  const Pid shell = terminal.ask('f');
  for (const Pid pid : {terminal.pid(), shell}) stand(pid, "app-terminal-1.scope");
  EXPECT_TRUE(enter(terminal.pid(), {terminal.pid(), shell}));
  EXPECT_EQ(idle("app-terminal-1.scope"), "1");
  const Pid editor = terminal.ask('s');
  m_groups.place(editor, m_groups.pathOf(terminal.pid()));
  EXPECT_TRUE(m_band->carriesOwnMark(editor));
  EXPECT_THAT(m_user->leave({editor}, {terminal.pid(), editor}), IsEmpty());
  EXPECT_TRUE(settled());
  EXPECT_FALSE(m_band->carriesOwnMark(editor));
  EXPECT_THAT(m_groups.pathOf(editor), HasSubstr("/app.slice/app-vantle-"));
  EXPECT_EQ(idleAround(editor), "0");
  for (const Pid pid : {terminal.pid(), shell}) {
    EXPECT_THAT(m_groups.pathOf(pid), HasSubstr("/app-terminal-1.scope"));
    EXPECT_TRUE(m_band->carriesOwnMark(pid));
  }
  EXPECT_EQ(idle("app-terminal-1.scope"), "1");
  EXPECT_THAT(m_user->leave({terminal.pid(), shell}, {terminal.pid(), editor}), IsEmpty());
  EXPECT_TRUE(settled());
  EXPECT_EQ(idle("app-terminal-1.scope"), "0");
}

TEST_F(NestedAppsInUnits, AUnitHasItsWeightBackWhenNobodyCanBeMovedOut) {
  const TestProcess terminal; // its main process, which stays where it is watched
  stand(terminal.pid(), "terminal.service", 70);
  EXPECT_TRUE(enter(terminal.pid(), {terminal.pid()}));
  const Pid editor = terminal.ask('s');
  m_groups.place(editor, m_groups.pathOf(terminal.pid()));
  EXPECT_THAT(m_user->leave({terminal.pid()}, {terminal.pid(), editor}), ElementsAre(editor));
  EXPECT_TRUE(settled());
  EXPECT_THAT(m_groups.pathOf(terminal.pid()), HasSubstr("/terminal.service"));
  EXPECT_EQ(m_manager.weight("terminal.service"), 70U);

  // The other one is slowed in another way: in a unit of its own.
  EXPECT_TRUE(m_band->carriesOwnMark(editor));
  const BandAnswer answer = m_user->answersFor(editor, {editor}, {}, terminal.pid(), {editor}).at(0);
  EXPECT_TRUE(answer.entered());
  EXPECT_EQ(answer.lever, BandLever::unit);
  EXPECT_THAT(m_groups.pathOf(editor), HasSubstr("/app.slice/app-vantle-"));
  EXPECT_EQ(idleAround(editor), "1");
  EXPECT_EQ(idle("terminal.service"), "0");
}

TEST_F(NestedAppsInUnits, AManagerThatMovesNobodyHasTheUnitRaised) {
  const TestProcess terminal;
  stand(terminal.pid(), "app-terminal-1.scope");
  EXPECT_TRUE(enter(terminal.pid(), {terminal.pid()}));
  const Pid editor = terminal.ask('f');
  m_groups.place(editor, m_groups.pathOf(terminal.pid()));
  m_manager.setMood(ScriptedUserManager::Mood::refusing);
  EXPECT_THAT(m_user->leave({editor}, {terminal.pid(), editor}), ElementsAre(terminal.pid()));
  m_manager.setMood(ScriptedUserManager::Mood::obedient);
  EXPECT_TRUE(settled());
  EXPECT_EQ(idle("app-terminal-1.scope"), "0");
  EXPECT_FALSE(m_band->carriesOwnMark(editor));
  EXPECT_TRUE(m_band->carriesOwnMark(terminal.pid())) << "still meant to be slowed";
}

TEST_F(NestedAppsInUnits, OneThatStandsInAScopeOfItsOwnIsNotMovedIntoItAgain) {
  const TestProcess terminal;
  m_groups.place(terminal.pid(), FakeControlGroups::loginSession());
  EXPECT_TRUE(enter(terminal.pid(), {terminal.pid()}));
  const std::string scope = m_groups.pathOf(terminal.pid());
  EXPECT_THAT(scope, HasSubstr("/app.slice/app-vantle-"));
  const Pid editor = terminal.ask('f');
  m_groups.place(editor, scope);
  m_manager.takeOrders();
  EXPECT_THAT(m_user->leave({terminal.pid()}, {terminal.pid(), editor}), ElementsAre(editor));
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_groups.idle(scope), "0");
  for (const std::string& order : m_manager.takeOrders()) EXPECT_THAT(order, HasSubstr("SetUnitProperties"));
}

TEST_F(NestedAppsInUnits, APartOfAnAppThatLeavesAloneHidesNoneOfTheRest) {
  const TestProcess app;
  const Pid child = app.ask('f');
  for (const Pid pid : {app.pid(), child}) stand(pid, "app-a-1.scope");
  EXPECT_TRUE(enter(app.pid(), {app.pid(), child}));
  const std::vector<Pid> raised = m_user->leave({child}, {app.pid()});
  EXPECT_TRUE(settled());
  EXPECT_FALSE(m_band->carriesOwnMark(child));
  // Either it is as slow as before, or it is named.
  if (idleAround(app.pid()) == "1") {
    EXPECT_THAT(raised, IsEmpty());
  } else {
    EXPECT_THAT(raised, ElementsAre(app.pid()));
  }
  EXPECT_EQ(idleAround(child), "0");
}

TEST_F(NestedAppsInUnits, ALoweredUnitThatHoldsSomebodyNotSlowedIsRaised) {
  const TestProcess terminal;
  stand(terminal.pid(), "app-terminal-1.scope");
  EXPECT_TRUE(enter(terminal.pid(), {terminal.pid()}));
  const TestProcess guest; // came in from elsewhere meanwhile
  m_groups.place(guest.pid(), m_groups.pathOf(terminal.pid()));
  EXPECT_THAT(m_user->leave({terminal.pid()}, {terminal.pid(), guest.pid()}), IsEmpty());
  EXPECT_TRUE(settled());
  EXPECT_EQ(idle("app-terminal-1.scope"), "0");
  EXPECT_THAT(m_groups.pathOf(terminal.pid()), HasSubstr("/app-terminal-1.scope"));
}

TEST_F(NestedAppsInUnits, AServiceThatSharedItsUnitOnlyWithAnotherSlowedAppKeepsIt) {
  const TestProcess terminal; // its main process, which stays where it is watched
  const Pid editor = terminal.ask('f');
  for (const Pid pid : {terminal.pid(), editor}) stand(pid, "terminal.service");
  EXPECT_TRUE(m_user->allEnterTogether({terminal.pid(), editor}, {}, m_front.pid()));
  EXPECT_THAT(m_groups.pathOf(terminal.pid()), HasSubstr("/terminal.service"));
  EXPECT_EQ(idle("terminal.service"), "1");
  EXPECT_EQ(idleAround(editor), "1");
}

} // namespace

} // namespace vantle
