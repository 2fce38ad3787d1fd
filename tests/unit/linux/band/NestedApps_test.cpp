// SPDX-License-Identifier: MIT
// Apps that another app has started, from a terminal or a file manager: each is an app of its own, in
// whatever place it stands.
#include "platform/linux/band/AppOwners.h"
#include "platform/linux/kernel/ProcKernel.h"
#include "tests/unit/linux/band/BandFixture.h"
#include "tests/unit/linux/band/UserManagerFixture.h"

#include <array>
#include <gmock/gmock.h>

namespace vantle {

namespace {

using namespace test;
using testing::HasSubstr;

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
    EXPECT_TRUE(band.enter(terminal.pid(), {terminal.pid()}, {terminal.pid(), player}));
    band.settled();
    EXPECT_EQ(autogroupLine(terminal.pid()), "nice 19");
    expectUntouched(band, player);
    EXPECT_TRUE(band.band.leaveBackgroundBand(terminal.pid()));
    band.settled();
  });
}

TEST_F(NestedApps, OneInTheSameSessionKeepsThatSessionAtItsSpeed) {
  asBoth([] {
    const TestProcess terminal;
    const Pid shell = terminal.ask('f');
    const Pid player = terminal.ask('f');
    const std::set<Pid> everyApp{terminal.pid(), player};
    Band band;
    EXPECT_FALSE(band.enter(terminal.pid(), {terminal.pid(), shell}, everyApp));
    band.settled();
    for (const Pid pid : {terminal.pid(), shell, player}) expectUntouched(band, pid);
    // Nor is it lowered for both of them: the one that comes to the front first would take the other with it.
    const std::array<BandGroup, 2> groups{
        BandGroup{terminal.pid(), {terminal.pid(), shell}, {terminal.pid()}},
        BandGroup{player, {player}, {player}}};
    for (const auto& entered : band.band.enterBackgroundBand(groups, everyApp)) {
      EXPECT_EQ(entered, std::vector<bool>{false});
    }
  });
}

TEST_F(NestedApps, OneThatOutlivedItsStarterInTheSessionIsNotItsOrphan) {
  asBoth([] {
    const TestProcess fileManager;
    const Pid editor = fileManager.ask('o');
    Band band;
    EXPECT_FALSE(band.enter(fileManager.pid(), {fileManager.pid()}, {fileManager.pid(), editor}));
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
    const std::array<BandGroup, 2> groups{BandGroup{terminal.pid(), {terminal.pid()}, {terminal.pid()}},
                                          BandGroup{editor, {editor}, {editor}}};
    Band band;
    for (const auto& entered : band.band.enterBackgroundBand(groups, everyApp)) {
      EXPECT_EQ(entered, std::vector<bool>{true});
    }
    band.settled();
    EXPECT_TRUE(band.band.leaveBackgroundBand(terminal.pid()));
    band.settled();
    EXPECT_EQ(autogroupLine(terminal.pid()), "nice 0");
    EXPECT_EQ(autogroupLine(editor), "nice 19");
    EXPECT_EQ(band.band.isInBackgroundBand(editor), true);
    EXPECT_TRUE(band.band.leaveBackgroundBand(editor));
    band.settled();
    EXPECT_EQ(autogroupLine(editor), "nice 0");
  });
}

TEST_F(NestedApps, OneThatTheBoostAppStartedIsSlowed) {
  asBoth([] {
    const TestProcess editor;
    const Pid browser = editor.ask('s');
    const std::set<Pid> everyApp{editor.pid(), browser};
    const std::array<Pid, 1> tree{editor.pid()};
    Band band;
    band.band.prepareBoostApp(editor.pid(), tree, everyApp);
    EXPECT_TRUE(band.enter(browser, {browser}, everyApp));
    band.settled();
    EXPECT_EQ(autogroupLine(browser), "nice 19");
    expectUntouched(band, editor.pid());
    EXPECT_TRUE(band.band.leaveBackgroundBand(browser));
    band.settled();
  });
}

TEST_F(NestedApps, OneThatWasBornSlowedComesOutByItself) {
  asBoth([] {
    const TestProcess terminal;
    Band band;
    EXPECT_TRUE(band.enter(terminal.pid(), {terminal.pid()}, {terminal.pid()}));
    band.settled();
    const Pid editor = terminal.ask('s');
    const std::set<Pid> everyApp{terminal.pid(), editor};
    EXPECT_EQ(band.band.isInBackgroundBand(editor), true) << "a child inherits the band";
    band.band.releaseInherited(editor, everyApp);
    band.settled();
    expectUntouched(band, editor);
    EXPECT_EQ(band.band.isInBackgroundBand(terminal.pid()), true);
    EXPECT_EQ(autogroupLine(terminal.pid()), "nice 19");
    EXPECT_TRUE(band.band.leaveBackgroundBand(terminal.pid()));
    band.settled();
  });
}

TEST_F(NestedApps, OneThatComesOutLeavesTheAppsThatItStartedWhereTheyAre) {
  asBoth([] {
    const TestProcess terminal;
    const Pid editor = terminal.ask('s');
    Band band;
    EXPECT_TRUE(band.enter(editor, {editor}, {terminal.pid(), editor}));
    band.settled();
    band.band.releaseInherited(terminal.pid(), {terminal.pid(), editor});
    EXPECT_EQ(band.band.isInBackgroundBand(editor), true);
    EXPECT_TRUE(band.band.leaveBackgroundBand(editor));
    band.settled();
  });
}

class NestedAppsInUnits : public UserManagerBand {};

TEST_F(NestedAppsInUnits, AUnitWithANestedAppInItIsNeverLowered) {
  const TestProcess terminal;
  const Pid shell = terminal.ask('f');
  const Pid player = terminal.ask('f');
  for (const Pid pid : {terminal.pid(), shell, player}) stand(pid, "app-terminal-1.scope");
  EXPECT_TRUE(enter(terminal.pid(), {terminal.pid(), shell}, {terminal.pid(), player}));
  EXPECT_THAT(m_groups.pathOf(player), HasSubstr("/app-terminal-1.scope"));
  EXPECT_EQ(idle("app-terminal-1.scope"), "0");
  EXPECT_EQ(m_band->isInBackgroundBand(player), false);
  EXPECT_EQ(m_groups.pathOf(shell), m_groups.pathOf(terminal.pid()));
  EXPECT_EQ(m_groups.idle(m_groups.pathOf(shell)), "1");
}

TEST_F(NestedAppsInUnits, AnAppOfALoginSessionIsAdoptedWithoutThem) {
  const TestProcess terminal;
  const Pid shell = terminal.ask('f');
  const Pid player = terminal.ask('s');
  for (const Pid pid : {terminal.pid(), shell, player}) {
    m_groups.place(pid, FakeControlGroups::loginSession());
  }
  EXPECT_TRUE(enter(terminal.pid(), {terminal.pid(), shell}, {terminal.pid(), player}));
  EXPECT_EQ(m_groups.pathOf(player), FakeControlGroups::loginSession());
  EXPECT_EQ(m_band->isInBackgroundBand(player), false);
  EXPECT_EQ(m_groups.idle(m_groups.pathOf(shell)), "1");
}

TEST_F(NestedAppsInUnits, TheBoostAppIsMovedWithoutThem) {
  const TestProcess launcher;
  const Pid player = launcher.ask('s');
  for (const Pid pid : {launcher.pid(), player}) m_groups.place(pid, FakeControlGroups::loginSession());
  const std::array<Pid, 1> tree{launcher.pid()};
  m_band->prepareBoostApp(launcher.pid(), tree, {launcher.pid(), player});
  EXPECT_THAT(m_groups.pathOf(launcher.pid()), HasSubstr("/app.slice/app-vantle-"));
  EXPECT_EQ(m_groups.pathOf(player), FakeControlGroups::loginSession());
}

TEST_F(NestedAppsInUnits, EachOfTwoInOneUnitIsSlowedAndPutBackByItself) {
  const TestProcess terminal;
  const Pid editor = terminal.ask('f');
  for (const Pid pid : {terminal.pid(), editor}) stand(pid, "app-terminal-1.scope");
  const std::array<BandGroup, 2> groups{BandGroup{terminal.pid(), {terminal.pid()}, {terminal.pid()}},
                                        BandGroup{editor, {editor}, {editor}}};
  for (const auto& entered : m_band->enterBackgroundBand(groups, {terminal.pid(), editor})) {
    EXPECT_EQ(entered, std::vector<bool>{true});
  }
  EXPECT_NE(m_groups.pathOf(editor), m_groups.pathOf(terminal.pid()));
  EXPECT_TRUE(m_band->leaveBackgroundBand(editor));
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_groups.idle(m_groups.pathOf(editor)), "0");
  EXPECT_EQ(m_groups.idle(m_groups.pathOf(terminal.pid())), "1");
}

TEST_F(NestedAppsInUnits, OneThatWasBornInALoweredUnitComesOut) {
  const TestProcess terminal;
  stand(terminal.pid(), "app-terminal-1.scope");
  EXPECT_TRUE(enter(terminal.pid(), {terminal.pid()}, {terminal.pid()}));
  EXPECT_EQ(idle("app-terminal-1.scope"), "1");
  const Pid editor = terminal.ask('s');
  stand(editor, "app-terminal-1.scope");
  m_band->releaseInherited(editor, {terminal.pid(), editor});
  EXPECT_TRUE(settled());
  EXPECT_EQ(m_band->isInBackgroundBand(editor), false);
  EXPECT_EQ(m_groups.idle(m_groups.pathOf(editor)), "0");
}

TEST_F(NestedAppsInUnits, AServiceThatSharedItsUnitOnlyWithAnotherSlowedAppKeepsIt) {
  const TestProcess terminal; // its main process, which stays where it is watched
  const Pid editor = terminal.ask('f');
  for (const Pid pid : {terminal.pid(), editor}) stand(pid, "terminal.service");
  const std::array<BandGroup, 2> groups{BandGroup{terminal.pid(), {terminal.pid()}, {terminal.pid()}},
                                        BandGroup{editor, {editor}, {editor}}};
  for (const auto& entered : m_band->enterBackgroundBand(groups, {terminal.pid(), editor})) {
    EXPECT_EQ(entered, std::vector<bool>{true});
  }
  EXPECT_THAT(m_groups.pathOf(terminal.pid()), HasSubstr("/terminal.service"));
  EXPECT_EQ(idle("terminal.service"), "1");
  EXPECT_EQ(m_groups.idle(m_groups.pathOf(editor)), "1");
}

} // namespace

} // namespace vantle
