// SPDX-License-Identifier: MIT
#include "engine/DeclaredGames.h"

#include "tests/unit/engine/EngineFixture.h"

#include <gmock/gmock.h>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DeclaredGamesTest : public EngineTest {
 protected:
  void startWanting(bool isWanted = true) {
    settings.emplace(machine.defaults);
    settings->detectGameMode.set(isWanted);
    start();
  }
  void declare(Pid pid) {
    machine.games.registered.push_back(identityOf(pid));
    machine.games.tell();
  }
  void declare(const SimulatedAppRef& app) { declare(app->processIdentifier()); }
  void withdraw(Pid pid) {
    std::erase_if(machine.games.registered, [pid](const ProcessIdentity& game) { return game.pid == pid; });
    machine.games.tell();
  }
  void withdraw(const SimulatedAppRef& app) { withdraw(app->processIdentifier()); }
  SimulatedAppRef openBelow(Pid parent, const char* name, Opening opening) {
    AppSpec spec = named(name);
    spec.parent = parent;
    return machine.launch(spec, opening);
  }
  bool isGame(const SimulatedAppRef& app) const { return engine->profile.isTrigger(*app); }
};

TEST_F(DeclaredGamesTest, NobodyIsFollowedUnlessThePersonWantsIt) {
  start();
  EXPECT_FALSE(machine.games.isFollowed());
  settings->detectGameMode.set(true);
  EXPECT_TRUE(machine.games.isFollowed());
  const SimulatedAppRef tool = open("Tool");
  declare(tool);
  EXPECT_TRUE(isGame(tool));
  settings->detectGameMode.set(false);
  EXPECT_FALSE(machine.games.isFollowed());
  EXPECT_FALSE(isGame(tool));
}

TEST_F(DeclaredGamesTest, ASystemWithoutRegistrationsHasNone) {
  machine.calls.refuse(Operation::watchGames);
  startWanting();
  EXPECT_FALSE(isGame(open("Tool")));
}

TEST_F(DeclaredGamesTest, AGameThatRegistersWhileItIsInFrontHasItsBoost) {
  startWanting();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef tool = openInFront(named("Tool"));
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  declare(tool);
  EXPECT_EQ(engine->activeGame.get(), tool);
  EXPECT_TRUE(isSlow(mail));
  EXPECT_EQ(engine->verdicts().at(tool->processIdentifier()).verdict, Verdict::boostApp);
}

TEST_F(DeclaredGamesTest, AGameThatRegistersBeforeItsWindowHasItsBoostWithIt) {
  startWanting();
  open("Mail");
  const Pid game = machine.processes.spawn({});
  declare(game);
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  const SimulatedAppRef shown = machine.showWindow(game, named("Tool"), Opening::inFront);
  EXPECT_EQ(engine->activeGame.get(), shown);
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Mail"));
}

TEST_F(DeclaredGamesTest, OneInTheBackgroundOfABoostIsPutBack) {
  startWanting();
  const SimulatedAppRef tool = open("Tool");
  playGame();
  ASSERT_TRUE(isSlow(tool));
  declare(tool);
  EXPECT_FALSE(isSlow(tool));
  EXPECT_THAT(engine->managedNames.get(), IsEmpty());
}

TEST_F(DeclaredGamesTest, ASwitchThatIsTurnedOnMidwayCountsForTheAppInFront) {
  start();
  const SimulatedAppRef tool = openInFront(named("Tool"));
  machine.games.registered.push_back(identityOf(tool->processIdentifier()));
  settings->detectGameMode.set(true);
  machine.games.tell();
  EXPECT_EQ(engine->activeGame.get(), tool);
}

TEST_F(DeclaredGamesTest, NeitherAutomaticOffNorADismissalIsOverruled) {
  startWanting();
  engine->setAutomatic(false);
  const SimulatedAppRef tool = openInFront(named("Tool"));
  declare(tool);
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  engine->setAutomatic(true);
  machine.activate(tool);
  ASSERT_EQ(engine->activeGame.get(), tool);
  engine->turnOffBoost();
  declare(childOf(tool));
  EXPECT_EQ(engine->activeGame.get(), nullptr);
}

TEST_F(DeclaredGamesTest, TheWrapperThatStartedAnAppStandsForIt) {
  startWanting();
  const SimulatedAppRef terminal = openInFront(named("Terminal"));
  const Pid wrapper = childOf(terminal);
  declare(wrapper);
  EXPECT_EQ(engine->activeGame.get(), nullptr) << "the terminal has only started it";
  const SimulatedAppRef tool = openBelow(childOf(wrapper), "Tool", Opening::inFront);
  EXPECT_EQ(engine->activeGame.get(), tool);
  EXPECT_FALSE(isGame(terminal));
}

TEST_F(DeclaredGamesTest, AnAppThatARegisteredAppStartedIsOneOfItsOwn) {
  startWanting();
  const SimulatedAppRef tool = open("Tool");
  declare(tool);
  const SimulatedAppRef browser = openBelow(childOf(tool), "Browser", Opening::inBackground);
  EXPECT_TRUE(isGame(tool));
  EXPECT_FALSE(isGame(browser));
}

TEST_F(DeclaredGamesTest, AStoreIsNoGameForWhatItStarts) {
  startWanting();
  const SimulatedAppRef store = openInFront(named("Store"));
  const Pid helper = childOf(store);
  const Pid game = childOf(helper);
  declare(helper);
  declare(game);
  EXPECT_FALSE(isGame(store));
  machine.activate(store);
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  const SimulatedAppRef shown = machine.showWindow(game, named("Tool"), Opening::inFront);
  EXPECT_EQ(engine->activeGame.get(), shown);
  EXPECT_FALSE(isGame(store));
}

TEST_F(DeclaredGamesTest, WhatShowsAWindowForAGameThatHasNoneIsTheGame) {
  startWanting();
  const SimulatedAppRef store = openInFront(named("Store"));
  const Pid compositor = childOf(store);
  declare(childOf(compositor));
  const SimulatedAppRef shown = machine.showWindow(compositor, named("Screen"), Opening::inFront);
  EXPECT_EQ(engine->activeGame.get(), shown);
  EXPECT_FALSE(isGame(store));
}

TEST_F(DeclaredGamesTest, NobodyIsAGameForStandingBelowTheDesktop) {
  startWanting();
  const Pid desktop = machine.processes.spawn({.role = ProcessRole::system});
  declare(desktop);
  const SimulatedAppRef tool = openBelow(desktop, "Tool", Opening::inFront);
  EXPECT_FALSE(isGame(tool));
  EXPECT_EQ(engine->activeGame.get(), nullptr);
}

TEST_F(DeclaredGamesTest, AnotherProcessOfTheSameNumberIsNoGame) {
  startWanting();
  const SimulatedAppRef tool = open("Tool");
  const Pid pid = tool->processIdentifier();
  declare(tool);
  machine.quit(tool);
  later();
  AppSpec spec = named("Mail");
  spec.pid = pid;
  EXPECT_FALSE(isGame(open(spec)));
}

TEST_F(DeclaredGamesTest, ItsBoostEndsWhenTheGameWithdraws) {
  startWanting();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef tool = openInFront(named("Tool"));
  declare(tool);
  ASSERT_TRUE(isSlow(mail));
  withdraw(tool);
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  EXPECT_FALSE(isSlow(mail));
  declare(tool);
  EXPECT_EQ(engine->activeGame.get(), tool) << "the next game in it";
}

TEST_F(DeclaredGamesTest, TheBoostGoesOnForAnotherGameWhenOneWithdraws) {
  startWanting();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef asteroids = open(aGame());
  const SimulatedAppRef tool = openInFront(named("Tool"));
  declare(tool);
  ASSERT_EQ(engine->activeGame.get(), tool);
  withdraw(tool);
  EXPECT_EQ(engine->activeGame.get(), asteroids);
  EXPECT_TRUE(isSlow(mail));
  EXPECT_FALSE(isSlow(tool)) << "it is in front";
  machine.activate(asteroids);
  EXPECT_TRUE(isSlow(tool));
}

TEST_F(DeclaredGamesTest, OneThatWithdrawsInTheBackgroundMakesRoomAgain) {
  startWanting();
  const SimulatedAppRef tool = open("Tool");
  declare(tool);
  playGame();
  EXPECT_FALSE(isSlow(tool));
  withdraw(tool);
  EXPECT_TRUE(isSlow(tool));
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Tool"));
}

TEST_F(DeclaredGamesTest, ABoostThatIsThereForAnotherReasonGoesOnWithoutTheRegistration) {
  startWanting();
  const SimulatedAppRef game = playGame();
  declare(game);
  withdraw(game);
  EXPECT_EQ(engine->activeGame.get(), game) << "a game by another rule";
  machine.quit(game);

  const SimulatedAppRef tool = open("Tool");
  declare(tool);
  engine->boostNow(tool);
  withdraw(tool);
  EXPECT_EQ(engine->activeGame.get(), tool) << "asked for by the person";
}

TEST_F(DeclaredGamesTest, TurningTheSwitchOffLeavesABoostThatRuns) {
  startWanting();
  const SimulatedAppRef tool = openInFront(named("Tool"));
  declare(tool);
  settings->detectGameMode.set(false);
  EXPECT_EQ(engine->activeGame.get(), tool);
  machine.quit(tool);
  EXPECT_EQ(engine->activeGame.get(), nullptr);
}

} // namespace
} // namespace vantle
