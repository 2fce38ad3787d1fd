// SPDX-License-Identifier: MIT
#include "platform/linux/band/LeverFacts.h"

#include "platform/simulated/SimulatedMachine.h"
#include "tests/simulation/linux/SimulatedLinux.h"

#include <gtest/gtest.h>
#include <string>

namespace vantle {
namespace {

class LeverFactsTest : public testing::Test {
 protected:
  SimulatedMachine machine;
  SimulatedLinux kernel{machine};

  std::string factOn(const std::string& lever, bool hasUnits = true) {
    for (const auto& [subject, sentence] : leverFacts(kernel, hasUnits)) {
      if (subject == "Lever: " + lever) return sentence;
    }
    return "untold";
  }
};

TEST_F(LeverFactsTest, SayWhyThereAreNoUnits) {
  EXPECT_EQ(factOn("units of the user manager"), "yes");
  EXPECT_EQ(factOn("units of the user manager", false),
            "no, no user manager with power over processor time answers");
}

TEST_F(LeverFactsTest, SayWhyThereAreNoSessions) {
  EXPECT_EQ(factOn("sessions"), "yes");
  kernel.options.hasAutogroups = false;
  EXPECT_TRUE(factOn("sessions").starts_with("no, the kernel")) << factOn("sessions");
}

TEST_F(LeverFactsTest, SayWhetherTheClassCanBeLeft) {
  LinuxProcess& self = kernel.process(machine.host.self);
  self.niceLimit = 20;
  EXPECT_EQ(factOn("scheduling class"), "yes");
  self.niceLimit = 0;
  EXPECT_EQ(factOn("scheduling class"), "no, this user could not take it back");
}

TEST_F(LeverFactsTest, NameTheProcessorsForTheBackground) {
  EXPECT_EQ(factOn("processors for the background"), "processors 3 of 0-3");
  kernel.options.processors = 1;
  EXPECT_EQ(factOn("processors for the background"), "no, there is none to spare");
}

} // namespace
} // namespace vantle
