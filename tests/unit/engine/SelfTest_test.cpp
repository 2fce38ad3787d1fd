// SPDX-License-Identifier: MIT
#include "engine/SelfTest.h"

#include "platform/simulated/SimulatedMachine.h"

#include <algorithm>
#include <chrono>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vantle {
namespace {

using testing::ElementsAre;

constexpr const char* announcement =
    "Vantle self-test: takes about 8 seconds, the CPU runs at full load meanwhile.\n";
constexpr const char* works = "\nRESULT: Works. Backgrounding is effective on this Mac and can be undone.";
constexpr const char* notAsExpected = "\nRESULT: Not as expected.";
constexpr const char* couldNotStart = "ERROR: could not start the test processes.";

class SelfTestTest : public testing::Test {
 protected:
  SimulatedMachine machine;
  std::vector<std::string> lines;

  int run(const std::string& desktop = {}) {
    Machine ports = machine.ports();
    return SelfTest(
               ports, [this](const std::string& line) { lines.push_back(line); }, desktop)
        .run();
  }
  // The share that the processes in the band get, in thousandths of what the others get.
  void giveBand(std::uint64_t perMille) { machine.processes.cpu = {1000, perMille}; }
  std::size_t busyProcesses() const {
    const auto& all = machine.processes.all();
    return static_cast<std::size_t>(
        std::count_if(all.begin(), all.end(), [](const auto& entry) { return entry.second.isBusy; }));
  }
};

TEST_F(SelfTestTest, OnAMachineWhereItWorksTheReportReadsSo) {
  machine.host.processors = 8;
  giveBand(31);
  EXPECT_EQ(run(), 0);
  EXPECT_THAT(lines,
              ElementsAre(announcement, "1. Backgrounding: 8/8 calls succeeded, flag seen on 8/8 processes",
                          "2. Scheduler priority: normal 20, background 39",
                          "3. CPU share: background processes got 3% of the CPU the normal ones got",
                          "4. Restore: 8/8 processes back to normal", works));
  EXPECT_EQ(busyProcesses(), 0U);
}

TEST_F(SelfTestTest, TellsLastWhereAppsAreSeen) {
  EXPECT_EQ(run("X11"), 0);
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines.at(lines.size() - 2), works);
  EXPECT_EQ(lines.back(), "Desktop: X11");
}

struct Share {
  std::uint64_t perMille;
  const char* percent;
  int status;
};

class SelfTestShare : public SelfTestTest, public testing::WithParamInterface<Share> {};

TEST_P(SelfTestShare, IsTruncatedAndMustBeBelowHalf) {
  giveBand(GetParam().perMille);
  EXPECT_EQ(run(), GetParam().status);
  EXPECT_EQ(lines.at(3), std::string("3. CPU share: background processes got ") + GetParam().percent +
                             "% of the CPU the normal ones got");
  EXPECT_EQ(lines.back(), GetParam().status == 0 ? works : notAsExpected);
}

INSTANTIATE_TEST_SUITE_P(Table, SelfTestShare,
                         testing::Values(Share{0, "0", 0}, Share{9, "0", 0}, Share{490, "49", 0},
                                         Share{499, "49", 0}, Share{500, "50", 1}, Share{501, "50", 1},
                                         Share{1000, "100", 1}, Share{1500, "150", 1}));

TEST_F(SelfTestTest, ANormalGroupWithoutAnyTimeCountsAs100Percent) {
  machine.processes.cpu = {0, 0};
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(lines.at(3), "3. CPU share: background processes got 100% of the CPU the normal ones got");
  EXPECT_EQ(lines.back(), notAsExpected);
}

TEST_F(SelfTestTest, OnlyTheTimeBetweenTheTwoReadingsCounts) {
  giveBand(1000);
  const auto account = machine.clock.onAdvance;
  machine.clock.onAdvance = [&](std::chrono::microseconds duration) {
    account(duration);
    giveBand(100); // from the end of the first second, in which the group had its full share
  };
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(lines.at(3), "3. CPU share: background processes got 10% of the CPU the normal ones got");
}

TEST_F(SelfTestTest, RefusedCallsAreCounted) {
  machine.host.processors = 2;
  machine.calls.refuseNext(Operation::enterBand, 2);
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(lines.at(1), "1. Backgrounding: 1/2 calls succeeded, flag seen on 1/2 processes");
  EXPECT_EQ(lines.at(4), "4. Restore: 2/2 processes back to normal");
  EXPECT_EQ(lines.back(), notAsExpected);
}

TEST_F(SelfTestTest, CallsWithoutEffectShowInTheFlags) {
  machine.band.isEffective = false;
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(lines.at(1), "1. Backgrounding: 2/2 calls succeeded, flag seen on 0/2 processes");
  EXPECT_EQ(lines.back(), notAsExpected);
}

TEST_F(SelfTestTest, AFlagThatCannotBeReadIsNotSeenButDoesNotHinderTheRestore) {
  machine.calls.refuse(Operation::isInBand);
  giveBand(0);
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(lines.at(1), "1. Backgrounding: 2/2 calls succeeded, flag seen on 0/2 processes");
  EXPECT_EQ(lines.at(4), "4. Restore: 2/2 processes back to normal");
}

TEST_F(SelfTestTest, PrioritiesThatCannotBeReadAreQuestionMarksAndNoFailure) {
  machine.calls.refuse(Operation::readPriority);
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(lines.at(2), "2. Scheduler priority: normal ?, background ?");
}

TEST_F(SelfTestTest, ARefusedRestoreIsNotAsExpected) {
  machine.calls.refuseNext(Operation::leaveBand, 1);
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(lines.at(4), "4. Restore: 1/2 processes back to normal");
  EXPECT_EQ(lines.back(), notAsExpected);
}

TEST_F(SelfTestTest, AMachineThatNeverLetsGoIsNotAsExpected) {
  // After the second process was put in, taking out has no effect any more.
  machine.calls.watcher = [this](const SimulatedCall& call) {
    if (call.operation == Operation::leaveBand) machine.band.isEffective = false;
  };
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(lines.at(4), "4. Restore: 0/2 processes back to normal");
}

TEST_F(SelfTestTest, TimesThatCannotBeReadCountAsNothing) {
  machine.calls.refuse(Operation::readCpuTime);
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(lines.at(3), "3. CPU share: background processes got 100% of the CPU the normal ones got");
}

// With two processors the test's processes are, from the program's own number on: normal, background, twice.
struct Ended {
  Pid offset;
  int clockStep; // 1: before the first reading; 2: between the two
};

class SelfTestWithAnEnd : public SelfTestTest, public testing::WithParamInterface<Ended> {};

TEST_P(SelfTestWithAnEnd, LeavesNothingToCompare) {
  machine.host.processors = 2;
  giveBand(100);
  const auto account = machine.clock.onAdvance;
  int step = 0;
  machine.clock.onAdvance = [&](std::chrono::microseconds duration) {
    account(duration);
    if (++step == GetParam().clockStep) machine.processes.exit(machine.host.self + GetParam().offset);
  };
  EXPECT_EQ(run(), 1);
  EXPECT_EQ(lines.at(3), "3. CPU share: background processes got 100% of the CPU the normal ones got");
  EXPECT_EQ(lines.back(), notAsExpected);
  EXPECT_EQ(busyProcesses(), 0U);
}

INSTANTIATE_TEST_SUITE_P(AnywhereAndAnytime, SelfTestWithAnEnd,
                         testing::Values(Ended{1, 1}, Ended{2, 1}, Ended{1, 2}, Ended{2, 2}, Ended{3, 2},
                                         Ended{4, 2}));

TEST_F(SelfTestTest, OneTimeThatCannotBeReadLeavesNothingToCompare) {
  giveBand(100);
  for (int reading = 1; reading <= 8; ++reading) {
    lines.clear();
    machine.calls.refuseNext(Operation::readCpuTime, reading);
    EXPECT_EQ(run(), 1) << reading;
    EXPECT_EQ(lines.at(3), "3. CPU share: background processes got 100% of the CPU the normal ones got");
  }
}

TEST_F(SelfTestTest, WithoutTheBusyProgramOnlyTheErrorFollows) {
  machine.launcher.installed.clear();
  EXPECT_EQ(run(), 1);
  EXPECT_THAT(lines, ElementsAre(announcement, couldNotStart));
}

TEST_F(SelfTestTest, WhenAFirstOfAPairFailsThePairsBeforeAreEnded) {
  machine.host.processors = 3;
  machine.calls.refuseNext(Operation::launchProgram, 3);
  EXPECT_EQ(run(), 1);
  EXPECT_THAT(lines, ElementsAre(announcement, couldNotStart));
  EXPECT_EQ(busyProcesses(), 0U);
}

TEST_F(SelfTestTest, WhenASecondOfAPairFailsItsFirstKeepsRunning) {
  machine.host.processors = 3;
  machine.calls.refuseNext(Operation::launchProgram, 4);
  EXPECT_EQ(run(), 1);
  EXPECT_THAT(lines, ElementsAre(announcement, couldNotStart));
  EXPECT_EQ(busyProcesses(), 1U);
}

TEST_F(SelfTestTest, WaitsOneSecondSettledAndThenMeasuresOverFive) {
  machine.host.processors = 1;
  const auto before = machine.clock.now();
  machine.calls.startTrace();
  run();
  EXPECT_EQ(machine.clock.now() - before, std::chrono::seconds(6));
  const Pid normal = machine.host.self + 1;
  const std::string first = std::to_string(normal);
  const std::string second = std::to_string(normal + 1);
  EXPECT_THAT(machine.calls.takeTrace(),
              ElementsAre("launcher.launch /usr/bin/yes", "launcher.launch /usr/bin/yes",
                          "band.enter " + second, "band.isIn " + second, "processes.priority " + first,
                          "processes.priority " + second, "band.settle", "clock.sleep",
                          "processes.cpuTime " + first, "processes.cpuTime " + second, "clock.sleep",
                          "processes.cpuTime " + first, "processes.cpuTime " + second, "band.leave " + second,
                          "band.isIn " + second));
}

TEST_F(SelfTestTest, ATestProcessThatDiedIsNotEndedAgain) {
  machine.host.processors = 1;
  machine.calls.watcher = [this](const SimulatedCall& call) {
    if (call.operation == Operation::leaveBand) machine.processes.exit(machine.host.self + 1);
  };
  EXPECT_EQ(run(), 0);
  EXPECT_EQ(busyProcesses(), 0U);
}

} // namespace
} // namespace vantle
