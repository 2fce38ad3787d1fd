// SPDX-License-Identifier: MIT
#include "tests/unit/engine/EngineFixture.h"

#include <gmock/gmock.h>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class Backgrounding : public EngineTest {
 protected:
  const ManagedApp& entryOf(const SimulatedAppRef& app) const {
    return engine->managed().at(app->processIdentifier());
  }
};

TEST_F(Backgrounding, AManagedAppIsRecordedWithEverythingThatRestoringItNeeds) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const Pid mailPid = mail->processIdentifier();
  const Pid helper = childOf(mail);
  const Pid second = childOf(mail);
  machine.clock.advance(std::chrono::microseconds(7));
  playGame();
  const ManagedApp& entry = entryOf(mail);
  EXPECT_EQ(entry.name, "Mail");
  EXPECT_EQ(entry.bundleID, "org.example.Mail");
  EXPECT_EQ(entry.root, identityOf(mailPid));
  EXPECT_THAT(entry.members, ElementsAre(identityOf(mailPid), identityOf(second), identityOf(helper)));
  EXPECT_EQ(entry.changedAtMicros, 1'800'000'000'000'007U);
}

TEST_F(Backgrounding, AnAppWithoutANameIsListedByItsPid) {
  start();
  open(AppSpec{.pid = 812});
  playGame();
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("pid 812"));
  EXPECT_EQ(engine->managed().at(812).bundleID, std::nullopt);
}

TEST_F(Backgrounding, AnAppThatIsWhollyInTheBandAlreadyIsNeitherManagedNorRecorded) {
  start();
  const SimulatedAppRef indexer = open("Indexer");
  const Pid helper = childOf(indexer);
  machine.band.putInByOthers(indexer->processIdentifier());
  machine.band.putInByOthers(helper);
  machine.calls.startTrace();
  const SimulatedAppRef game = playGame();
  EXPECT_FALSE(isManaged(indexer));
  EXPECT_EQ(count(machine.calls.takeTrace(), "files.write"), 0U);
  machine.quit(game);
  EXPECT_TRUE(isSlow(indexer)) << "whoever put it there takes it out again";
  EXPECT_TRUE(isSlow(helper));
}

TEST_F(Backgrounding, AProcessThatWasInTheBandBeforeStaysThereWhenItsAppIsRestored) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const Pid indexer = childOf(mail);
  machine.band.putInByOthers(indexer);
  later();
  const SimulatedAppRef game = playGame();
  EXPECT_THAT(entryOf(mail).members, ElementsAre(identityOf(mail->processIdentifier())));
  machine.quit(game);
  EXPECT_FALSE(isSlow(mail));
  EXPECT_TRUE(isSlow(indexer));
}

TEST_F(Backgrounding, AProcessWhoseBandCannotBeReadIsACandidateAllTheSame) {
  start();
  const SimulatedAppRef mail = open("Mail");
  machine.calls.refuse(Operation::isInBand, mail->processIdentifier());
  playGame();
  EXPECT_TRUE(isManaged(mail));
  EXPECT_TRUE(isSlow(mail));
}

TEST_F(Backgrounding, AnAppWhoseMainProcessCannotBeReadIsLeftAlone) {
  start();
  const SimulatedAppRef mail = open("Mail");
  childOf(mail);
  machine.calls.refuse(Operation::readRecord, mail->processIdentifier());
  machine.calls.startTrace();
  playGame();
  EXPECT_FALSE(isManaged(mail));
  EXPECT_EQ(count(machine.calls.takeTrace(), "files.write"), 0U);
}

TEST_F(Backgrounding, AProcessThatExitsBetweenTheReadsDropsOut) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const Pid helper = childOf(mail);
  machine.calls.refuse(Operation::readRecord, helper);
  playGame();
  EXPECT_TRUE(isManaged(mail));
  EXPECT_FALSE(isSlow(helper));
  EXPECT_FALSE(journalledPids().contains(helper));
}

TEST_F(Backgrounding, WhenEveryCallIsRefusedTheJournalIsAsBeforeAndTheAppIsNotManaged) {
  start();
  const SimulatedAppRef foreign = open("Foreign");
  const Pid helper = childOf(foreign);
  machine.calls.refuse(Operation::enterBand, foreign->processIdentifier());
  machine.calls.refuse(Operation::enterBand, helper);
  playGame();
  EXPECT_FALSE(isManaged(foreign));
  EXPECT_EQ(journalText(), "[]");
}

TEST_F(Backgrounding, OneRefusedProcessLeavesTheOthersManagedAndIsNotInTheJournal) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const Pid foreign = childOf(mail);
  const Pid helper = childOf(mail);
  machine.calls.refuse(Operation::enterBand, foreign);
  playGame();
  EXPECT_THAT(entryOf(mail).members, ElementsAre(identityOf(mail->processIdentifier()), identityOf(helper)));
  EXPECT_THAT(journalledPids(), ElementsAre(mail->processIdentifier(), helper));
}

TEST_F(Backgrounding, AnAppIsManagedEvenWhenItsMainProcessIsTheRefusedOne) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const Pid helper = childOf(mail);
  machine.calls.refuse(Operation::enterBand, mail->processIdentifier());
  const SimulatedAppRef game = playGame();
  EXPECT_THAT(entryOf(mail).members, ElementsAre(identityOf(helper)));
  EXPECT_EQ(entryOf(mail).root, identityOf(mail->processIdentifier()));
  machine.quit(game);
  EXPECT_FALSE(isSlow(helper));
}

TEST_F(Backgrounding, AChildBornSlowIsSweptBackWhileTheRootLives) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  later();
  const Pid born = childOf(mail);
  const Pid grandchild = childOf(born);
  ASSERT_TRUE(isSlow(born));
  EXPECT_FALSE(journalledPids().contains(born));
  machine.quit(game);
  EXPECT_FALSE(isSlow(born));
  EXPECT_FALSE(isSlow(grandchild));
}

TEST_F(Backgrounding, AChildThatRaisedItselfIsLeftAlone) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  later();
  const Pid born = childOf(mail);
  machine.band.takeOutByOthers(born);
  machine.calls.startTrace();
  machine.quit(game);
  EXPECT_EQ(count(machine.calls.takeTrace(), "band.leave " + std::to_string(born)), 0U);
}

TEST_F(Backgrounding, WithoutTheRootSurvivingMembersComeBackButNothingIsSwept) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const Pid member = childOf(mail);
  playGame();
  later();
  const Pid born = childOf(mail);
  machine.quit(mail);
  EXPECT_FALSE(isSlow(member));
  EXPECT_TRUE(isSlow(born)) << "nobody knows any more whose child it was";
  EXPECT_EQ(journalText(), "[]");
}

TEST_F(Backgrounding, ARootWhosePidWasReusedIsNotSwept) {
  machine.delivery = EventDelivery::onDemand;
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  machine.workspace.deliverAll();
  ASSERT_TRUE(isSlow(mail));
  later();
  machine.quit(mail);
  machine.processes.spawn({.pid = mail->processIdentifier()});
  const Pid stranger = childOf(mail->processIdentifier());
  machine.band.putInByOthers(stranger);
  engine->stopBoost();
  EXPECT_TRUE(isSlow(stranger));
}

TEST_F(Backgrounding, AMemberWhosePidWasReusedIsNotTouched) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const Pid member = childOf(mail);
  const SimulatedAppRef game = playGame();
  machine.processes.exit(member);
  later();
  machine.processes.spawn({.pid = member});
  machine.band.putInByOthers(member);
  machine.calls.startTrace();
  machine.quit(game);
  EXPECT_TRUE(isSlow(member));
  EXPECT_EQ(count(machine.calls.takeTrace(), "band.leave " + std::to_string(member)), 0U);
  EXPECT_EQ(journalText(), "[]");
}

// The axis of start times has a resolution, so the very moment of the change belongs to the sweep.
TEST_F(Backgrounding, AChildOfTheVeryMicrosecondOfTheChangeCountsAsBornLater) {
  start();
  const SimulatedAppRef mail = open("Mail");
  later();
  const SimulatedAppRef game = playGame();
  const Pid born = childOf(mail);
  ASSERT_EQ(startMicros(identityOf(born)), entryOf(mail).changedAtMicros);
  machine.quit(game);
  EXPECT_FALSE(isSlow(born));
}

TEST_F(Backgrounding, AChildOfOneMicrosecondBeforeIsNotSwept) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const Pid helper = childOf(mail);
  machine.band.putInByOthers(helper);
  machine.clock.advance(std::chrono::microseconds(1));
  const SimulatedAppRef game = playGame();
  machine.quit(game);
  EXPECT_TRUE(isSlow(helper));
}

TEST_F(Backgrounding, AnAppThatAnotherOneStartedIsAnAppOfItsOwn) {
  start();
  const SimulatedAppRef terminal = open("Terminal");
  const Pid shell = childOf(terminal);
  AppSpec spec = named("Editor");
  spec.parent = shell;
  const SimulatedAppRef editor = open(spec);
  const Pid plugin = childOf(editor);
  const SimulatedAppRef game = playGame();
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Editor", "Terminal"));
  EXPECT_THAT(entryOf(terminal).members,
              ElementsAre(identityOf(terminal->processIdentifier()), identityOf(shell)));

  machine.activate(editor);
  EXPECT_FALSE(isSlow(editor)) << "it is in front";
  EXPECT_FALSE(isSlow(plugin));
  EXPECT_TRUE(isSlow(shell));
  machine.quit(game);
  EXPECT_FALSE(isSlow(shell));
}

TEST_F(Backgrounding, AProtectedAppThatWasStartedFromATerminalIsNotSlowedWithIt) {
  start();
  settings->protectedApps.set({"org.example.Chat"});
  const SimulatedAppRef terminal = open("Terminal");
  AppSpec spec = named("Chat");
  spec.parent = childOf(terminal);
  const SimulatedAppRef chat = open(spec);
  const Pid call = childOf(chat);
  playGame();
  EXPECT_TRUE(isSlow(terminal));
  EXPECT_FALSE(isSlow(chat));
  EXPECT_FALSE(isSlow(call));
}

TEST_F(Backgrounding, TheSweepOfATerminalStopsAtAnAppThatIsSlowedByItself) {
  start();
  const SimulatedAppRef terminal = open("Terminal");
  const Pid shell = childOf(terminal);
  machine.calls.refuse(Operation::enterBand, shell);
  playGame();
  ASSERT_TRUE(isSlow(terminal));
  ASSERT_FALSE(isSlow(shell));
  later();
  AppSpec spec = named("Editor");
  spec.parent = shell;
  const SimulatedAppRef editor = open(spec);
  const Pid born = childOf(editor);
  ASSERT_TRUE(isManaged(editor));
  machine.activate(terminal);
  EXPECT_FALSE(isSlow(terminal));
  EXPECT_TRUE(isSlow(editor)) << "it is younger than the change, but no part of the terminal";
  EXPECT_TRUE(isSlow(born));
  engine->stopBoost();
  EXPECT_FALSE(isSlow(editor));
  EXPECT_FALSE(isSlow(born));
}

TEST_F(Backgrounding, AnEntryMissingFromTheBandsRefusalIsForgottenAllTheSame) {
  start();
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef game = playGame();
  machine.calls.refuse(Operation::leaveBand, mail->processIdentifier());
  machine.quit(game);
  EXPECT_TRUE(isSlow(mail)) << "restoring is best effort";
  EXPECT_THAT(engine->managed(), IsEmpty());
  EXPECT_EQ(journalText(), "[]");
}

TEST_F(Backgrounding, AJournalThatCannotBeWrittenStopsNeitherWay) {
  start();
  const SimulatedAppRef mail = open("Mail");
  machine.calls.refuse(Operation::writeFile);
  const SimulatedAppRef game = playGame();
  EXPECT_TRUE(isSlow(mail));
  machine.quit(game);
  EXPECT_FALSE(isSlow(mail));
}

TEST_F(Backgrounding, OnePassOverManyAppsWritesTheJournalOnce) {
  start();
  for (const char* name : {"A", "B", "C", "D"}) childOf(open(name));
  machine.calls.startTrace();
  const SimulatedAppRef game = playGame();
  EXPECT_EQ(count(machine.calls.takeTrace(), "files.write"), 1U);
  machine.quit(game);
  EXPECT_EQ(count(machine.calls.takeTrace(), "files.write"), 1U);
}

} // namespace
} // namespace vantle
