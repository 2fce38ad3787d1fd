// SPDX-License-Identifier: MIT
#include "engine/Engine.h"
#include "platform/simulated/SimulatedMachine.h"

#include <gtest/gtest.h>

namespace vantle {
namespace {

TEST(EngineCycle, aBoostAppInFrontSendsTheOthersToTheBand) {
  SimulatedMachine machine;
  AppSettings settings(machine.defaults);
  Engine engine(machine.ports(), settings);
  const SimulatedAppRef mail =
      machine.launch({.name = "Mail", .bundleID = "org.example.mail"}, Opening::inBackground);
  machine.launch({.name = "Asteroids", .bundlePath = "/games/steamapps/asteroids"}, Opening::inFront);
  EXPECT_EQ(engine.managedNames.get(), std::vector<std::string>{"Mail"});
  EXPECT_TRUE(machine.band.isIn(mail->processIdentifier()));
}

} // namespace
} // namespace vantle
