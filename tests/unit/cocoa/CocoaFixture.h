// SPDX-License-Identifier: MIT
#pragma once

#include "tests/simulation/darwin/CocoaRun.h"
#include "tests/unit/darwin/DarwinFixture.h"

#include <memory>
#include <vector>

namespace vantle {

// macOS's room on a kernel in memory, with the half of it that is written in Objective-C.
class CocoaTest : public DarwinTest {
 protected:
  CocoaTest() = default;
  ~CocoaTest() override {
    engine.reset();
    cocoaParts.reset();
    EXPECT_EQ(SimulatedCocoa::objects(), 0) << "not released";
  }
  CocoaTest(const CocoaTest&) = delete;
  CocoaTest& operator=(const CocoaTest&) = delete;

  Engine& startOnCocoa() {
    if (!settings) settings.emplace(machine.defaults);
    return engine.emplace(cocoaParts->on(machine), *settings);
  }

  SimulatedCocoa cocoa{*kernel};
  std::unique_ptr<CocoaParts> cocoaParts = std::make_unique<CocoaParts>(machine);
};

} // namespace vantle
