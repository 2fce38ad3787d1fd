// SPDX-License-Identifier: MIT
#pragma once

#include "tests/simulation/darwin/DarwinRun.h"
#include "tests/unit/engine/EngineFixture.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vantle {

using Calls = std::vector<std::string>;

// macOS's room on a kernel in memory.
class DarwinTest : public EngineTest {
 protected:
  DarwinTest() { arrangeAsMac(machine); }
  ~DarwinTest() override {
    engine.reset();
    mac.reset();
    EXPECT_FALSE(kernel->fault) << *kernel->fault;
    EXPECT_EQ(kernel->sources(), 0U) << "not released";
  }
  DarwinTest(const DarwinTest&) = delete;
  DarwinTest& operator=(const DarwinTest&) = delete;

  Engine& startOnMac() {
    if (!settings) settings.emplace(machine.defaults);
    return engine.emplace(mac->on(machine), *settings);
  }
  SimulatedAppRef openAt(Pid pid, const std::string& name) {
    AppSpec spec = named(name);
    spec.pid = pid;
    return open(spec);
  }
  // So much later that nothing is under way any more.
  void aWhileLater() {
    machine.clock.advance(std::chrono::milliseconds(1100));
    kernel->tellOfTime();
  }
  // For what nobody waits for.
  void audioHasAnswered(int times) {
    while (kernel->audioAnswers < times) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const std::lock_guard isDoneWithTheKernel(kernel->audioServer);
  }
  Pid spawnAt(Pid pid, Pid parent = 1) { return machine.processes.spawn({.parent = parent, .pid = pid}); }
  // The calls since the last time, in the system's own words.
  Calls calls() { return kernel->takeTrace(); }

  std::unique_ptr<SimulatedKernel> kernel = std::make_unique<SimulatedKernel>(machine);
  std::optional<DarwinParts> mac{std::in_place, machine};
};

} // namespace vantle
