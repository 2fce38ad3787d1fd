// SPDX-License-Identifier: MIT
// One whole pass of Vantle over a busy desktop: 100 apps with 400 processes and 1,000 threads go into the
// background band, and come back. The processes are real, and so are the process table, the band and the
// journal; only the list of apps is made up. The same run does the least that this asks of the kernel in a
// plain loop, and prints how many times as long the whole pass takes. Then it makes the pass's own system
// calls once more, and nothing else: what the pass adds to them, and, with a clock around each, where its
// time goes.
#include "bench/support/BarePass.h"
#include "bench/support/BenchMachine.h"
#include "bench/support/IdleApps.h"
#include "bench/support/Series.h"
#include "bench/support/SystemCalls.h"
#include "engine/Engine.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

namespace vantle::bench {
namespace {

// Processor time, so that a machine that is busy with other things changes little.
template <class Work> double millis(Work work) {
  const std::uint64_t before = processorNanos();
  work();
  return static_cast<double>(processorNanos() - before) / 1e6;
}

void printCalls(const Recordings& recordings, std::size_t phase, double passMillis) {
  const Recording& recording = recordings.phases[phase];
  BareLoop loop(recording, recordings.openAtStart);
  const double own = millis([&loop] { loop.run(); });
  std::printf("  its own system calls alone %.2f ms, ratio %.2f\n", own, passMillis / own);
  const std::map<std::string, std::uint64_t> times = loop.runTimed();
  std::vector<std::pair<std::uint64_t, std::string>> sorted;
  sorted.reserve(times.size());
  for (const auto& [name, nanos] : times) sorted.emplace_back(nanos, name);
  std::sort(sorted.rbegin(), sorted.rend());
  for (const auto& [nanos, name] : sorted) {
    std::printf("    %-20s %6zu calls  %8.3f ms\n", name.c_str(), recording.counts.at(name),
                static_cast<double>(nanos) / 1e6);
  }
  std::printf("    opened:");
  for (const auto& [path, count] : recording.opened) {
    if (count >= 50) std::printf("  %zu %s", count, path.c_str());
  }
  std::printf("\n");
  for (const auto& [name, count] : recording.leftOut) {
    std::printf("    %-20s %6zu calls  not in the bare loop\n", name.c_str(), count);
  }
}

// With the address of a user manager's bus, each app stands in a unit of its own.
int run(int rounds, const std::string& userBus) {
  const IdleApps apps(IdleApps::Size{});
  const IdleApps game({.apps = 1, .processes = 1, .threads = 1});
  char name[] = "/tmp/vantle-bench-XXXXXX";
  if (::mkdtemp(name) == nullptr) return 1;
  const std::string folder = name;
  const AppRef boostApp = std::make_shared<BenchApp>(game.roots().front(), "org.example.Game");

  const auto pass = [&](const std::function<void()>& phase) {
    BenchMachine machine(folder, apps.roots(), userBus);
    AppSettings settings(machine.defaults);
    Engine engine(machine.ports(), settings);
    // The first pass loads tables and grows the heap; the second is the one that counts.
    for (int warm = 0; warm < 2; ++warm) {
      if (warm == 1) phase();
      engine.startBoost(boostApp);
      if (warm == 1) phase();
      engine.stopBoost();
    }
    phase();
  };
  // What is said to a service manager cannot be said a second time for the sake of a clock.
  std::optional<Recordings> recordings;
  if (userBus.empty()) recordings = record(pass);
  if (recordings && recordings->phases.size() != 2) return 1;

  BenchMachine machine(folder, apps.roots(), userBus);
  if (!userBus.empty()) {
    for (const pid_t root : apps.roots()) machine.band.placeAsApp(root);
    machine.band.placeAsApp(game.roots().front());
  }
  AppSettings settings(machine.defaults);
  Engine engine(machine.ports(), settings);
  BarePass bare(apps.roots(), userBus);
  Series enter, leave, enterBare, leaveBare, enterRatio, leaveRatio;
  std::size_t managed = 0;
  std::size_t members = 0;
  for (int round = 0; round < rounds; ++round) {
    enter.values.push_back(millis([&] { engine.startBoost(boostApp); }));
    managed = engine.managed().size();
    members = 0;
    for (const auto& [pid, app] : engine.managed()) members += app.members.size();
    leave.values.push_back(millis([&] {
      engine.stopBoost();
      if (!userBus.empty()) machine.band.settle(std::chrono::minutes(1));
    }));
    enterBare.values.push_back(millis([&] { bare.enter(); }));
    leaveBare.values.push_back(millis([&] { bare.leave(); }));
    enterRatio.values.push_back(enter.values.back() / enterBare.values.back());
    leaveRatio.values.push_back(leave.values.back() / leaveBare.values.back());
  }

  std::printf("%zu apps with %zu processes in the band; %zu processes on the machine; %d rounds, medians\n",
              managed, members, machine.processes.scan().size(), rounds);
  std::printf("into the band: %7.2f ms, bare loop %7.2f ms, ratio %.2f\n", enter.median(), enterBare.median(),
              enterRatio.median());
  if (recordings) printCalls(*recordings, 0, enter.median());
  std::printf("out of it:     %7.2f ms, bare loop %7.2f ms, ratio %.2f\n", leave.median(), leaveBare.median(),
              leaveRatio.median());
  if (recordings) printCalls(*recordings, 1, leave.median());
  machine.band.reclaim();
  std::filesystem::remove_all(folder);
  return managed == 0 ? 1 : 0;
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const bool inUnits = !arguments.empty() && arguments.back() == "--units";
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  if (inUnits && runtime == nullptr) return 1;
  const int rounds = arguments.empty() ? 0 : std::atoi(arguments.front().c_str());
  return vantle::bench::run(rounds > 0 ? rounds : 15,
                            inUnits ? "unix:path=" + std::string(runtime) + "/bus" : std::string());
}
