// SPDX-License-Identifier: MIT
#include "engine/Protection.h"
#include "tests/unit/engine/EngineFixture.h"

#include <gmock/gmock.h>

namespace vantle {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

class EngineCycle : public EngineTest {};

TEST_F(EngineCycle, ABoostAppInFrontSendsTheOthersToTheBand) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  EXPECT_EQ(engine->activeGame.get(), game);
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Mail"));
  EXPECT_TRUE(isSlow(mail));
  EXPECT_FALSE(isSlow(game));
}

TEST_F(EngineCycle, AnOrdinaryAppInFrontStartsNothing) {
  start();
  open("Mail");
  const SimulatedAppRef notes = openInFront(named("Notes"));
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  EXPECT_EQ(engine->lastFrontmost.get(), notes);
  EXPECT_THAT(engine->managed(), IsEmpty());
}

TEST_F(EngineCycle, WithAutomaticOffABoostAppInFrontChangesOnlyTheLastFrontmost) {
  start();
  engine->setAutomatic(false);
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  EXPECT_EQ(engine->lastFrontmost.get(), game);
  EXPECT_FALSE(isSlow(mail));
  engine->startBoost(game); // boost now
  EXPECT_TRUE(isSlow(mail));
}

TEST_F(EngineCycle, ChangingAutomaticStartsAndStopsNothingByItself) {
  start();
  engine->setAutomatic(false);
  const SimulatedAppRef game = playGame();
  engine->setAutomatic(true);
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  machine.activate(game);
  ASSERT_EQ(engine->activeGame.get(), game);
  engine->setAutomatic(false);
  EXPECT_EQ(engine->activeGame.get(), game);
}

TEST_F(EngineCycle, AutomaticIsKeptUnderItsStoredName) {
  start();
  EXPECT_TRUE(engine->automatic.get()) << "true when nothing is stored";
  engine->setAutomatic(false);
  EXPECT_EQ(machine.defaults.object("otomatik"), UserDefaults::Value(false));
  kill();
  EXPECT_FALSE(start().automatic.get());
  machine.defaults.set("otomatik", std::string("false"));
  kill();
  EXPECT_TRUE(start().automatic.get()) << "a text is no Boolean";
}

TEST_F(EngineCycle, AutomaticIsPublishedBeforeItIsStored) {
  start();
  std::optional<UserDefaults::Value> storedThen;
  const auto watching = engine->automatic.observe([&] { storedThen = machine.defaults.object("otomatik"); });
  engine->setAutomatic(false);
  EXPECT_EQ(storedThen, std::nullopt);
}

TEST_F(EngineCycle, ABoostAppThatWasTurnedOffStartsNoBoostUntilItWasRelaunched) {
  start();
  open("Mail");
  const SimulatedAppRef notes = open("Notes");
  const SimulatedAppRef game = playGame();
  engine->dismissedPID = game->processIdentifier(); // as the panel turns Boost off
  engine->stopBoost();
  machine.activate(notes);
  machine.activate(game);
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  machine.quit(game);
  EXPECT_EQ(engine->dismissedPID, std::nullopt);
  EXPECT_EQ(playGame(), engine->activeGame.get());
}

TEST_F(EngineCycle, AnotherBoostAppStillStartsABoostWhileOneIsDismissed) {
  start();
  const SimulatedAppRef game = playGame();
  engine->dismissedPID = game->processIdentifier();
  engine->stopBoost();
  const SimulatedAppRef other = openInFront(aGame("Chess"));
  EXPECT_EQ(engine->activeGame.get(), other);
  EXPECT_EQ(engine->dismissedPID, game->processIdentifier());
}

TEST_F(EngineCycle, TheDismissalOfAnAppOutlivesTheEndOfOthers) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  engine->dismissedPID = game->processIdentifier();
  engine->stopBoost();
  machine.quit(mail);
  EXPECT_EQ(engine->dismissedPID, game->processIdentifier());
}

TEST_F(EngineCycle, ThisProgramsOwnWindowsInFrontChangeNothing) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  machine.activate(mail);
  // The program's own process, as the workspace reports it once a window of it opens.
  const auto own =
      std::make_shared<SimulatedApp>(machine.workspace, machine.calls, machine.host.self, named("Vantle"));
  machine.calls.startTrace();
  machine.activate(own);
  EXPECT_THAT(machine.calls.takeTrace(), IsEmpty());
  EXPECT_EQ(engine->lastFrontmost.get(), mail);
  EXPECT_FALSE(isSlow(mail)) << "it is still the app that is excepted";
}

TEST_F(EngineCycle, AManagedAppInFrontIsRestoredAtOnceAndGoesBackWhenAnotherOneFollows) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef notes = open("Notes");
  playGame();
  machine.activate(mail);
  EXPECT_FALSE(isSlow(mail));
  EXPECT_TRUE(isSlow(notes));
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Notes"));
  machine.activate(notes);
  EXPECT_TRUE(isSlow(mail));
  EXPECT_FALSE(isSlow(notes));
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Mail"));
}

TEST_F(EngineCycle, TheExceptionGoesBackWhenTheBoostAppReturns) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  machine.activate(mail);
  machine.activate(mail); // twice: it is still in front
  EXPECT_FALSE(isSlow(mail));
  machine.activate(game);
  EXPECT_TRUE(isSlow(mail));
}

TEST_F(EngineCycle, AnExceptionThatEndedMeanwhileIsNotPutBack) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  machine.activate(mail);
  machine.delivery = EventDelivery::onDemand;
  machine.quit(mail);
  machine.calls.startTrace();
  engine->frontmostChanged(game); // comes before the news of the end
  EXPECT_EQ(count(machine.calls.takeTrace(), "audio.probe"), 0U) << "it is not even looked at";
  machine.workspace.deliverAll();
  EXPECT_THAT(engine->managed(), IsEmpty());
}

TEST_F(EngineCycle, AProtectedAppInFrontBecomesTheExceptionAndIsTurnedAwayWhenItLeaves) {
  start();
  settings->protectedApps.set({"org.example.Music"});
  const SimulatedAppRef music = open("Music");
  const SimulatedAppRef game = playGame();
  machine.activate(music);
  machine.activate(game);
  EXPECT_FALSE(isSlow(music));
}

TEST_F(EngineCycle, ASecondBoostAppInFrontIsNeitherTheBoostAppNorAnException) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  const SimulatedAppRef chess = openInFront(aGame("Chess"));
  EXPECT_EQ(engine->activeGame.get(), game);
  EXPECT_TRUE(isSlow(mail));
  settings->userGames.set({});
  chess->spec.category = std::nullopt; // no game any more
  machine.calls.startTrace();
  machine.activate(game);
  EXPECT_EQ(count(machine.calls.takeTrace(), "audio.probe"), 0U) << "there was no exception to put back";
}

TEST_F(EngineCycle, AnAppLaunchedInTheBackgroundIsSlowedAtOnceAndOneInFrontIsNot) {
  start();
  playGame();
  const SimulatedAppRef mail = open("Mail");
  EXPECT_TRUE(isSlow(mail));
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Mail"));
  const SimulatedAppRef notes = openInFront(named("Notes"));
  EXPECT_FALSE(isSlow(notes));
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Mail"));
}

TEST_F(EngineCycle, ALaunchWhileIdleChangesNothing) {
  start();
  machine.calls.startTrace();
  EXPECT_FALSE(isSlow(open("Mail")));
  EXPECT_THAT(machine.calls.takeTrace(), IsEmpty());
}

TEST_F(EngineCycle, ASecondBoostAppTakesOverWhenTheFirstQuitsAndNothingIsReexamined) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef store = open("Store");
  const SimulatedAppRef game = playGame();
  AppSpec chessSpec = aGame("Chess");
  chessSpec.parent = store->processIdentifier();
  const SimulatedAppRef chess = open(chessSpec);
  machine.quit(game);
  EXPECT_EQ(engine->activeGame.get(), chess);
  EXPECT_TRUE(isSlow(mail));
  EXPECT_TRUE(isSlow(store)) << "it was slowed before and is not looked at again";
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Mail", "Store"));
  machine.activate(store);
  machine.activate(chess);
  EXPECT_FALSE(isSlow(store)) << "from now on it is the launcher of the Boost app";
}

TEST_F(EngineCycle, TheFirstRunningBoostAppOfTheListTakesOver) {
  machine.delivery = EventDelivery::onDemand;
  start();
  const SimulatedAppRef game = playGame();
  const SimulatedAppRef ended = open(aGame("Ended"));
  const SimulatedAppRef first = open(aGame("First"));
  open(aGame("Second"));
  machine.workspace.deliverAll();
  machine.quit(game);
  machine.quit(ended);
  ASSERT_TRUE(machine.workspace.deliverNext());
  EXPECT_EQ(engine->activeGame.get(), first);
}

TEST_F(EngineCycle, WhenTheLastBoostAppQuitsEverythingComesBack) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef notes = open("Notes");
  const SimulatedAppRef game = playGame();
  machine.quit(game);
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  EXPECT_FALSE(isSlow(mail));
  EXPECT_FALSE(isSlow(notes));
  EXPECT_THAT(engine->managedNames.get(), IsEmpty());
  EXPECT_EQ(journalText(), "[]");
}

TEST_F(EngineCycle, TheEndOfAManagedAppTakesItOffTheList) {
  start();
  const SimulatedAppRef mail = open("Mail");
  open("Notes");
  playGame();
  machine.quit(mail);
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Notes"));
}

TEST_F(EngineCycle, TheEndOfTheExceptionEndsTheException) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  machine.activate(mail);
  const Pid pid = mail->processIdentifier();
  machine.quit(mail);
  later();
  AppSpec other = named("Other");
  other.pid = pid;
  EXPECT_TRUE(isSlow(open(other))) << "an app that got the pid is nobody's exception";
  EXPECT_EQ(engine->activeGame.get(), game);
}

TEST_F(EngineCycle, ABoostAlreadyInFrontAtTheStartBeginsAtOnce) {
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  start();
  EXPECT_EQ(engine->activeGame.get(), game);
  EXPECT_EQ(engine->lastFrontmost.get(), game);
  EXPECT_TRUE(isSlow(mail));
}

TEST_F(EngineCycle, AnOrdinaryAppInFrontAtTheStartIsTheLastFrontmost) {
  const SimulatedAppRef mail = openInFront(named("Mail"));
  start();
  EXPECT_EQ(engine->lastFrontmost.get(), mail);
  EXPECT_EQ(engine->activeGame.get(), nullptr);
}

TEST_F(EngineCycle, NamesAreSortedByLetterCaseAndKeepDuplicates) {
  start();
  for (const char* name : {"Zoom", "calendar", "Mail", "Zoom"}) open(AppSpec{.name = name});
  playGame();
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Mail", "Zoom", "Zoom", "calendar"));
}

TEST_F(EngineCycle, NamesAreSortedByScalarValuesOfTheirComposedForm) {
  start();
  // E with an acute accent, once composed and once as two scalars; a letter beyond 16 bits after one within.
  const std::string composed = "\xC3\x89"
                               "b";
  const std::string decomposed = "E\xCC\x81"
                                 "a";
  const std::string halfwidth = "\xEF\xBD\xA6";
  const std::string emoji = "\xF0\x9F\x8E\xAE";
  for (const std::string& name : {emoji, halfwidth, composed, decomposed, std::string("F")}) {
    open(AppSpec{.name = name});
  }
  playGame();
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("F", decomposed, composed, halfwidth, emoji));
}

TEST_F(EngineCycle, ObserversOfTheNamesHearOfEveryRefresh) {
  start();
  std::vector<Names> heard;
  const auto watching = engine->managedNames.observe([&] { heard.push_back(engine->managedNames.get()); });
  open("Mail");
  const SimulatedAppRef game = playGame();
  machine.quit(game);
  EXPECT_THAT(heard, ElementsAre(Names{"Mail"}, Names{}, Names{}))
      << "once for the Boost, once for its end, once more at the end of the handling";
}

TEST_F(EngineCycle, AnEndedEngineHearsNoEvents) {
  start();
  engine.reset();
  playGame();
  machine.pressure.raise(true);
}

class AlwaysBoost : public EngineTest {};

TEST_F(AlwaysBoost, WithoutALastFrontmostDoesNothing) {
  start();
  engine->alwaysBoost();
  EXPECT_THAT(settings->userGames.get(), IsEmpty());
}

TEST_F(AlwaysBoost, AddsTheAppAtTheEndOfTheListWritesItAndStartsABoost) {
  start();
  settings->userGames.set({"org.example.Chess"});
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef editor = openInFront(named("Editor"));
  machine.calls.startTrace();
  engine->alwaysBoost();
  EXPECT_THAT(settings->userGames.get(), ElementsAre("org.example.Chess", "org.example.Editor"));
  EXPECT_EQ(machine.defaults.object("userGames"),
            UserDefaults::Value(Names{"org.example.Chess", "org.example.Editor"}));
  EXPECT_EQ(count(machine.calls.takeTrace(), "defaults.write userGames"), 2U)
      << "by the setting and once more by the engine";
  EXPECT_EQ(engine->activeGame.get(), editor);
  EXPECT_TRUE(isSlow(mail));
}

TEST_F(AlwaysBoost, AnAppOnTheListAlreadyIsNotAddedTwiceButItsDismissalEnds) {
  start();
  settings->userGames.set({"org.example.Editor"});
  engine->setAutomatic(false);
  const SimulatedAppRef editor = openInFront(named("Editor"));
  engine->dismissedPID = editor->processIdentifier();
  engine->alwaysBoost();
  EXPECT_THAT(settings->userGames.get(), ElementsAre("org.example.Editor"));
  EXPECT_EQ(engine->dismissedPID, std::nullopt);
  EXPECT_EQ(engine->activeGame.get(), editor);
}

TEST_F(AlwaysBoost, AnAppWithoutABundleIdentifierIsAddedByItsName) {
  start();
  openInFront({.name = "Editor"});
  engine->alwaysBoost();
  EXPECT_THAT(settings->userGames.get(), ElementsAre("Editor"));
}

TEST_F(AlwaysBoost, AnAppWithNeitherIsNotAddedAndStartsNothing) {
  start();
  openInFront({});
  engine->dismissedPID = 4;
  engine->alwaysBoost();
  EXPECT_THAT(settings->userGames.get(), IsEmpty());
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  EXPECT_EQ(engine->dismissedPID, 4);
}

TEST_F(AlwaysBoost, ASystemAppCannotBecomeABoostApp) {
  start();
  openInFront({.name = "Finder", .bundleID = "com.apple.finder"});
  engine->alwaysBoost();
  EXPECT_THAT(settings->userGames.get(), IsEmpty());
  EXPECT_EQ(engine->activeGame.get(), nullptr);
}

TEST_F(AlwaysBoost, DuringABoostTheAppIsOnlyAddedAndFreedByTheRecheck) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  machine.activate(mail);
  machine.activate(game);
  ASSERT_TRUE(isSlow(mail));
  engine->frontmostChanged(mail);
  engine->alwaysBoost();
  EXPECT_EQ(engine->activeGame.get(), game);
  EXPECT_THAT(settings->userGames.get(), ElementsAre("org.example.Mail"));
}

class RecheckManaged : public EngineTest {};

TEST_F(RecheckManaged, ReleasesAnAppThatIsProtectedNow) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef notes = open("Notes");
  playGame();
  settings->protectedApps.set({"org.example.Mail"});
  engine->recheckManaged();
  EXPECT_FALSE(isSlow(mail));
  EXPECT_TRUE(isSlow(notes));
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Notes"));
  EXPECT_THAT(journalledPids(), ElementsAre(notes->processIdentifier()));
}

TEST_F(RecheckManaged, ReleasesAnAppThatIsABoostAppNow) {
  start();
  const SimulatedAppRef mail = open("Mail");
  playGame();
  settings->userGames.set({"org.example.Mail"});
  engine->recheckManaged();
  EXPECT_FALSE(isSlow(mail));
  EXPECT_THAT(engine->managed(), IsEmpty());
}

TEST_F(RecheckManaged, FollowsWhenAnAppIsNeverToBeSlowedDown) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef nameless = machine.launch({.name = "Script"}, Opening::inBackground);
  playGame();
  ASSERT_TRUE(isSlow(mail) && isSlow(nameless));
  engine->neverSlowDown(*mail);
  EXPECT_FALSE(isSlow(mail));
  EXPECT_THAT(settings->protectedApps.get(), Contains("org.example.Mail"));
  const std::vector<std::string> kept = settings->protectedApps.get();
  engine->neverSlowDown(*mail);
  engine->neverSlowDown(*nameless);
  EXPECT_EQ(settings->protectedApps.get(), kept);
  EXPECT_TRUE(isSlow(nameless));
}

TEST_F(RecheckManaged, IsSeenInWhoIsLeftAloneAndWhy) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef notes = open("Notes");
  const SimulatedAppRef radio = open("Radio");
  machine.audio.heard.insert(radio->processIdentifier());
  EXPECT_THAT(engine->sparedApps(), IsEmpty());
  playGame();
  EXPECT_THAT(engine->sparedApps(), ElementsAre(SparedApp{"Radio", Verdict::heard}));
  engine->neverSlowDown(*notes);
  machine.activate(mail);
  EXPECT_THAT(engine->sparedApps(), ElementsAre(SparedApp{"Notes", Verdict::protectedByPerson},
                                                SparedApp{"Radio", Verdict::heard}));
  settings->protectedApps.set({"org.example.Radio"});
  EXPECT_THAT(engine->sparedApps(), ElementsAre(SparedApp{"Notes", Verdict::protectedByPerson},
                                                SparedApp{"Radio", Verdict::protectedByPerson}));
  engine->stopBoost();
  EXPECT_THAT(engine->sparedApps(), IsEmpty());
}

TEST_F(RecheckManaged, KeepsAnAppThatTheWorkspaceNoLongerKnows) {
  start();
  const SimulatedAppRef mail = open("Mail");
  playGame();
  settings->userGames.set({"org.example.Mail"});
  machine.calls.refuse(Operation::findApp);
  engine->recheckManaged();
  EXPECT_TRUE(isManaged(mail));
}

TEST_F(RecheckManaged, SlowsNothingNew) {
  start();
  settings->protectedApps.set({"org.example.Mail"});
  const SimulatedAppRef mail = open("Mail");
  playGame();
  settings->protectedApps.set({});
  engine->recheckManaged();
  EXPECT_FALSE(isSlow(mail));
  EXPECT_EQ(engine->runningApplication(mail->processIdentifier()), mail);
}

class Recovery : public EngineTest {};

TEST_F(Recovery, AfterAKillEveryJournalledProcessIsPutBackBeforeAnybodyIsWatched) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const Pid helper = childOf(mail);
  const SimulatedAppRef game = playGame();
  ASSERT_THAT(journalledPids(), ElementsAre(mail->processIdentifier(), helper));
  kill();
  ASSERT_TRUE(isSlow(mail));
  machine.activate(nullptr);
  machine.calls.startTrace();
  start();
  EXPECT_FALSE(isSlow(mail));
  EXPECT_FALSE(isSlow(helper));
  EXPECT_EQ(journalText(), "[]");
  const std::vector<std::string> trace = machine.calls.takeTrace();
  const auto firstObserver = std::find_if(trace.begin(), trace.end(), [](const std::string& line) {
    return line.starts_with("workspace.observe");
  });
  ASSERT_NE(firstObserver, trace.end());
  EXPECT_EQ(count({firstObserver, trace.end()}, "band.leave"), 0U);
  EXPECT_EQ(count({trace.begin(), firstObserver}, "band.leave"), 2U);
}

TEST_F(Recovery, TheLeftoversAreRestoredAndThenANewBoostStarts) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  kill();
  later();
  start();
  EXPECT_EQ(engine->activeGame.get(), game);
  EXPECT_THAT(journalledPids(), ElementsAre(mail->processIdentifier()));
  EXPECT_GT(engine->managed().at(mail->processIdentifier()).changedAtMicros,
            startMicros(engine->managed().at(mail->processIdentifier()).root));
}

TEST_F(Recovery, ALeftoverWhosePidWasReusedIsNotTouched) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  const Pid pid = mail->processIdentifier();
  kill();
  machine.exit(pid);
  machine.quit(game);
  later();
  machine.processes.spawn({.pid = pid});
  machine.band.putInByOthers(pid);
  start();
  EXPECT_TRUE(isSlow(pid));
  EXPECT_EQ(journalText(), "[]");
}

TEST_F(Recovery, StoppingWhatNeverStartedIsHarmless) {
  start();
  engine->stopBoost();
  EXPECT_EQ(journalText(), "[]");
  EXPECT_THAT(engine->managedNames.get(), IsEmpty());
}

TEST_F(Recovery, StoppingLeavesTheDismissalAlone) {
  start();
  playGame();
  engine->dismissedPID = 4711;
  engine->stopBoost();
  EXPECT_EQ(engine->dismissedPID, 4711);
  EXPECT_EQ(machine.band.preparedFor(), std::nullopt);
}

TEST_F(Recovery, WhatWasBornSlowIsFoundByAPlatformThatKnowsItsTraces) {
  machine.band.knowsItsOwnTraces = true;
  start();
  const SimulatedAppRef mail = open("Mail");
  playGame();
  later();
  const Pid born = childOf(mail);
  machine.processes.exit(mail->processIdentifier());
  kill();
  machine.activate(nullptr);
  start();
  EXPECT_FALSE(isSlow(born));
}

// A terminal that is slowed starts an app: on some platforms that one is born slowed, and in no list.
class BornSlowed : public Recovery {
 protected:
  BornSlowed() { machine.band.knowsItsOwnTraces = true; }
};

TEST_F(BornSlowed, AnAppComesOutWhenItIsInFrontAndGoesBackWhenItLeaves) {
  start();
  const SimulatedAppRef terminal = open("Terminal");
  const SimulatedAppRef game = playGame();
  later();
  const SimulatedAppRef editor =
      machine.launch({.name = "Editor", .parent = terminal->processIdentifier()}, Opening::inFront);
  EXPECT_FALSE(isSlow(editor->processIdentifier()));
  EXPECT_TRUE(isSlow(terminal->processIdentifier()));
  machine.activate(game);
  EXPECT_TRUE(isSlow(editor->processIdentifier()));
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Editor", "Terminal"));
}

TEST_F(BornSlowed, AProtectedAppComesOutAtOnce) {
  start();
  const SimulatedAppRef terminal = open("Terminal");
  playGame();
  later();
  const SimulatedAppRef music = machine.launch(
      {.name = "Music", .bundleID = "com.apple.Music", .parent = terminal->processIdentifier()},
      Opening::inBackground);
  EXPECT_FALSE(isSlow(music->processIdentifier()));
  const SimulatedAppRef mail =
      machine.launch({.name = "Mail", .parent = terminal->processIdentifier()}, Opening::inBackground);
  EXPECT_TRUE(isSlow(mail->processIdentifier())) << "and nothing else does";
}

} // namespace
} // namespace vantle
