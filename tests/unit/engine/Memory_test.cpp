// SPDX-License-Identifier: MIT
#include "tests/unit/engine/EngineFixture.h"

#include <gmock/gmock.h>
#include <limits>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr std::uint64_t mebibyte = 1024 * 1024;

class MemoryTest : public EngineTest {
 protected:
  static AppSpec sized(const std::string& name, std::uint64_t mebibytes) {
    AppSpec spec = named(name);
    spec.footprint = mebibytes * mebibyte;
    return spec;
  }
  void wait(int seconds) { machine.clock.advance(std::chrono::seconds(seconds)); }
  const std::vector<SimulatedNotifications::Notice>& posted() const { return machine.notifications.posted; }
  std::string lastBody() const { return posted().empty() ? "(none)" : posted().back().body; }
  std::string lastTitle() const { return posted().empty() ? "(none)" : posted().back().title; }
};

class MemoryPressureLevel : public MemoryTest {};

TEST_F(MemoryPressureLevel, MapsTheKernelsNumbers) {
  using Level = MemoryPressure::Level;
  start();
  const std::vector<std::pair<std::optional<int>, Level>> table{
      {1, Level::normal}, {2, Level::warning}, {4, Level::critical}, {3, Level::normal},
      {0, Level::normal}, {-1, Level::normal}, {5, Level::normal},   {std::nullopt, Level::normal}};
  for (const auto& [kernel, level] : table) {
    machine.pressure.kernelLevel = kernel;
    EXPECT_EQ(engine->currentPressureLevel(), level) << kernel.value_or(99);
  }
}

TEST_F(MemoryPressureLevel, EventsReachTheHandlerForAsLongAsTheEngineLives) {
  start();
  open("Mail");
  playGame();
  machine.pressure.raise(false);
  EXPECT_THAT(posted(), SizeIs(1));
  engine.reset();
  wait(301);
  machine.pressure.raise(true);
  EXPECT_THAT(posted(), SizeIs(1));
}

TEST_F(MemoryPressureLevel, ASystemWithoutEventsIsNoObstacle) {
  machine.calls.refuse(Operation::watchPressure);
  start();
  EXPECT_EQ(machine.notifications.authorizationRequests, 1);
}

class ProtectedInUse : public MemoryTest {};

TEST_F(ProtectedInUse, ListsThePersonsRunningAppsByNameUpperCaseFirst) {
  start();
  settings->protectedApps.set({"org.example.zoom", "org.example.Zoom", "org.example.Mail", "Notes"});
  open("zoom");
  open("Zoom");
  open("Mail");
  open("Other");
  open(AppSpec{.name = "Notes"});                // no bundle identifier
  open(AppSpec{.bundleID = "org.example.Mail"}); // no name
  open(AppSpec{.name = "Finder", .bundleID = "com.apple.finder"});
  EXPECT_THAT(engine->protectedInUse(), ElementsAre("Mail", "Zoom", "zoom"));
}

TEST_F(ProtectedInUse, NotesWhoIsHeardByItsMainProcess) {
  start();
  settings->protectedApps.set({"org.example.Music", "org.example.Radio"});
  const SimulatedAppRef music = open("Music");
  const SimulatedAppRef radio = open("Radio");
  const SimulatedAppRef other = open("Other");
  machine.audio.heard = {music->processIdentifier(), childOf(radio), other->processIdentifier()};
  EXPECT_THAT(engine->protectedInUse(), ElementsAre("Music \xC2\xB7 playing audio", "Radio"));
  machine.audio.canTell = false;
  EXPECT_THAT(engine->protectedInUse(), ElementsAre("Music", "Radio"));
}

class MemoryNotice : public MemoryTest {};

TEST_F(MemoryNotice, WithoutABoostNothingHappensEvenWithAppsToQuit) {
  start();
  settings->ramAction.set(RAMAction::quitMarked);
  settings->quittableApps.set({"org.example.Mail"});
  const SimulatedAppRef mail = open("Mail");
  engine->handleMemoryPressure(true);
  EXPECT_THAT(posted(), IsEmpty());
  EXPECT_FALSE(mail->isTerminated());
}

TEST_F(MemoryNotice, NamesTheThreeThatUseMostLargestFirst) {
  start();
  open(sized("Mail", 100));
  open(sized("Browser", 2048));
  open(sized("Notes", 50));
  open(sized("Chat", 300));
  open(sized("Clock", 1));
  playGame();
  machine.pressure.raise(false);
  EXPECT_THAT(posted(),
              ElementsAre(SimulatedNotifications::Notice{
                  "ram", "Memory is running low",
                  "Using the most memory: Browser 2 GB, Chat 300 MB, Mail 100 MB. Quitting them will free up "
                  "memory."}));
}

TEST_F(MemoryNotice, IsInTheWordsThatTheEngineWasGiven) {
  start();
  engine->speak(
      {.almostFull = "Voll", .runningLow = "Knapp", .usingMost = "Am meisten: %1!", .quitting = "%1 geht"});
  open(sized("50%1", 100));
  playGame();
  machine.pressure.raise(false);
  EXPECT_EQ(lastTitle(), "Knapp");
  EXPECT_EQ(lastBody(), "Am meisten: 50%1 100 MB!");
}

TEST_F(MemoryNotice, ChargesAnAppForItsWholeTreeAndUnreadableProcessesNothing) {
  start();
  const SimulatedAppRef browser = open(sized("Browser", 10));
  machine.processes.spawn({.parent = browser->processIdentifier(), .footprint = 30 * mebibyte});
  const Pid secret = machine.processes.spawn({.parent = browser->processIdentifier(), .footprint = 500});
  machine.calls.refuse(Operation::readFootprint, secret);
  playGame();
  machine.pressure.raise(true);
  EXPECT_EQ(lastTitle(), "Memory almost full");
  EXPECT_EQ(lastBody(), "Using the most memory: Browser 40 MB. Quitting them will free up memory.");
}

TEST_F(MemoryNotice, AppsOfTheSameSizeKeepTheOrderOfTheMap) {
  start();
  open(sized("B", 5));
  open(sized("A", 5));
  open(sized("C", 6));
  playGame();
  machine.pressure.raise(false);
  EXPECT_EQ(lastBody(), "Using the most memory: C 6 MB, B 5 MB, A 5 MB. Quitting them will free up memory.");
}

TEST_F(MemoryNotice, LeavesOutAnAppWhoseMainProcessWasReplaced) {
  machine.delivery = EventDelivery::onDemand;
  start();
  const SimulatedAppRef mail = open(sized("Mail", 10));
  open(sized("Notes", 5));
  playGame();
  machine.workspace.deliverAll();
  machine.quit(mail);
  later();
  machine.processes.spawn({.footprint = 999 * mebibyte, .pid = mail->processIdentifier()});
  engine->handleMemoryPressure(false);
  EXPECT_EQ(lastBody(), "Using the most memory: Notes 5 MB. Quitting them will free up memory.");
}

TEST_F(MemoryNotice, IsPostedOnlyAfterMoreThan300Seconds) {
  start();
  open("Mail");
  playGame();
  machine.pressure.raise(false);
  wait(300);
  machine.pressure.raise(true);
  EXPECT_THAT(posted(), SizeIs(1));
  machine.clock.advance(std::chrono::microseconds(1));
  machine.pressure.raise(false);
  EXPECT_THAT(posted(), SizeIs(2));
  wait(301);
  machine.pressure.raise(false);
  EXPECT_THAT(posted(), SizeIs(3));
}

TEST_F(MemoryNotice, AnEventWithNothingToSayDoesNotDelayTheNext) {
  start();
  playGame();
  machine.pressure.raise(true);
  EXPECT_THAT(posted(), IsEmpty());
  open("Mail");
  machine.pressure.raise(true);
  EXPECT_THAT(posted(), SizeIs(1));
}

class QuitMarked : public MemoryTest {
 protected:
  void mark(const Names& apps) {
    settings->ramAction.set(RAMAction::quitMarked);
    settings->quittableApps.set(apps);
  }
};

TEST_F(QuitMarked, AsksTheMarkedAppsAtACriticalEventAndNamesThem) {
  start();
  mark({"org.example.Chat", "org.example.Mail"});
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef notes = open("Notes");
  const SimulatedAppRef chat = open("Chat");
  playGame();
  machine.pressure.raise(true);
  machine.workspace.deliverAll();
  EXPECT_TRUE(mail->isTerminated());
  EXPECT_TRUE(chat->isTerminated());
  EXPECT_FALSE(notes->isTerminated());
  EXPECT_THAT(posted(), ElementsAre(SimulatedNotifications::Notice{"ram", "Memory almost full",
                                                                   "Quit Mail, Chat to free up memory."}));
}

TEST_F(QuitMarked, AlsoCountsAsANoticeForTheNext300Seconds) {
  start();
  mark({"org.example.Chat"});
  const SimulatedAppRef chat = open("Chat");
  chat->spec.quitReaction = QuitReaction::refuses;
  playGame();
  machine.pressure.raise(true);
  wait(300);
  machine.pressure.raise(true);
  EXPECT_THAT(posted(), SizeIs(1)) << "an app that refuses was asked all the same";
  EXPECT_FALSE(chat->isTerminated());
}

TEST_F(QuitMarked, AWarningQuitsNothing) {
  start();
  mark({"org.example.Mail"});
  const SimulatedAppRef mail = open("Mail");
  playGame();
  machine.pressure.raise(false);
  EXPECT_FALSE(mail->isTerminated());
  EXPECT_EQ(lastTitle(), "Memory is running low");
}

TEST_F(QuitMarked, TheActionNotifyQuitsNothing) {
  start();
  mark({"org.example.Mail"});
  settings->ramAction.set(RAMAction::notify);
  const SimulatedAppRef mail = open("Mail");
  playGame();
  machine.pressure.raise(true);
  EXPECT_FALSE(mail->isTerminated());
  EXPECT_EQ(lastTitle(), "Memory almost full");
}

TEST_F(QuitMarked, SparesProtectedSystemBoostFrontAndLauncherApps) {
  start();
  settings->protectedApps.set({"org.example.Music"});
  const SimulatedAppRef store = open("Store");
  const SimulatedAppRef music = open("Music");
  const SimulatedAppRef finder = open(AppSpec{.name = "Finder", .bundleID = "com.apple.finder"});
  const SimulatedAppRef chess = open(aGame("Chess"));
  const SimulatedAppRef front = open("Front");
  open("Mail");
  AppSpec gameSpec = aGame();
  gameSpec.parent = store->processIdentifier();
  const SimulatedAppRef game = openInFront(gameSpec);
  mark({"org.example.Store", "org.example.Music", "com.apple.finder", "org.example.Chess",
        "org.example.Front", "org.example.Asteroids"});
  machine.activate(front);
  machine.pressure.raise(true);
  for (const SimulatedAppRef& app : {store, music, finder, chess, front, game}) {
    EXPECT_FALSE(app->isTerminated()) << *app->spec.name;
  }
  EXPECT_EQ(lastTitle(), "Memory almost full");
  EXPECT_EQ(lastBody(), "Using the most memory: Mail 100 MB. Quitting them will free up memory.");
}

TEST_F(QuitMarked, SparesTheBoostAppThatIsNoGameByTheRules) {
  start();
  open("Mail");
  const SimulatedAppRef editor = open("Editor");
  engine->startBoost(editor); // boost now
  mark({"org.example.Editor"});
  machine.pressure.raise(true);
  EXPECT_FALSE(editor->isTerminated());
}

TEST_F(QuitMarked, MatchesAnAppWithoutABundleIdentifierByItsName) {
  start();
  mark({"Scratch", ""});
  const SimulatedAppRef scratch = open(AppSpec{.name = "Scratch"});
  const SimulatedAppRef nameless = open(AppSpec{});
  const SimulatedAppRef otherCase = open(AppSpec{.name = "scratch"});
  playGame();
  machine.pressure.raise(true);
  EXPECT_TRUE(scratch->isTerminated());
  EXPECT_FALSE(nameless->isTerminated());
  EXPECT_FALSE(otherCase->isTerminated());
}

TEST_F(QuitMarked, AnAppThatTheRequestDidNotReachIsNeitherNamedNorCounted) {
  start();
  mark({"org.example.Mail"});
  const SimulatedAppRef mail = open("Mail");
  machine.calls.refuse(Operation::terminateApp, mail->processIdentifier());
  playGame();
  machine.pressure.raise(true);
  EXPECT_EQ(lastBody(), "Using the most memory: Mail 100 MB. Quitting them will free up memory.");
}

TEST_F(QuitMarked, AppsWithoutNamesAreAskedAndTheNoticeHasTwoBlanks) {
  start();
  mark({"org.example.silent"});
  const SimulatedAppRef silent = open(AppSpec{.bundleID = "org.example.silent"});
  playGame();
  machine.pressure.raise(true);
  EXPECT_TRUE(silent->isTerminated());
  EXPECT_EQ(lastBody(), "Quit  to free up memory.");
}

class AppUsageTest : public MemoryTest {};

TEST_F(AppUsageTest, IsEmptyWithoutSlowedApps) {
  start();
  machine.calls.startTrace();
  EXPECT_THAT(engine->usageList(), IsEmpty());
  EXPECT_THAT(machine.calls.takeTrace(), IsEmpty());
}

TEST_F(AppUsageTest, HasOneRowAnAppLargestFirstAndEqualOnesInTheOrderOfTheMap) {
  start();
  const SimulatedAppRef small = open(sized("Small", 1));
  const SimulatedAppRef zoom = open(sized("Zoom", 7));
  const SimulatedAppRef mail = open(sized("Mail", 7));
  const Pid helper =
      machine.processes.spawn({.parent = small->processIdentifier(), .footprint = 8 * mebibyte});
  playGame();
  EXPECT_THAT(engine->usageList(), ElementsAre(AppUsage{small->processIdentifier(), "Small", 9 * mebibyte},
                                               AppUsage{zoom->processIdentifier(), "Zoom", 7 * mebibyte},
                                               AppUsage{mail->processIdentifier(), "Mail", 7 * mebibyte}));
  machine.processes.exit(helper);
  EXPECT_EQ(engine->usageList().back().id, small->processIdentifier());
}

TEST_F(AppUsageTest, AnAppThatEndedUnheardHasARowOfZeroBytes) {
  machine.delivery = EventDelivery::onDemand;
  start();
  const SimulatedAppRef mail = open("Mail");
  playGame();
  machine.workspace.deliverAll();
  machine.quit(mail);
  EXPECT_THAT(engine->usageList(), ElementsAre(AppUsage{mail->processIdentifier(), "Mail", 0}));
}

TEST_F(AppUsageTest, OwnMemoryIsThatOfThisProgram) {
  start();
  machine.processes.find(machine.host.self)->footprint = 3 * mebibyte;
  EXPECT_EQ(engine->ownFootprint(), 3 * mebibyte);
  machine.calls.refuse(Operation::readFootprint);
  EXPECT_EQ(engine->ownFootprint(), 0U);
}

TEST_F(AppUsageTest, ASumBeyond64BitsStopsTheProgram) {
  start();
  const SimulatedAppRef mail = open("Mail");
  machine.processes.find(mail->processIdentifier())->footprint = std::numeric_limits<std::uint64_t>::max();
  playGame();
  EXPECT_EQ(engine->usageList().front().bytes, std::numeric_limits<std::uint64_t>::max());
  machine.processes.spawn({.parent = mail->processIdentifier(), .footprint = 1});
  EXPECT_DEATH(engine->usageList(), "broken invariant: memory sum overflows");
}

struct Amount {
  std::uint64_t bytes;
  const char* text;
};

class ByteText : public testing::TestWithParam<Amount> {};

TEST_P(ByteText, IsShortAndInStepsOf1024) { EXPECT_EQ(byteText(GetParam().bytes), GetParam().text); }

constexpr std::uint64_t kb = 1024;
constexpr std::uint64_t mb = kb * 1024;
constexpr std::uint64_t gb = mb * 1024;
constexpr std::uint64_t tb = gb * 1024;

INSTANTIATE_TEST_SUITE_P(
    Table, ByteText,
    testing::Values(Amount{0, "Zero KB"}, Amount{1, "1 byte"}, Amount{2, "2 bytes"}, Amount{999, "999 bytes"},
                    Amount{1000, "1,000 bytes"}, Amount{1023, "1,023 bytes"}, Amount{kb, "1 KB"},
                    Amount{kb + kb / 2 - 1, "1 KB"}, Amount{kb + kb / 2 + 1, "2 KB"},
                    Amount{100 * kb, "100 KB"}, Amount{1000 * kb, "1,000 KB"}, Amount{1023 * kb, "1,023 KB"},
                    Amount{mb - 1, "1 MB"}, Amount{mb, "1 MB"}, Amount{mb + mb / 2, "1.5 MB"},
                    Amount{10 * mb, "10 MB"}, Amount{52'638'515, "50.2 MB"}, Amount{mb + 99 * kb, "1.1 MB"},
                    Amount{1010 * mb + mb / 2, "1,010.5 MB"}, Amount{gb - 1, "1 GB"}, Amount{gb, "1 GB"},
                    Amount{gb + 512 * mb, "1.5 GB"}, Amount{gb + 256 * mb, "1.25 GB"},
                    Amount{gb + mb, "1 GB"}, Amount{2 * gb + 103 * mb, "2.1 GB"}, Amount{tb - 1, "1 TB"},
                    Amount{tb + 10 * gb, "1.01 TB"}, Amount{1024 * tb, "1 PB"},
                    Amount{1024 * 1024 * tb, "1 EB"}, Amount{9'223'372'036'854'775'807, "8 EB"}));

TEST(ByteTextLimit, AnAmountAboveTheSignedRangeStopsTheProgram) {
  EXPECT_DEATH(byteText(9'223'372'036'854'775'808U), "broken invariant: byte count above the signed range");
}

} // namespace
} // namespace vantle
