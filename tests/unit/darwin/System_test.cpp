// SPDX-License-Identifier: MIT
// Clock, host, memory pressure, and the machine of the self-test.
#include "engine/SelfTest.h"
#include "platform/OwnedMachine.h"
#include "platform/darwin/process/DarwinHost.h"
#include "platform/darwin/process/DispatchSource.h"
#include "platform/darwin/process/SystemValue.h"
#include "platform/posix/process/DescriptorLimit.h"
#include "platform/simulated/SimulatedLauncher.h"
#include "tests/unit/darwin/DarwinFixture.h"

#include <dispatch/dispatch.h>
#include <gmock/gmock.h>
#include <iostream>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle {
namespace {

using testing::ElementsAre;

class System : public DarwinTest {
 protected:
  System() { kernel->startTrace(); }
};

// In a child: what is started has the limit of before from then on.
TEST_F(System, AsManyFilesAreOpenAsThisSystemGivesThoughItNamesNoLimit) {
  const auto raise = [this] {
    raiseDescriptorLimit();
    std::cerr << kernel->descriptors << " of " << kernel->descriptorsToAskFor << std::endl;
    if (::fork() == 0) std::cerr << kernel->descriptors << " for what it starts" << std::endl;
    while (::wait(nullptr) > 0) {
    }
    ::_exit(0);
  };
  const auto isWell = testing::ExitedWithCode(0);
  EXPECT_EXIT(raise(), isWell, "10240 of 9223372036854775807\n256 for");
  kernel->descriptorsToAskFor = 4'096;
  EXPECT_EXIT(raise(), isWell, "4096 of 4096\n256 for");
  kernel->descriptorsToAskFor = kernel->mostDescriptors;
  EXPECT_EXIT(raise(), isWell, "12288 of 12288\n256 for");
  kernel->descriptorsToAskFor = kernel->mostDescriptors + 1;
  kernel->descriptors = 10'241;
  EXPECT_EXIT(raise(), isWell, "10241 of 12289\n10241 for") << "not less than before";
}

// What is started after the clock was read is never older than that, and one started in the same microsecond
// is as old.
TEST_F(System, TheClockIsTheAxisOfStartTimes) {
  machine.clock.advance(std::chrono::microseconds(1'234'567));
  const std::uint64_t now = mac->clock.processMicros();
  EXPECT_EQ(startMicros(vantle::identityOf(*mac->processes.record(spawnAt(100)))), now);
  EXPECT_THAT(calls(), ElementsAre("gettimeofday()", "proc_pidinfo(100, PROC_PIDTBSDINFO, 0, 136)"));
}

TEST_F(System, TheClockSleepsAsLongAsItSays) {
  const auto before = mac->clock.now();
  mac->clock.sleep(std::chrono::milliseconds(20));
  EXPECT_GE(mac->clock.now() - before, std::chrono::milliseconds(19));
}

TEST_F(System, TheHostIsThisProgramOnItsProcessors) {
  const DarwinHost host;
  EXPECT_EQ(host.selfPID(), ::getpid());
  EXPECT_EQ(host.activeProcessorCount(), 8);
  EXPECT_THAT(calls(), ElementsAre("sysctlbyname(hw.activecpu, 4)"));
  kernel->numbers["hw.activecpu"] = 0;
  EXPECT_EQ(host.activeProcessorCount(), 1);
  kernel->numbers.clear();
  EXPECT_EQ(host.activeProcessorCount(), 1);
}

TEST_F(System, ValuesOfAnotherSizeAreNone) {
  EXPECT_EQ(systemText("kern.osproductversion"), "14.5");
  EXPECT_EQ(systemNumber("kern.osproductversion"), std::nullopt) << "it is a text of five bytes";
  kernel->texts["kern.short"] = "1";
  EXPECT_EQ(systemNumber("kern.short"), std::nullopt) << "of two";
  EXPECT_EQ(systemText("kern.nothing"), std::nullopt);
  kernel->texts["kern.long"] = std::string(300, 'x');
  EXPECT_EQ(systemText("kern.long"), std::nullopt);
}

TEST_F(System, PressureIsHeardFromOneSourceUntilItsEnd) {
  std::vector<bool> heard;
  auto source = mac->pressure.watch([&](bool isCritical) { heard.push_back(isCritical); });
  EXPECT_THAT(calls(),
              ElementsAre("dispatch_source_create(MEMORYPRESSURE, 0, 6, main)", "dispatch_set_context()",
                          "dispatch_source_set_event_handler_f()", "dispatch_resume()"));
  kernel->raisePressure(DISPATCH_MEMORYPRESSURE_NORMAL);
  kernel->raisePressure(DISPATCH_MEMORYPRESSURE_WARN);
  kernel->raisePressure(DISPATCH_MEMORYPRESSURE_CRITICAL);
  source.reset();
  EXPECT_THAT(calls(), ElementsAre("dispatch_source_cancel()", "dispatch_release()"));
  kernel->raisePressure(DISPATCH_MEMORYPRESSURE_CRITICAL);
  EXPECT_THAT(heard, ElementsAre(false, true)) << "nobody asked for the return to normal";
}

TEST_F(System, ATimeComesOnceAndNotAfterItsEnd) {
  int times = 0;
  auto source = DispatchSource::after(std::chrono::milliseconds(50), [&] { ++times; });
  EXPECT_THAT(calls(),
              ElementsAre("dispatch_source_create(TIMER, 0, 0, main)",
                          "dispatch_source_set_timer(50 ms, FOREVER, 5 ms)", "dispatch_set_context()",
                          "dispatch_source_set_event_handler_f()", "dispatch_resume()"));
  machine.clock.advance(std::chrono::milliseconds(49));
  kernel->tellOfTime();
  EXPECT_EQ(times, 0);
  aWhileLater();
  aWhileLater();
  EXPECT_EQ(times, 1);
  source = DispatchSource::after(std::chrono::milliseconds(50), [&] { ++times; });
  source.reset();
  aWhileLater();
  EXPECT_EQ(times, 1);
  kernel->makesSources = false;
  EXPECT_EQ(DispatchSource::after(std::chrono::milliseconds(50), [] {}), nullptr);
}

TEST_F(System, WhoHearsOfPressureMayStopListening) {
  int heard = 0;
  std::unique_ptr<MemoryPressureEvents::Source> source;
  source = mac->pressure.watch([&](bool) {
    source.reset();
    ++heard;
  });
  kernel->raisePressure(DISPATCH_MEMORYPRESSURE_WARN);
  kernel->raisePressure(DISPATCH_MEMORYPRESSURE_WARN);
  EXPECT_EQ(heard, 1);
}

TEST_F(System, WithoutASourceThereAreNoEvents) {
  kernel->makesSources = false;
  EXPECT_EQ(mac->pressure.watch([](bool) {}), nullptr);
}

TEST_F(System, TheLevelOfPressureIsTheKernelsNumber) {
  machine.pressure.kernelLevel = 4;
  EXPECT_EQ(mac->pressure.level(), 4);
  EXPECT_THAT(calls(), ElementsAre("sysctlbyname(kern.memorystatus_vm_pressure_level, 4)"));
  machine.pressure.kernelLevel.reset();
  EXPECT_EQ(mac->pressure.level(), std::nullopt);
}

TEST_F(System, TheMachineOfTheSelfTestIsThisRoom) {
  const std::unique_ptr<OwnedMachine> owned = selfTestMachine();
  const Machine made = owned->machine();
  spawnAt(100);
  EXPECT_TRUE(made.band.enterBackgroundBand(100));
  EXPECT_EQ(made.processes.schedulerPriority(100), 4);
  EXPECT_EQ(made.clock.processMicros(), machine.clock.processMicros());
  EXPECT_EQ(made.host.activeProcessorCount(), 8);
  EXPECT_EQ(made.pressure.level(), 1);
  EXPECT_THAT(made.workspace.runningApplications(), testing::IsEmpty());
  EXPECT_EQ(owned->desktop(), "");
  EXPECT_EQ(owned->facts().front().second, "macOS 14.5");
  const auto child = made.launcher.launch("/bin/true"); // for real
  ASSERT_NE(child, nullptr);
  child->waitUntilExit();
  EXPECT_FALSE(child->isRunning());
}

// The whole report, on a machine where time passes by itself.
TEST_F(System, TheSelfTestSaysWhetherTheBandWorks) {
  const auto report = [this] {
    Machine parts = mac->on(machine);
    Machine timed{parts.host,    parts.processes, parts.band,          parts.workspace, parts.audio,
                  parts.power,   parts.pressure,  parts.notifications, parts.defaults,  parts.files,
                  machine.clock, parts.launcher,  parts.text,          parts.loginItem, parts.catalog,
                  parts.hooks,   parts.games};
    std::string text;
    SelfTest(timed, [&text](const std::string& line) { text += line + "\n"; }).run();
    return text;
  };
  const std::string works = report();
  EXPECT_THAT(works, testing::HasSubstr("1. Backgrounding: 2/2 calls succeeded, flag seen on 2/2 processes"));
  EXPECT_THAT(works, testing::HasSubstr("2. Scheduler priority: normal 31, background 4"));
  EXPECT_THAT(works, testing::HasSubstr("background processes got 5% of the CPU"));
  EXPECT_THAT(works, testing::HasSubstr("4. Restore: 2/2 processes back to normal"));
  EXPECT_THAT(works, testing::HasSubstr("RESULT: Works."));
  machine.band.isEffective = false;
  EXPECT_THAT(report(), testing::HasSubstr("RESULT: Not as expected."));
}

} // namespace
} // namespace vantle
