// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "platform/simulated/SimulatedMachine.h"

#include <algorithm>
#include <chrono>
#include <gtest/gtest.h>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vantle {

using Names = std::vector<std::string>;

// A machine, the settings on it and an engine that starts when the test says so.
class EngineTest : public testing::Test {
 protected:
  SimulatedMachine machine;
  std::optional<AppSettings> settings;
  std::optional<Engine> engine;

  Engine& start() {
    if (!settings) settings.emplace(machine.defaults);
    return engine.emplace(machine.ports(), *settings);
  }
  // The program is killed: nothing is put back.
  void kill() {
    engine.reset();
    settings.reset();
    machine.restartProgram();
  }

  static AppSpec named(const std::string& name) { return {.name = name, .bundleID = "org.example." + name}; }
  static AppSpec aGame(const std::string& name = "Asteroids") {
    AppSpec spec = named(name);
    spec.bundlePath = "/games/" + name + ".app";
    spec.category = "public.app-category.action-games";
    return spec;
  }

  SimulatedAppRef open(const char* name) { return open(named(name)); }
  SimulatedAppRef open(const AppSpec& spec) { return machine.launch(spec, Opening::inBackground); }
  SimulatedAppRef openInFront(const AppSpec& spec) { return machine.launch(spec, Opening::inFront); }
  SimulatedAppRef playGame() { return openInFront(aGame()); }
  // A later moment than all before, so that start times tell processes apart.
  void later() { machine.clock.advance(std::chrono::milliseconds(10)); }

  Pid childOf(const SimulatedAppRef& app) { return childOf(app->processIdentifier()); }
  Pid childOf(Pid parent) { return machine.processes.spawn({.parent = parent}); }

  bool isSlow(const SimulatedAppRef& app) const { return machine.band.isIn(app->processIdentifier()); }
  bool isSlow(Pid pid) const { return machine.band.isIn(pid); }
  bool isManaged(const SimulatedAppRef& app) const {
    return engine->managed().contains(app->processIdentifier());
  }
  ProcessIdentity identityOf(Pid pid) const { return machine.processes.find(pid)->identity(); }

  std::string journalPath() const { return machine.files.applicationSupport() + "/Vantle/journal.json"; }
  std::string journalText() const {
    const auto file = machine.files.contents.find(journalPath());
    return file == machine.files.contents.end() ? "(no file)" : file->second;
  }
  std::set<Pid> journalledPids() const {
    std::set<Pid> pids;
    const auto identities = decodeJournal(journalText());
    EXPECT_TRUE(identities) << journalText();
    if (identities) {
      for (const ProcessIdentity& identity : *identities) pids.insert(identity.pid);
    }
    return pids;
  }
  // How often a port was asked for something since the trace was started.
  static std::size_t count(const std::vector<std::string>& trace, const std::string& start) {
    return static_cast<std::size_t>(
        std::count_if(trace.begin(), trace.end(), [&](const auto& line) { return line.starts_with(start); }));
  }
};

} // namespace vantle
