// SPDX-License-Identifier: MIT
// Who keeps the machine awake, asked of a real login daemon.
#include "platform/linux/power/DesktopPowerAssertions.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/Logind.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <string>

namespace vantle::desktop {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::chrono::seconds farTooLong{5}; // the daemons' own limits are 25 s and more

class NoProcesses final : public ProcessTable {
 public:
  std::optional<ProcessRecord> record(Pid) const override { return {}; }
  std::vector<ProcessRecord> scan() const override { return {}; }
  std::optional<std::string> executablePathBytes(Pid) const override { return {}; }
  std::optional<std::uint64_t> footprint(Pid) const override { return {}; }
  std::optional<std::uint64_t> cpuTime(Pid) const override { return {}; }
  std::optional<int> schedulerPriority(Pid) const override { return {}; }
};

struct Power : testing::Test {
  void SetUp() override {
    if (!Logind::isPossible()) GTEST_SKIP() << "no login daemon, or no namespaces for this user";
    logind.emplace();
    system.emplace(loop, logind->bus().address());
    power.emplace(*system, session, HolderSources{processes});
  }

  std::set<std::string> typesOf(const Program& program) {
    std::set<std::string> types;
    for (const PowerAssertions::Assertion& assertion : power->assertions()) {
      if (assertion.pid == program.pid()) types.insert(assertion.type);
    }
    return types;
  }
  void expectHeld(const Program& program) {
    EXPECT_TRUE(waitUntil([&] { return !typesOf(program).empty(); }));
  }

  PollEventLoop loop;
  NoProcesses processes;
  std::optional<Logind> logind;
  std::optional<BusConnection> system;
  BusConnection session{loop, "unix:path=/nonexistent"};
  std::optional<DesktopPowerAssertions> power;
};

TEST_F(Power, TellsKindsAndModesApart) {
  EXPECT_THAT(power->assertions(), IsEmpty());
  Program& delaying = logind->inhibit("shutdown:sleep", "delay");
  Program& other = logind->inhibit("shutdown:handle-lid-switch", "block");
  Program& sleep = logind->inhibit("sleep", "block");
  Program& idle = logind->inhibit("idle", "block");
  Program& last = logind->inhibit("handle-lid-switch:idle:sleep", "block");
  for (const Program* program : {&sleep, &idle, &last}) expectHeld(*program);
  // All five are there, or the first two would be absent for no reason.
  ASSERT_TRUE(waitUntil([&] {
    return logind->run({"sh", "-c", "test $(systemd-inhibit --list --no-legend | wc -l) = 5"});
  }));

  EXPECT_THAT(typesOf(delaying), IsEmpty());
  EXPECT_THAT(typesOf(other), IsEmpty());
  EXPECT_THAT(typesOf(sleep), ElementsAre("PreventSystemSleep"));
  EXPECT_THAT(typesOf(idle), ElementsAre("PreventUserIdleDisplaySleep", "PreventUserIdleSystemSleep"));
  EXPECT_THAT(typesOf(last),
              ElementsAre("PreventSystemSleep", "PreventUserIdleDisplaySleep", "PreventUserIdleSystemSleep"));

  idle.signal(SIGTERM);
  EXPECT_TRUE(waitUntil([&] { return typesOf(idle).empty(); }));
}

TEST_F(Power, ADaemonThatHangsOrDiesHoldsNothing) {
  expectHeld(logind->inhibit("idle", "block"));
  logind->daemon().signal(SIGSTOP);
  const auto start = std::chrono::steady_clock::now();
  for (int at = 0; at < 100; ++at) EXPECT_THAT(power->assertions(), IsEmpty());
  EXPECT_LT(std::chrono::steady_clock::now() - start, farTooLong);
  logind->daemon().signal(SIGCONT);
  EXPECT_TRUE(waitUntil([&] { return !power->assertions().empty(); }));

  logind->daemon().kill();
  EXPECT_THAT(power->assertions(), IsEmpty());
  logind->start();
  expectHeld(logind->inhibit("sleep", "block"));
}

TEST_F(Power, ABusThatHangsOrDiesHoldsNothing) {
  expectHeld(logind->inhibit("idle", "block"));
  logind->bus().daemon().signal(SIGSTOP);
  const auto start = std::chrono::steady_clock::now();
  for (int at = 0; at < 100; ++at) EXPECT_THAT(power->assertions(), IsEmpty());
  EXPECT_LT(std::chrono::steady_clock::now() - start, farTooLong);

  logind->bus().kill();
  EXPECT_THAT(power->assertions(), IsEmpty());
  EXPECT_THAT(power->assertions(), IsEmpty());
  logind->daemon().kill(); // it would not come back to a new bus by itself at once
  logind->bus().start();
  logind->start();
  expectHeld(logind->inhibit("sleep", "block"));
}

} // namespace
} // namespace vantle::desktop
