// SPDX-License-Identifier: MIT
#include "remote/RemoteControl.h"

#include "platform/shared/PollEventLoop.h"
#include "remote/BoostHooks.h"
#include "status/Changes.h"
#include "tests/unit/engine/EngineFixture.h"

#include <gmock/gmock.h>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// Lets everybody in, and counts how often something may have changed.
class OpenDoor final : public RemoteDoor {
 public:
  int told = 0;
  Answers answers;

  std::unique_ptr<Open> open(Answers given) override {
    answers = std::move(given);
    return std::make_unique<Counting>(told);
  }

 private:
  class Counting final : public Open {
   public:
    explicit Counting(int& told) : m_told(told) {}
    void tell() override { ++m_told; }

   private:
    int& m_told;
  };
};

class Remote : public EngineTest {
 protected:
  PollEventLoop loop;
  OpenDoor door;
  std::optional<RemoteControl> remote;

  RemoteControl& control() {
    return remote.emplace(loop, start(), machine.ports(), door,
                          RemoteControl::About{"1.2", [] { return facts(); }});
  }
  static std::vector<std::pair<std::string, std::string>> facts() { return {{"Weather", "fine"}}; }
  // What stands in the list about it.
  AppStatus about(const SimulatedAppRef& app) {
    for (const AppStatus& one : door.answers.status().apps) {
      if (one.pid == app->processIdentifier()) return one;
    }
    return {};
  }
  std::string judged(const SimulatedAppRef& app) {
    const AppStatus status = about(app);
    return status.state + ", " + status.reason;
  }
};

TEST_F(Remote, TellsStatesAndReasons) {
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef kept = open("Kept");
  const SimulatedAppRef music = open("Music");
  control();
  settings->protectedApps.set({"org.example.Kept"});
  machine.audio.heard = {music->processIdentifier()};
  EXPECT_EQ(judged(mail), "not slowed, no boost");
  machine.activate(mail);
  EXPECT_EQ(judged(mail), "in front, in front");
  const SimulatedAppRef game = playGame();
  EXPECT_EQ(judged(game), "boost app, boost app");
  EXPECT_EQ(judged(mail), "in background, slowed");
  EXPECT_EQ(judged(kept), "left alone, protected");
  EXPECT_EQ(judged(music), "left alone, plays audio");
  machine.activate(mail);
  EXPECT_EQ(judged(mail), "in front, in front");
  machine.activate(kept);
  EXPECT_EQ(judged(mail), "in background, slowed");
  EXPECT_EQ(judged(kept), "in front, protected");
  const Status status = door.answers.status();
  EXPECT_TRUE(status.isActive);
  EXPECT_EQ(status.boostName, "Asteroids");
  EXPECT_EQ(status.version, "1.2");
}

TEST_F(Remote, NothingThatIsProtectedCanBeSlowedByAsking) {
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef kept = open("Kept");
  control();
  settings->protectedApps.set({"org.example.Kept"});
  EXPECT_EQ(door.answers.boost("Mail"), std::nullopt);
  EXPECT_FALSE(isSlow(kept));
  EXPECT_EQ(engine->activeGame.get(), mail);
}

TEST_F(Remote, ABoostOfAnAppBehindLeavesTheOneInFrontAtFullSpeedThroughout) {
  const SimulatedAppRef mail = open("Mail");
  const SimulatedAppRef terminal = openInFront(named("Terminal"));
  const SimulatedAppRef other = open("Other");
  control();
  machine.calls.takeTrace();
  EXPECT_EQ(door.answers.boost("Mail"), std::nullopt);
  EXPECT_TRUE(isSlow(other));
  EXPECT_EQ(judged(terminal), "in front, in front");
  for (const std::string& call : machine.calls.takeTrace()) {
    EXPECT_EQ(call.find("enter " + std::to_string(terminal->processIdentifier())), std::string::npos) << call;
  }
  machine.activate(mail);
  EXPECT_TRUE(isSlow(terminal));
}

TEST_F(Remote, PartsOfTheSystemAreNoBoostApps) {
  const SimulatedAppRef finder = open({.name = "Finder", .bundleID = "com.apple.finder"});
  const SimulatedAppRef dock =
      open({.name = "Dock", .bundleID = "org.example.dock", .policy = ActivationPolicy::accessory});
  control();
  EXPECT_NE(door.answers.boost("Finder"), std::nullopt);
  EXPECT_NE(door.answers.boost("Dock"), std::nullopt);
  EXPECT_NE(door.answers.boost("Nobody"), std::nullopt);
  EXPECT_EQ(engine->activeGame.get(), nullptr);
}

TEST_F(Remote, TellsByWhatAnAppIsKnown) {
  AppSpec spec = named("Mail");
  spec.knownBy = KnownBy{"wrapper", "it waits"};
  const SimulatedAppRef mail = open(spec);
  const SimulatedAppRef plain = open("Plain");
  control();
  EXPECT_EQ(about(mail).knownBy, "wrapper");
  EXPECT_EQ(about(mail).knownBecause, "it waits");
  EXPECT_EQ(about(plain).knownBy, std::nullopt);
  EXPECT_THAT(door.answers.report(true), HasSubstr(", processes: 1, known by: wrapper]: not slowed"));
  const Status before = door.answers.status();
  Status now = before;
  EXPECT_FALSE(changesBetween(before, now).any());
  now.apps.front().knownBy = "program";
  EXPECT_TRUE(changesBetween(before, now).apps);
}

TEST_F(Remote, OneEventIsToldOnce) {
  const SimulatedAppRef mail = open("Mail");
  control();
  playGame();
  machine.activate(mail);
  EXPECT_EQ(door.told, 0) << "never within the event";
  loop.runUntil([&] { return door.told > 0; }, std::chrono::seconds(30));
  EXPECT_EQ(door.told, 1);
}

TEST_F(Remote, APauseKeepsBoostsFromStartingByThemselves) {
  const SimulatedAppRef mail = open("Mail");
  control();
  EXPECT_EQ(door.answers.pause(std::chrono::hours(1)), std::nullopt);
  const SimulatedAppRef game = playGame();
  EXPECT_EQ(engine->activeGame.get(), nullptr);
  EXPECT_NE(door.answers.status().pausedUntil, 0U);
  EXPECT_EQ(door.answers.pause(std::chrono::seconds(0)), std::nullopt);
  EXPECT_EQ(engine->activeGame.get(), game) << "it is in front";
  EXPECT_NE(door.answers.pause(std::chrono::hours(25)), std::nullopt);
  EXPECT_FALSE(engine->pause.get());
}

TEST_F(Remote, APauseIsOverAtItsTimeThoughItsTimerIsLate) {
  control();
  door.answers.pause(std::chrono::seconds(60));
  machine.clock.advance(std::chrono::seconds(61));
  const SimulatedAppRef game = playGame();
  EXPECT_EQ(engine->activeGame.get(), game);
  EXPECT_FALSE(engine->pause.get());
}

TEST_F(Remote, APauseLeavesTheBoostThatRuns) {
  const SimulatedAppRef mail = open("Mail");
  control();
  const SimulatedAppRef game = playGame();
  door.answers.pause(std::chrono::hours(1));
  EXPECT_TRUE(isSlow(mail));
  EXPECT_EQ(engine->activeGame.get(), game);
}

TEST_F(Remote, AReportNamesNobodyUnlessAsked) {
  open("Mail");
  control();
  playGame();
  const std::string report = door.answers.report(false);
  EXPECT_THAT(report, HasSubstr("Vantle 1.2\nWeather: fine\nBoost: on\n"));
  EXPECT_THAT(report, HasSubstr("  1 in background (slowed)"));
  EXPECT_THAT(report, testing::Not(HasSubstr("Mail")));
  EXPECT_THAT(report, testing::Not(HasSubstr("Asteroids")));
  EXPECT_THAT(door.answers.report(true), HasSubstr("  Mail [org.example.Mail, "));
}

class Hooked : public EngineTest {
 protected:
  std::optional<BoostHooks> hooks;

  void SetUp() override { machine.hooks.installed = {"boost-start", "boost-end"}; }
  std::string about(const char* hook, const SimulatedAppRef& app) const {
    return std::string(hook) + " " + *app->localizedName() + " " + *app->bundleIdentifier() + " " +
           std::to_string(app->processIdentifier());
  }
};

TEST_F(Hooked, RunOneAfterTheOther) {
  hooks.emplace(start(), machine.hooks);
  const SimulatedAppRef game = playGame();
  const std::string begin = about("boost-start", game);
  const std::string end = about("boost-end", game);
  EXPECT_THAT(machine.hooks.started, ElementsAre(begin));
  machine.quit(game);
  EXPECT_THAT(machine.hooks.started, ElementsAre(begin)) << "the first one is still at it";
  machine.hooks.end();
  EXPECT_THAT(machine.hooks.started, ElementsAre(begin, end));
  machine.hooks.end();
  EXPECT_EQ(machine.hooks.started.size(), 2U);
}

TEST_F(Hooked, ABoostThatIsOverBeforeItsTurnHasNone) {
  hooks.emplace(start(), machine.hooks);
  const SimulatedAppRef first = playGame();
  machine.quit(first);
  for (int count = 0; count < 100; ++count) machine.quit(playGame());
  machine.hooks.end();
  machine.hooks.end();
  EXPECT_FALSE(machine.hooks.isRunning());
  EXPECT_EQ(machine.hooks.started.size(), 2U);
}

TEST_F(Hooked, HearOfTheNextBoostApp) {
  hooks.emplace(start(), machine.hooks);
  const SimulatedAppRef first = playGame();
  const SimulatedAppRef second = openInFront(aGame("Pong"));
  machine.quit(first);
  for (int count = 0; count < 2; ++count) machine.hooks.end();
  EXPECT_THAT(machine.hooks.started, ElementsAre(about("boost-start", first), about("boost-end", first),
                                                 about("boost-start", second)));
}

TEST_F(Hooked, TheLastOneWaitsForNobodyAtTheEnd) {
  hooks.emplace(start(), machine.hooks);
  const SimulatedAppRef game = playGame();
  engine->stopBoost();
  hooks->finish();
  EXPECT_EQ(machine.hooks.started.back(), about("boost-end", game));
}

TEST_F(Hooked, MayBeThereForOneMomentOnly) {
  machine.hooks.installed = {"boost-end"};
  hooks.emplace(start(), machine.hooks);
  const SimulatedAppRef game = playGame();
  machine.quit(game);
  EXPECT_THAT(machine.hooks.started, ElementsAre(about("boost-end", game)));
}

} // namespace
} // namespace vantle
