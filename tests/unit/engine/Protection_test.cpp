// SPDX-License-Identifier: MIT
#include "engine/Protection.h"
#include "tests/unit/engine/EngineFixture.h"

#include <functional>
#include <gmock/gmock.h>
#include <memory>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// An app that tells which of its properties were asked for.
class AskedApp final : public RunningApplication {
 public:
  explicit AskedApp(SimulatedAppRef app) : m_app(std::move(app)) {}

  mutable std::vector<std::string> asked;

  Pid processIdentifier() const override { return m_app->processIdentifier(); }
  std::optional<std::string> bundleIdentifier() const override {
    asked.emplace_back("bundle identifier");
    return m_app->bundleIdentifier();
  }
  std::optional<std::string> localizedName() const override {
    asked.emplace_back("name");
    return m_app->localizedName();
  }
  std::optional<std::string> bundlePath() const override {
    asked.emplace_back("bundle path");
    return m_app->bundlePath();
  }
  std::optional<std::string> executablePath() const override { return m_app->executablePath(); }
  std::optional<std::string> bundleCategory() const override { return m_app->bundleCategory(); }
  ActivationPolicy activationPolicy() const override {
    asked.emplace_back("policy");
    return m_app->activationPolicy();
  }
  bool isTerminated() const override {
    asked.emplace_back("terminated");
    return m_isTerminated || m_app->isTerminated();
  }
  bool isActive() const override { return false; }
  bool terminate() override { return false; }
  bool canComeToFront() const override { return false; }
  bool bringToFront() override { return false; }
  std::optional<std::string> iconName() const override { return std::nullopt; }

  void pretendTerminated() { m_isTerminated = true; }

 private:
  SimulatedAppRef m_app;
  bool m_isTerminated = false;
};

// One app, and everything that can be held against its being slowed down.
struct Situation {
  SimulatedMachine machine;
  AppSettings settings{machine.defaults};
  std::unique_ptr<Engine> engine;
  SimulatedAppRef game;
  SimulatedAppRef app;
  std::shared_ptr<AskedApp> asked;

  Situation() {
    machine.delivery = EventDelivery::onDemand;
    engine = std::make_unique<Engine>(machine.ports(), settings);
    app = machine.launch({.name = "Mail", .bundleID = "org.example.mail"}, Opening::inBackground);
    asked = std::make_shared<AskedApp>(app);
    game = machine.launch({.name = "Asteroids", .bundlePath = "/x/steamapps/a"}, Opening::inBackground);
    machine.workspace.dropEvents();
    machine.workspace.setFrontmost(nullptr);
  }
  // Lets the Boost begin before the app can be slowed with it.
  void boost() {
    app->spec.policy = ActivationPolicy::accessory;
    engine->startBoost(game);
    app->spec.policy = ActivationPolicy::regular;
  }
  // Decides about the app, as for one that was launched in the background; tells whether it was slowed now.
  bool decide() {
    const auto before = changedAt();
    machine.clock.advance(std::chrono::milliseconds(1));
    asked->asked.clear();
    engine->appLaunched(asked);
    return changedAt() != before;
  }
  std::uint64_t changedAt() const {
    const auto found = engine->managed().find(app->processIdentifier());
    return found == engine->managed().end() ? 0 : found->second.changedAtMicros;
  }
};

struct Rule {
  const char* what;
  std::function<void(Situation&)> apply; // after the Boost has begun
};

// In the order in which the rules are checked.
const std::vector<Rule>& rules() {
  static const std::vector<Rule> all{
      {"no Boost is running", [](Situation& s) { s.engine->stopBoost(); }},
      {"not a regular app", [](Situation& s) { s.app->spec.policy = ActivationPolicy::accessory; }},
      {"terminated", [](Situation& s) { s.asked->pretendTerminated(); }},
      {"this program itself",
       [](Situation& s) {
         // The engine reads its own pid once, at its construction.
         s.engine.reset();
         s.machine.host.self = s.app->processIdentifier();
         s.engine = std::make_unique<Engine>(s.machine.ports(), s.settings);
         s.boost();
       }},
      {"managed already", [](Situation& s) { s.decide(); }},
      {"in front during the Boost", [](Situation& s) { s.engine->frontmostChanged(s.app); }},
      {"on the person's protected list",
       [](Situation& s) {
         s.settings.protectedApps.set({"org.example.other", "org.example.mail"});
       }},
      {"an app of the system", [](Situation& s) { s.app->spec.bundleID = "com.apple.finder"; }},
      {"a Boost app", [](Situation& s) { s.app->spec.bundlePath = "/x/steamapps/other"; }},
      {"heard", [](Situation& s) { s.machine.audio.heard = {s.app->processIdentifier()}; }},
  };
  return all;
}

TEST(ShouldManage, AnAppThatNothingIsHeldAgainstIsSlowedDown) {
  Situation situation;
  situation.boost();
  EXPECT_TRUE(situation.decide());
}

class ShouldManageRule : public testing::TestWithParam<std::size_t> {};

TEST_P(ShouldManageRule, AloneTurnsTheAppAway) {
  const Rule& rule = rules().at(GetParam());
  Situation situation;
  situation.boost();
  rule.apply(situation);
  EXPECT_FALSE(situation.decide()) << rule.what;
}

INSTANTIATE_TEST_SUITE_P(Each, ShouldManageRule, testing::Range<std::size_t>(0, 10));

class ShouldManageNeighbours : public testing::TestWithParam<std::size_t> {};

TEST_P(ShouldManageNeighbours, BothTurnTheAppAwayAndTheLaterOneNeedNotBeAsked) {
  const Rule& earlier = rules().at(GetParam());
  const Rule& later = rules().at(GetParam() + 1);
  Situation situation;
  situation.boost();
  later.apply(situation);
  earlier.apply(situation);
  EXPECT_FALSE(situation.decide()) << earlier.what << " and " << later.what;
}

INSTANTIATE_TEST_SUITE_P(Each, ShouldManageNeighbours, testing::Range<std::size_t>(0, 9));

struct Asked {
  std::size_t rule;
  std::vector<std::string> properties;
};

class ShouldManageOrder : public testing::TestWithParam<Asked> {};

// Which properties were asked for shows how far the checking went.
TEST_P(ShouldManageOrder, TheFirstRuleThatAppliesEndsTheChecking) {
  const Rule& rule = rules().at(GetParam().rule);
  Situation situation;
  situation.boost();
  rule.apply(situation);
  situation.decide();
  EXPECT_EQ(situation.asked->asked, GetParam().properties) << rule.what;
}

const Names upToPolicy{"policy"};
const Names upToTerminated{"policy", "terminated"};
const Names upToTerminatedAndItsNewName{"policy", "terminated", "name", "bundle identifier"}; // for the list
const Names upToIdentifier{"policy", "terminated", "bundle identifier"};

INSTANTIATE_TEST_SUITE_P(Each, ShouldManageOrder,
                         testing::Values(Asked{0, {}}, Asked{1, upToPolicy}, Asked{2, upToTerminated},
                                         Asked{3, upToTerminated}, Asked{4, upToTerminatedAndItsNewName},
                                         Asked{5, upToTerminated}, Asked{6, upToIdentifier},
                                         Asked{7, upToIdentifier}));

TEST(ShouldManageOrderOfTheLastTwo, ABoostAppIsTurnedAwayBeforeItsProcessesAreCompared) {
  Situation situation;
  situation.boost();
  situation.app->spec.bundlePath = "/x/steamapps/other";
  situation.decide();
  // Nothing of the app is read after its paths: neither its identity nor its name for the list.
  EXPECT_EQ(situation.asked->asked.back(), "bundle path");
}

class ProtectionTest : public EngineTest {};

TEST_F(ProtectionTest, EverySystemAppIsLeftAlone) {
  const std::set<std::string> expected{"com.apple.finder",
                                       "com.apple.dock",
                                       "com.apple.systemuiserver",
                                       "com.apple.controlcenter",
                                       "com.apple.notificationcenterui",
                                       "com.apple.ActivityMonitor",
                                       "com.apple.loginwindow"};
  EXPECT_EQ(systemBundleIDs(), expected);
  start();
  for (const std::string& identifier : expected) open(AppSpec{.name = identifier, .bundleID = identifier});
  open(AppSpec{.name = "No finder", .bundleID = "com.apple.Finder"});
  playGame();
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("No finder"));
}

TEST_F(ProtectionTest, AccessoryAndBackgroundAppsAreNeverTouched) {
  start();
  AppSpec tray = named("Tray");
  tray.policy = ActivationPolicy::accessory;
  AppSpec agent = named("Agent");
  agent.policy = ActivationPolicy::prohibited;
  open(tray);
  open(agent);
  open("Mail");
  playGame();
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Mail"));
}

TEST_F(ProtectionTest, AnAppWithoutABundleIdentifierCannotBeOnTheListButTheOtherRulesHold) {
  start();
  settings->protectedApps.set({"Notes", ""});
  open(AppSpec{.name = "Notes"});
  const SimulatedAppRef radio = open(AppSpec{.name = "Radio"});
  machine.audio.heard = {radio->processIdentifier()};
  playGame();
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Notes"));
}

TEST_F(ProtectionTest, AnAppThatIsHeardThroughAChildIsShielded) {
  start();
  const SimulatedAppRef music = open("Music");
  machine.audio.heard = {childOf(childOf(music))};
  playGame();
  EXPECT_THAT(engine->managedNames.get(), IsEmpty());
  EXPECT_FALSE(isSlow(music));
}

TEST_F(ProtectionTest, WhereTheSystemCannotTellWhoIsHeardOnlyAssertionsCount) {
  start();
  const SimulatedAppRef music = open("Music");
  const SimulatedAppRef video = open("Video");
  machine.audio.heard = {music->processIdentifier()};
  machine.audio.canTell = false;
  machine.power.held = {{video->processIdentifier(), "PreventUserIdleDisplaySleep"}};
  machine.calls.startTrace();
  playGame();
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Music"));
  EXPECT_EQ(count(machine.calls.takeTrace(), "audio.probe"), 0U);
}

TEST_F(ProtectionTest, TheThreeAssertionsAgainstSleepShieldAndOthersDoNot) {
  SimulatedPower& power = machine.power;
  power.held = {{10, "PreventUserIdleSystemSleep"},  {11, "PreventSystemSleep"},
                {12, "PreventUserIdleDisplaySleep"}, {13, "PreventDiskIdle"},
                {14, "preventsystemsleep"},          {15, ""},
                {13, "NetworkClientActive"},         {16, "PreventDiskIdle"},
                {16, "PreventSystemSleep"}};
  EXPECT_THAT(assertionPIDs(power), ElementsAre(10, 11, 12, 16));
}

TEST_F(ProtectionTest, TheShieldIsTheUnionOfBothProbes) {
  machine.audio.heard = {10, 11};
  machine.power.held = {{11, "PreventSystemSleep"}, {12, "PreventSystemSleep"}};
  const ShieldedPIDs shielded = shieldedPIDs(machine.audio, machine.power);
  EXPECT_THAT(shielded.heard, ElementsAre(10, 11));
  EXPECT_THAT(shielded.keepsAwake, ElementsAre(11, 12));
}

TEST_F(ProtectionTest, AProbeThatFailsShieldsNobody) {
  start();
  const SimulatedAppRef music = open("Music");
  machine.audio.heard = {music->processIdentifier()};
  machine.calls.refuse(Operation::probeAudio);
  machine.calls.refuse(Operation::probeAssertions);
  playGame();
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Music"));
}

TEST_F(ProtectionTest, TheStoreThatStartedTheGameIsNotSlowedWhileTheGameRuns) {
  start();
  const SimulatedAppRef store = open("Store");
  const Pid helper = childOf(store);
  open("Mail");
  AppSpec game = aGame();
  game.parent = helper;
  openInFront(game);
  EXPECT_THAT(engine->managedNames.get(), ElementsAre("Mail"));
  EXPECT_FALSE(isSlow(helper));
}

TEST_F(ProtectionTest, TheProbesRunOncePerBoostAndAgainForEachLaterApp) {
  start();
  for (const char* name : {"A", "B", "C"}) open(name);
  machine.calls.startTrace();
  playGame();
  EXPECT_EQ(count(machine.calls.takeTrace(), "audio.probe"), 1U);
  open("D");
  EXPECT_EQ(count(machine.calls.takeTrace(), "audio.probe"), 1U);
}

TEST_F(ProtectionTest, AnAppThatIsHeardLaterStaysInTheBandUntilTheNextEvent) {
  start();
  const SimulatedAppRef music = open("Music");
  const SimulatedAppRef game = playGame();
  machine.audio.heard = {music->processIdentifier()};
  EXPECT_TRUE(isSlow(music));
  machine.activate(music);
  machine.activate(game);
  EXPECT_FALSE(isSlow(music)) << "the probes are fresh when it leaves the front";
}

} // namespace
} // namespace vantle
