// SPDX-License-Identifier: MIT
// One whole pass of Vantle over a busy desktop: 100 apps with 400 processes and 1,000 threads go into the
// background band, and come back. The processes are real, and so are the process table, the band and the
// journal; only the list of apps is made up. The same run does the least that this asks of the kernel in a
// plain loop, and then in one that also reads each process's record afresh and writes the journal, as the
// order of changes asks for; it prints how many times as long the whole pass takes. Then the person switches
// between the apps while the Boost goes on. All of it is processor time.
//
// usage: boost_pass [ROUNDS] [--units] [--only]     (as root, VANTLE_BENCH_USER=UID runs it as that user)
//   --units  each app in a unit of its own, weighed by the user manager
//   --only   nothing but the passes of Vantle itself, for a look with strace or perf
#include "bench/support/BarePass.h"
#include "bench/support/BenchMachine.h"
#include "bench/support/BenchUser.h"
#include "bench/support/IdleApps.h"
#include "bench/support/ProcessorTime.h"
#include "bench/support/Series.h"
#include "engine/Engine.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <unistd.h>
#include <vector>

namespace vantle::bench {
namespace {

// One way of moving all apps into the band and back.
struct Pass {
  std::function<void()> enter;
  std::function<void()> leave;
  Series in{};
  Series out{};
  Series inRatio{}; // of the whole pass to this one, in the same round
  Series outRatio{};
};

// Milliseconds a switch from one app to the next; none when a switch did not do what it is for.
Series switches(BenchMachine& machine, Engine& engine, const std::function<void()>& settle) {
  constexpr int count = 30;
  Series series;
  const std::vector<AppRef> apps = machine.workspace.runningApplications();
  engine.frontmostChanged(apps.front());
  for (std::size_t at = 1; at <= count; ++at) {
    const AppRef& previous = apps[(at - 1) % apps.size()];
    const AppRef& next = apps[at % apps.size()];
    series.values.push_back(costOf([&] {
      engine.frontmostChanged(next);
      settle();
    }));
    if (!engine.managed().contains(previous->processIdentifier()) ||
        machine.band.isInBackgroundBand(previous->processIdentifier()) != true ||
        machine.band.isInBackgroundBand(next->processIdentifier()) != false) {
      return {};
    }
  }
  return series;
}

void print(const char* direction, Series Pass::*times, Series Pass::*ratios,
           const std::vector<Pass>& passes) {
  std::printf("%-14s %7.2f ms", direction, (passes.front().*times).median());
  const char* const names[] = {", bare loop", "; with fresh records and the journal"};
  for (std::size_t at = 1; at < passes.size(); ++at) {
    std::printf("%s %.2f ms, ratio %.2f", names[at - 1], (passes[at].*times).median(),
                (passes[at].*ratios).median());
  }
  std::printf("\n");
}

// With the address of a user manager's bus, each app stands in a unit of its own.
int run(int rounds, const std::string& userBus, bool onlyVantle) {
  const IdleApps apps(IdleApps::Size{});
  const IdleApps game({.apps = 1, .processes = 1, .threads = 1});
  char name[] = "/tmp/vantle-bench-XXXXXX";
  if (::mkdtemp(name) == nullptr) return 1;
  const std::string folder = name;
  const AppRef boostApp = std::make_shared<BenchApp>(game.roots().front(), "org.example.Game");

  BenchMachine machine(folder, apps.roots(), userBus);
  if (!userBus.empty()) {
    for (const pid_t root : apps.roots()) machine.band.placeAsApp(root);
    machine.band.placeAsApp(game.roots().front());
  }
  AppSettings settings(machine.defaults);
  Engine engine(machine.ports(), settings);
  const auto settle = [&] {
    if (!userBus.empty()) machine.band.settle(std::chrono::minutes(1));
  };
  BarePass least(apps.roots(), userBus);
  BarePass ordered(apps.roots(), userBus, folder + "/bare.json");

  std::size_t managed = 0;
  std::size_t members = 0;
  std::vector<Pass> passes{{[&] { engine.startBoost(boostApp); },
                            [&] {
                              engine.stopBoost();
                              settle();
                            }},
                           {[&] { least.enter(); }, [&] { least.leave(); }},
                           {[&] { ordered.enter(); }, [&] { ordered.leave(); }}};
  if (onlyVantle) passes.resize(1);
  for (int round = 0; round < rounds; ++round) {
    for (Pass& pass : passes) {
      pass.in.values.push_back(costOf(pass.enter));
      if (&pass == &passes.front()) {
        managed = engine.managed().size();
        members = 0;
        for (const auto& [pid, app] : engine.managed()) members += app.members.size();
      }
      pass.out.values.push_back(costOf(pass.leave));
      // The loops know nothing of marks: a session's weight that still waits for its turn would be taken for
      // somebody else's choice behind them.
      if (&pass == &passes.front() && !onlyVantle) machine.band.settle(std::chrono::minutes(1));
      pass.inRatio.values.push_back(passes.front().in.values.back() / pass.in.values.back());
      pass.outRatio.values.push_back(passes.front().out.values.back() / pass.out.values.back());
    }
  }
  std::printf("%zu apps with %zu processes in the band; %zu processes on the machine; user %d; %d rounds, "
              "medians of processor time\n",
              managed, members, machine.processes.scan().size(), static_cast<int>(::geteuid()), rounds);
  print("into the band:", &Pass::in, &Pass::inRatio, passes);
  print("out of it:", &Pass::out, &Pass::outRatio, passes);
  bool isWhole = managed > 0;
  if (!onlyVantle) {
    engine.startBoost(boostApp);
    const Series switching = switches(machine, engine, settle);
    engine.stopBoost();
    settle();
    isWhole = isWhole && !switching.values.empty();
    std::printf("app to app:    %7.2f ms, %.2f times the pass into the band; %zu switches during a Boost\n",
                switching.median(), switching.median() / passes.front().in.median(), switching.values.size());
  }
  machine.band.reclaim(nullptr);
  std::filesystem::remove_all(folder);
  return isWhole ? 0 : 1;
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) {
  if (!vantle::bench::becomeBenchUser()) return 1;
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  const auto has = [&arguments](const char* option) {
    return std::find(arguments.begin(), arguments.end(), option) != arguments.end();
  };
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  if (has("--units") && runtime == nullptr) return 1;
  const int rounds = arguments.empty() ? 0 : std::atoi(arguments.front().c_str());
  return vantle::bench::run(rounds > 0 ? rounds : 15,
                            has("--units") ? "unix:path=" + std::string(runtime) + "/bus" : std::string(),
                            has("--only"));
}
