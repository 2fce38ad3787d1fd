// SPDX-License-Identifier: MIT
#include "tests/simulation/linux/LinuxDesktop.h"

#include <array>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantle {

namespace {

using std::chrono::milliseconds;
using Mood = SimulatedServiceManager::Mood;

struct Managers : testing::Test {
  Pid start() { return machine.processes.spawn({.executable = "/usr/bin/mail"}); }
  std::string unit(Pid pid) const { return "app-mail-" + std::to_string(pid) + ".scope"; }
  std::string folder(Pid pid) { return "/sys/fs/cgroup" + *desktop.kernel.units.pathOf(pid); }
  std::optional<std::string> idle(Pid pid) { return desktop.kernel.read(folder(pid) + "/cpu.idle"); }
  bool weigh(Pid pid, std::uint64_t weight) {
    const auto answer = std::make_shared<bool>(false); // which may come long after this
    manager->setWeight(unit(pid), weight, [answer](bool done) { *answer = done; });
    manager->finish(desktop.kernel.now() + milliseconds(200));
    return *answer;
  }
  void passBarriers(int count) {
    for (; count > 0; --count) {
      manager->barrier([](bool) {});
      manager->finish(desktop.kernel.now() + milliseconds(200));
    }
  }

  SimulatedMachine machine;
  LinuxDesktop desktop{machine, {.placement = LinuxPlacement::ownUnits}};
  std::unique_ptr<ServiceManager> manager = desktop.manager.connect();
};

TEST_F(Managers, TheFirstWeightIsInForceOnlyAfterSomeSteps) {
  const Pid app = start();
  EXPECT_EQ(idle(app), std::nullopt) << "the controller is off";
  EXPECT_TRUE(weigh(app, 0));
  EXPECT_EQ(idle(app), std::nullopt);
  passBarriers(2);
  EXPECT_EQ(idle(app), "1\n");
  EXPECT_TRUE(desktop.kernel.isSlow(app));
  const Pid other = start();
  EXPECT_EQ(idle(other), "0\n");
  EXPECT_TRUE(weigh(other, 0));
  EXPECT_EQ(idle(other), "1\n") << "it is on by now";
  EXPECT_TRUE(weigh(app, ServiceManager::noWeight));
  EXPECT_TRUE(weigh(other, ServiceManager::noWeight));
  EXPECT_EQ(idle(app), std::nullopt) << "it goes off with the last weight";
  EXPECT_THAT(desktop.kernel.differences(), testing::IsEmpty());
}

TEST_F(Managers, WithoutTheControllerItSaysDoneAndTheKernelIsNotTold) {
  SimulatedMachine bare;
  LinuxDesktop poor(bare, {.placement = LinuxPlacement::ownUnits, .delegatesCpu = false});
  const Pid app = bare.processes.spawn({.executable = "/usr/bin/mail"});
  const auto connection = poor.manager.connect();
  std::optional<bool> answer;
  connection->setWeight(unit(app), 0, [&answer](bool done) { answer = done; });
  connection->finish(poor.kernel.now());
  EXPECT_EQ(answer, true);
  EXPECT_FALSE(poor.kernel.isSlow(app));
}

TEST_F(Managers, ALiarRemembersWhatItNeverDid) {
  const Pid app = start();
  desktop.manager.mood = Mood::lying;
  EXPECT_TRUE(weigh(app, 0));
  passBarriers(4);
  EXPECT_FALSE(desktop.kernel.isSlow(app));
  std::optional<std::uint64_t> weight;
  manager->getWeight(unit(app), [&weight](std::optional<std::uint64_t> now) { weight = now; });
  manager->finish(desktop.kernel.now());
  EXPECT_EQ(weight, 0U);
}

TEST_F(Managers, ARefusalChangesNothing) {
  const Pid app = start();
  desktop.manager.mood = Mood::refusing;
  EXPECT_FALSE(weigh(app, 0));
  EXPECT_THAT(desktop.kernel.differences(), testing::IsEmpty());
}

TEST_F(Managers, WhoIsSilentIsWaitedForUntilTheDeadlineAndServesLater) {
  const Pid app = start();
  desktop.manager.mood = Mood::silent;
  const auto before = machine.clock.now();
  EXPECT_FALSE(weigh(app, 0));
  EXPECT_TRUE(manager->isLate());
  EXPECT_EQ(machine.clock.now() - before, milliseconds(200));
  desktop.manager.mood = Mood::obedient;
  desktop.loop.run(milliseconds(0));
  EXPECT_FALSE(manager->isLate());
  EXPECT_THAT(desktop.kernel.differences(), testing::SizeIs(1));
}

TEST_F(Managers, WhoIsLateServesWhenTheTimeHasCome) {
  const Pid app = start();
  desktop.manager.mood = Mood::late;
  EXPECT_FALSE(weigh(app, 0));
  EXPECT_TRUE(manager->isLate());
  EXPECT_TRUE(manager->finish(desktop.kernel.now() + milliseconds(200)));
  EXPECT_FALSE(manager->isLate());
}

TEST_F(Managers, AnOrderOutlivesItsSenderAndAnAnswerDoesNot) {
  const Pid app = start();
  bool isHeard = false;
  manager->setWeight(unit(app), 0, [&isHeard](bool) { isHeard = true; });
  manager = desktop.manager.connect();
  passBarriers(2);
  EXPECT_FALSE(isHeard);
  EXPECT_TRUE(desktop.kernel.isSlow(app));
}

TEST_F(Managers, AScopeTakesItsProcessesAfterTheAnswerAndEndsWithTheLast) {
  const Pid app = start();
  const Pid other = start();
  const std::array<Pid, 1> pids{app};
  std::optional<bool> answer;
  const auto done = [&answer](bool isDone) { answer = isDone; };
  manager->startScope("app-vantle-a-1.scope", pids, done);
  manager->finish(desktop.kernel.now());
  EXPECT_EQ(answer, true);
  EXPECT_FALSE(desktop.kernel.unifiedPath(app).ends_with("app-vantle-a-1.scope"));
  manager->attach("app-vantle-a-1.scope", other, done);
  manager->finish(desktop.kernel.now());
  EXPECT_TRUE(desktop.kernel.unifiedPath(app).ends_with("app-vantle-a-1.scope"));
  EXPECT_TRUE(desktop.kernel.unifiedPath(other).ends_with("app-vantle-a-1.scope"));
  EXPECT_FALSE(desktop.kernel.units.pathOfUnit(unit(app))) << "its scope lost its last process";

  manager->startScope("app-vantle-a-1.scope", pids, done);
  manager->finish(desktop.kernel.now());
  EXPECT_EQ(answer, false) << "it is there already";
  machine.exit(app);
  machine.exit(other);
  EXPECT_FALSE(desktop.kernel.units.pathOfUnit("app-vantle-a-1.scope"));
  manager->startScope("app-vantle-a-2.scope", pids, done);
  manager->finish(desktop.kernel.now());
  EXPECT_EQ(answer, false) << "one of them is gone";
}

TEST_F(Managers, AServiceKeepsItsWeightThroughARestart) {
  const Pid first = start();
  desktop.kernel.place(first, desktop.kernel.units.appSlice() + "/mail.service");
  manager->setWeight("mail.service", 0, [](bool) {});
  manager->finish(desktop.kernel.now());
  passBarriers(2);
  ASSERT_TRUE(desktop.kernel.isSlow(first));
  const Pid second = desktop.manager.restartService("mail.service", "/usr/bin/mail");
  EXPECT_EQ(std::as_const(desktop.kernel).find(first), nullptr);
  EXPECT_EQ(desktop.kernel.effectOf(second), "unit mail.service");
}

TEST_F(Managers, TheKernelShowsTheTreeAsFoldersAndFiles) {
  const Pid app = start();
  const std::string slice = "/sys/fs/cgroup" + desktop.kernel.units.appSlice();
  const auto folders = desktop.kernel.folders(slice);
  ASSERT_TRUE(folders);
  EXPECT_THAT(*folders, testing::Contains(unit(app)));
  EXPECT_EQ(desktop.kernel.read(folder(app) + "/cgroup.procs"), std::to_string(app) + "\n");
  EXPECT_FALSE(desktop.kernel.exists(folder(app) + "/cpu.weight"));
  EXPECT_TRUE(desktop.kernel.exists("/sys/fs/cgroup/cgroup.controllers"));
  machine.exit(app);
  EXPECT_FALSE(desktop.kernel.exists(slice + "/" + unit(app)));
}

} // namespace

} // namespace vantle
