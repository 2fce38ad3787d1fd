// SPDX-License-Identifier: MIT
#include "platform/darwin/workspace/CocoaWorkspace.h"

#include "tests/unit/cocoa/CocoaFixture.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>

namespace vantle {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CocoaApps : public CocoaTest {
 protected:
  // What was told of an app, by its pid.
  std::vector<Pid>& told(WorkspaceEvent event) {
    auto& heard = m_heard[event];
    m_registrations.push_back(
        workspace.observe(event, [&heard](const AppRef& app) { heard.push_back(app->processIdentifier()); }));
    return heard;
  }
  AppSpec accessory(const std::string& name) {
    AppSpec spec = named(name);
    spec.policy = ActivationPolicy::accessory;
    return spec;
  }

  CocoaWorkspace& workspace = cocoaParts->workspace;

 private:
  std::map<WorkspaceEvent, std::vector<Pid>> m_heard;
  std::vector<std::unique_ptr<Registration>> m_registrations;
};

TEST_F(CocoaApps, AreListedAndAreTheSameObjectsEveryTime) {
  AppSpec mail = named("Mail");
  mail.bundlePath = "/Applications/Mail.app";
  mail.executablePath = "/Applications/Mail.app/Contents/MacOS/Mail";
  mail.pid = 100;
  open(mail);
  AppSpec bare = {.pid = 101}; // neither a bundle nor a name
  bare.policy = ActivationPolicy::prohibited;
  open(bare);
  const std::vector<AppRef> apps = workspace.runningApplications();
  ASSERT_EQ(apps.size(), 2U);
  EXPECT_EQ(apps[0]->processIdentifier(), 100);
  EXPECT_EQ(apps[0]->bundleIdentifier(), "org.example.Mail");
  EXPECT_EQ(apps[0]->localizedName(), "Mail");
  EXPECT_EQ(apps[0]->bundlePath(), "/Applications/Mail.app");
  EXPECT_EQ(apps[0]->executablePath(), "/Applications/Mail.app/Contents/MacOS/Mail");
  EXPECT_EQ(apps[0]->iconName(), "/Applications/Mail.app");
  EXPECT_EQ(apps[0]->activationPolicy(), ActivationPolicy::regular);
  EXPECT_EQ(apps[1]->bundleIdentifier(), std::nullopt);
  EXPECT_EQ(apps[1]->localizedName(), std::nullopt);
  EXPECT_EQ(apps[1]->bundlePath(), std::nullopt);
  EXPECT_EQ(apps[1]->executablePath(), std::nullopt);
  EXPECT_EQ(apps[1]->bundleCategory(), std::nullopt);
  EXPECT_EQ(apps[1]->activationPolicy(), ActivationPolicy::prohibited);
  EXPECT_EQ(workspace.runningApplications(), apps);
  EXPECT_EQ(workspace.runningApplication(101), apps[1]);
  EXPECT_EQ(workspace.runningApplication(102), nullptr);
}

TEST_F(CocoaApps, TheOneInFrontIsKnownAgain) {
  EXPECT_EQ(workspace.frontmostApplication(), nullptr);
  const SimulatedAppRef mail = openAt(100, "Mail");
  machine.activate(mail);
  const AppRef front = workspace.frontmostApplication();
  ASSERT_NE(front, nullptr);
  EXPECT_EQ(front, workspace.runningApplications().front());
  EXPECT_TRUE(front->isActive());
  machine.activate(nullptr);
  EXPECT_FALSE(front->isActive());
}

TEST_F(CocoaApps, WithoutAProcessAreNone) {
  cocoa.withoutPid.insert(100);
  const SimulatedAppRef ghost = openAt(100, "Ghost");
  std::vector<Pid>& activated = told(WorkspaceEvent::activated);
  machine.activate(ghost);
  EXPECT_THAT(activated, IsEmpty());
  EXPECT_THAT(workspace.runningApplications(), IsEmpty());
  EXPECT_EQ(workspace.frontmostApplication(), nullptr);
  EXPECT_EQ(workspace.runningApplication(100), nullptr);
  cocoa.withoutPid.clear();
  EXPECT_EQ(workspace.runningApplications().size(), 1U) << "it has one now";
}

TEST_F(CocoaApps, EventsAreToldToWhoeverObservesThem) {
  std::vector<Pid>& activated = told(WorkspaceEvent::activated);
  std::vector<Pid>& launched = told(WorkspaceEvent::launched);
  std::vector<Pid>& terminated = told(WorkspaceEvent::terminated);
  const SimulatedAppRef mail = openAt(100, "Mail");
  openAt(101, "Notes");
  machine.activate(mail);
  machine.exit(101);
  EXPECT_THAT(launched, ElementsAre(100, 101));
  EXPECT_THAT(activated, ElementsAre(100));
  EXPECT_THAT(terminated, ElementsAre(101));
}

TEST_F(CocoaApps, AnEventWithoutAnAppIsNone) {
  std::vector<Pid>& activated = told(WorkspaceEvent::activated);
  cocoa.postActivationOfNobody();
  cocoa.postActivationOfSomethingElse();
  EXPECT_THAT(activated, IsEmpty());
}

TEST_F(CocoaApps, NobodyHearsAfterTheEndOfTheRegistrationOrOfTheWorkspace) {
  int heard = 0;
  auto registration = workspace.observe(WorkspaceEvent::activated, [&](const AppRef&) { ++heard; });
  const SimulatedAppRef mail = openAt(100, "Mail");
  machine.activate(mail);
  registration.reset();
  machine.activate(mail);
  EXPECT_EQ(heard, 1);
  registration = workspace.observe(WorkspaceEvent::activated, [&](const AppRef&) { ++heard; });
  cocoaParts.reset();
  machine.activate(mail);
  machine.quit(mail);
  EXPECT_EQ(heard, 1);
}

// The object of the notice has neither a pid nor a name any more.
TEST_F(CocoaApps, AnEndIsToldOnceAndWithWhatTheAppWas) {
  for (const bool exitsAreFirst : {true, false}) {
    for (const bool endsAreTold : {true, false}) {
      cocoa.exitsAreFirst = exitsAreFirst;
      cocoa.endsAreTold = endsAreTold;
      openAt(100, "Mail");
      const AppRef mail = workspace.runningApplication(100);
      std::vector<std::string> ended;
      const auto registration = workspace.observe(WorkspaceEvent::terminated, [&](const AppRef& app) {
        EXPECT_EQ(app, mail);
        ended.push_back(std::to_string(app->processIdentifier()) + app->localizedName().value_or("?"));
        EXPECT_TRUE(app->isTerminated());
        EXPECT_THAT(workspace.runningApplications(), IsEmpty());
        EXPECT_EQ(workspace.runningApplication(100), nullptr);
      });
      machine.exit(100);
      EXPECT_THAT(ended, ElementsAre("100Mail"));
      EXPECT_EQ(mail->bundleIdentifier(), "org.example.Mail");
      EXPECT_FALSE(mail->isActive());
      EXPECT_FALSE(mail->terminate());
      EXPECT_FALSE(mail->canComeToFront());
      EXPECT_THAT(workspace.runningApplications(), IsEmpty());
      EXPECT_EQ(kernel->sources(), 0U) << "one is still watched";
    }
  }
}

// The process may be gone before the system's list says so.
TEST_F(CocoaApps, OneWhoseProcessIsOverIsOnNoListHoweverLateThatIsTold) {
  machine.delivery = EventDelivery::onDemand;
  const SimulatedAppRef mail = openAt(100, "Mail");
  machine.activate(mail);
  machine.workspace.deliverAll();
  std::vector<Pid>& activated = told(WorkspaceEvent::activated);
  std::vector<Pid>& terminated = told(WorkspaceEvent::terminated);
  const AppRef known = workspace.frontmostApplication();
  ASSERT_NE(known, nullptr);
  machine.activate(mail);
  machine.exit(100);
  EXPECT_FALSE(known->isTerminated()) << "nobody has told that yet";
  kernel->tellOfExits();
  EXPECT_THAT(terminated, ElementsAre(100));
  EXPECT_TRUE(known->isTerminated());
  EXPECT_THAT(workspace.runningApplications(), IsEmpty());
  EXPECT_EQ(workspace.frontmostApplication(), nullptr) << "nor in front, where the system has it";
  machine.workspace.deliverAll(); // that it was in front, and that it is over
  EXPECT_THAT(activated, IsEmpty());
  EXPECT_THAT(terminated, ElementsAre(100)) << "once";
}

TEST_F(CocoaApps, ThoseWithoutADockIconAreToldOfByTheirProcess) {
  AppSpec agent = accessory("Agent");
  agent.pid = 100;
  open(agent);
  const std::vector<AppRef> apps = workspace.runningApplications();
  ASSERT_EQ(apps.size(), 1U);
  EXPECT_EQ(apps.front()->activationPolicy(), ActivationPolicy::accessory);
  std::vector<Pid>& terminated = told(WorkspaceEvent::terminated);
  machine.exit(100);
  EXPECT_THAT(terminated, ElementsAre(100));
}

TEST_F(CocoaApps, AProcessIsWatchedWithOneSourceFromTheFirstSightOn) {
  kernel->startTrace();
  openAt(100, "Mail");
  workspace.runningApplications();
  EXPECT_THAT(calls(),
              ElementsAre("dispatch_source_create(PROC, 100, 2147483648, main)", "dispatch_set_context()",
                          "dispatch_source_set_event_handler_f()", "dispatch_resume()"));
}

TEST_F(CocoaApps, WithoutSourcesTheNoticesAreEnough) {
  kernel->makesSources = false;
  openAt(100, "Mail");
  std::vector<Pid>& terminated = told(WorkspaceEvent::terminated);
  machine.exit(100);
  EXPECT_THAT(terminated, ElementsAre(100));
}

TEST_F(CocoaApps, APidThatIsUsedAgainIsAnotherApp) {
  openAt(100, "Mail");
  const AppRef first = workspace.runningApplication(100);
  machine.exit(100);
  later();
  openAt(100, "Notes");
  const AppRef second = workspace.runningApplication(100);
  EXPECT_NE(first, second);
  EXPECT_TRUE(first->isTerminated());
  EXPECT_EQ(first->localizedName(), "Mail");
  EXPECT_EQ(second->localizedName(), "Notes");
}

TEST_F(CocoaApps, AreAskedToQuitAndToComeToTheFront) {
  AppSpec stubborn = named("Stubborn");
  stubborn.quitReaction = QuitReaction::refuses;
  stubborn.pid = 100;
  open(stubborn);
  openAt(101, "Mail");
  const AppRef app = workspace.runningApplication(100);
  EXPECT_TRUE(app->canComeToFront());
  EXPECT_TRUE(app->bringToFront());
  EXPECT_EQ(workspace.frontmostApplication(), app);
  EXPECT_TRUE(app->terminate()) << "it was asked";
  EXPECT_FALSE(app->isTerminated());
  machine.calls.refuse(Operation::terminateApp, 100);
  EXPECT_FALSE(app->terminate());
  EXPECT_TRUE(workspace.runningApplication(101)->terminate());
  EXPECT_EQ(workspace.runningApplication(101), nullptr);
  AppSpec agent = accessory("Agent");
  agent.pid = 102;
  open(agent);
  EXPECT_FALSE(workspace.runningApplication(102)->canComeToFront());
  EXPECT_FALSE(workspace.runningApplication(102)->bringToFront());
}

TEST_F(CocoaApps, AreGivenTheFrontByAProgramThatHasIt) {
  openAt(100, "Mail");
  const AppRef notes = workspace.runningApplication(openAt(101, "Notes")->processIdentifier());
  cocoa.isInFront = true;
  EXPECT_TRUE(workspace.runningApplication(100)->bringToFront());
  EXPECT_EQ(workspace.frontmostApplication(), workspace.runningApplication(100));
  cocoa.isInFront = true;
  EXPECT_TRUE(notes->bringToFront());
  EXPECT_EQ(workspace.frontmostApplication(), notes) << "not the one that it has yielded to once";
}

// Real bundles on a real disk.
TEST_F(CocoaApps, TheCategoryIsWhatTheBundleSays) {
  const std::filesystem::path folder = testing::TempDir() + "cocoa-bundles";
  std::filesystem::remove_all(folder);
  Pid pid = 100;
  const auto categoryOf = [&](const std::string& name, const std::string& entry) {
    const std::filesystem::path bundle = folder / (name + ".app");
    std::filesystem::create_directories(bundle / "Resources"); // where the free Foundation looks
    std::ofstream(bundle / "Resources" / "Info.plist")
        << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>" << entry
        << "</dict></plist>\n";
    AppSpec spec = named(name);
    spec.bundlePath = bundle.string();
    spec.pid = ++pid;
    open(spec);
    return workspace.runningApplication(pid)->bundleCategory();
  };
  const std::string key = "<key>LSApplicationCategoryType</key>";
  EXPECT_EQ(categoryOf("Game", key + "<string>public.app-category.action-games</string>"),
            "public.app-category.action-games");
  EXPECT_EQ(categoryOf("Odd", key + "<integer>7</integer>"), std::nullopt);
  EXPECT_EQ(categoryOf("Plain", ""), std::nullopt);
  std::filesystem::remove_all(folder);
  EXPECT_EQ(workspace.runningApplication(pid)->bundleCategory(), std::nullopt) << "it is gone";
}

TEST_F(CocoaApps, ABoostGoesThroughThem) {
  openAt(100, "Mail");
  AppSpec spec = aGame();
  spec.pid = 200;
  const SimulatedAppRef game = open(spec);
  startOnCocoa();
  settings->userGames.set({"org.example.Asteroids"});
  machine.activate(game);
  EXPECT_TRUE(isSlow(100));
  openAt(101, "Late");
  EXPECT_TRUE(isSlow(101));
  machine.quit(game);
  EXPECT_FALSE(isSlow(100));
  EXPECT_FALSE(isSlow(101));
  EXPECT_EQ(engine->activeGame.get(), nullptr);
}

// Nothing but the process tells of it, and the list has it still.
TEST_F(CocoaApps, ABoostForAnAppWithoutADockIconEndsWithItsProcess) {
  machine.delivery = EventDelivery::onDemand;
  openAt(100, "Mail");
  AppSpec spec = accessory("Asteroids");
  spec.pid = 200;
  const SimulatedAppRef game = open(spec);
  machine.workspace.deliverAll();
  startOnCocoa();
  settings->userGames.set({"org.example.Asteroids"});
  machine.activate(game);
  machine.workspace.deliverAll();
  EXPECT_TRUE(isSlow(100));
  machine.quit(game);
  kernel->tellOfExits();
  EXPECT_FALSE(isSlow(100));
  EXPECT_EQ(engine->activeGame.get(), nullptr);
}

} // namespace
} // namespace vantle
