// SPDX-License-Identifier: MIT
#include "platform/darwin/power/IokitPowerAssertions.h"

#include "tests/unit/cocoa/CocoaFixture.h"

#include <gmock/gmock.h>
#include <thread>

namespace vantle {
namespace {

using testing::IsEmpty;
using testing::UnorderedElementsAre;

class CocoaPower : public CocoaTest {
 protected:
  // Each as one word, in no order: that of a dictionary is none.
  std::vector<std::string> held() {
    std::vector<std::string> words;
    for (const auto& [pid, type] : power.assertions()) words.push_back(std::to_string(pid) + " " + type);
    return words;
  }

  IokitPowerAssertions power;
};

TEST_F(CocoaPower, EveryAssertionOfEveryProcessIsTold) {
  machine.power.held = {{100, "PreventUserIdleSystemSleep"},
                        {100, "PreventUserIdleDisplaySleep"},
                        {101, "PreventSystemSleep"},
                        {102, "PreventDiskIdle"}};
  EXPECT_THAT(held(),
              UnorderedElementsAre("100 PreventUserIdleSystemSleep", "100 PreventUserIdleDisplaySleep",
                                   "101 PreventSystemSleep", "102 PreventDiskIdle"));
  EXPECT_EQ(cocoa.objects(), 0) << "the answer was not released";
}

TEST_F(CocoaPower, WhatIsNotAsItIsDocumentedIsLeftOut) {
  machine.power.held = {{100, "PreventSystemSleep"}};
  cocoa.assertionsAreOdd = true;
  EXPECT_THAT(held(), UnorderedElementsAre("100 PreventSystemSleep"));
}

TEST_F(CocoaPower, WithoutAnAnswerNobodyKeepsTheMachineAwake) {
  machine.power.held = {{100, "PreventSystemSleep"}};
  cocoa.powerStatus = -1;
  EXPECT_THAT(held(), IsEmpty()) << "a failure is one, whatever comes with it";
  EXPECT_EQ(cocoa.objects(), 0);
  cocoa.powerStatus = 0;
  cocoa.hasAssertions = false;
  EXPECT_THAT(held(), IsEmpty());
}

TEST_F(CocoaPower, AServiceThatHangsIsAskedOnceAndNotWaitedFor) {
  machine.power.held = {{100, "PreventSystemSleep"}};
  std::unique_lock hangs(cocoa.powerManagement);
  EXPECT_THAT(held(), IsEmpty());
  EXPECT_THAT(held(), IsEmpty()) << "and no second question";
  hangs.unlock();
  std::vector<std::string> words;
  while (words.empty()) { // until the first one has its answer
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
    words = held();
  }
  EXPECT_THAT(words, UnorderedElementsAre("100 PreventSystemSleep"));
}

} // namespace
} // namespace vantle
