// SPDX-License-Identifier: MIT
// One whole pass of Vantle over a busy desktop: 100 apps with 400 processes and 1,000 threads go into the
// background band, and come back. The processes are real, and so are the process table, the band and the
// journal; only the list of apps is made up. The same run does the least that this asks of the kernel in a
// plain loop, and prints how many times as long the whole pass takes. Where its time goes is shown by making
// its system calls once more with a clock around each.
#include "bench/support/BarePass.h"
#include "bench/support/IdleApps.h"
#include "bench/support/SystemCalls.h"
#include "engine/Engine.h"
#include "platform/linux/Absent.h"
#include "platform/linux/band/LinuxBand.h"
#include "platform/linux/files/PosixFileStore.h"
#include "platform/linux/process/BootClock.h"
#include "platform/linux/process/LinuxHost.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/linux/process/SessionLauncher.h"
#include "platform/shared/IcuText.h"
#include "platform/shared/PollEventLoop.h"
#include "platform/simulated/SimulatedCalls.h"
#include "platform/simulated/SimulatedDefaults.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>
#include <vector>

namespace vantle::bench {
namespace {

class BenchApp final : public RunningApplication {
 public:
  BenchApp(Pid pid, std::string identifier) : m_pid(pid), m_identifier(std::move(identifier)) {}

  Pid processIdentifier() const override { return m_pid; }
  std::optional<std::string> bundleIdentifier() const override { return m_identifier; }
  std::optional<std::string> localizedName() const override { return m_identifier; }
  std::optional<std::string> bundlePath() const override { return "/usr/share/applications/" + m_identifier; }
  std::optional<std::string> executablePath() const override { return "/usr/bin/" + m_identifier; }
  std::optional<std::string> bundleCategory() const override { return std::nullopt; }
  ActivationPolicy activationPolicy() const override { return ActivationPolicy::regular; }
  bool isTerminated() const override { return false; }
  bool isActive() const override { return false; }
  bool terminate() override { return false; }
  std::optional<std::string> iconName() const override { return std::nullopt; }

 private:
  Pid m_pid;
  std::string m_identifier;
};

class BenchWorkspace final : public Workspace {
 public:
  explicit BenchWorkspace(const std::vector<pid_t>& roots) {
    for (const pid_t root : roots) {
      m_apps.push_back(std::make_shared<BenchApp>(root, "org.example.App" + std::to_string(m_apps.size())));
    }
  }
  std::vector<AppRef> runningApplications() const override { return m_apps; }
  AppRef frontmostApplication() const override { return nullptr; }
  AppRef runningApplication(Pid /*pid*/) const override { return nullptr; }
  std::unique_ptr<Registration> observe(WorkspaceEvent /*event*/, Handler /*handler*/) override {
    return std::make_unique<Registration>();
  }

 private:
  std::vector<AppRef> m_apps;
};

// Everything that a pass needs, and nothing that would connect to the desktop of whoever runs this.
struct BenchMachine {
  explicit BenchMachine(const std::string& folder, const std::vector<pid_t>& roots)
      : files(folder, PosixFileStore::Sync::none), epoch(BootEpoch::load(files, {})),
        processes(epoch, processFiles), clock(epoch),
        band(loop, files, {.files = processFiles, .ledger = folder + "/band.json", .userBus = {}}),
        workspace(roots) {}

  Machine ports() {
    return {host,          processes, band,  workspace, audio,    power, pressure,
            notifications, defaults,  files, clock,     launcher, text};
  }

  PosixFileStore files;
  BootEpoch epoch;
  LinuxHost host;
  std::shared_ptr<const ProcessFiles> processFiles = std::make_shared<ProcessFiles>("/proc");
  ProcfsProcessTable processes;
  BootClock clock;
  PollEventLoop loop;
  LinuxBand band;
  BenchWorkspace workspace;
  AbsentAudioActivity audio;
  AbsentPowerAssertions power;
  AbsentMemoryPressure pressure;
  AbsentNotifications notifications;
  SimulatedCalls calls;
  SimulatedDefaults defaults{calls};
  SessionLauncher launcher;
  IcuText text;
};

// One figure of several rounds: the middle one, which a busy machine moves least.
struct Series {
  std::vector<double> values;
  double median() {
    std::sort(values.begin(), values.end());
    return values.empty() ? 0 : values[values.size() / 2];
  }
};

// Processor time, so that a machine that is busy with other things changes little.
template <class Work> double millis(Work work) {
  const std::uint64_t before = processorNanos();
  work();
  return static_cast<double>(processorNanos() - before) / 1e6;
}

void printCalls(const Recording& recording, BareLoop& loop) {
  const std::map<std::string, std::uint64_t> times = loop.runTimed();
  std::vector<std::pair<std::uint64_t, std::string>> sorted;
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

int run(int rounds) {
  const IdleApps apps(IdleApps::Size{});
  const IdleApps game({.apps = 1, .processes = 1, .threads = 1});
  char name[] = "/tmp/vantle-bench-XXXXXX";
  if (::mkdtemp(name) == nullptr) return 1;
  const std::string folder = name;
  const AppRef boostApp = std::make_shared<BenchApp>(game.roots().front(), "org.example.Game");

  const auto pass = [&](const std::function<void()>& phase) {
    BenchMachine machine(folder, apps.roots());
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
  const Recordings recordings = record(pass);
  if (recordings.phases.size() != 2) return 1;

  BenchMachine machine(folder, apps.roots());
  AppSettings settings(machine.defaults);
  Engine engine(machine.ports(), settings);
  BareLoop bareEnter(recordings.phases[0], recordings.openAtStart);
  BareLoop bareLeave(recordings.phases[1], recordings.openAtStart);
  BarePass bare(apps.roots());
  Series enter, leave, enterBare, leaveBare, enterRatio, leaveRatio;
  std::size_t managed = 0;
  std::size_t members = 0;
  for (int round = 0; round < rounds; ++round) {
    enter.values.push_back(millis([&] { engine.startBoost(boostApp); }));
    managed = engine.managed().size();
    members = 0;
    for (const auto& [pid, app] : engine.managed()) members += app.members.size();
    leave.values.push_back(millis([&] { engine.stopBoost(); }));
    enterBare.values.push_back(millis([&] { bare.enter(); }));
    leaveBare.values.push_back(millis([&] { bare.leave(); }));
    enterRatio.values.push_back(enter.values.back() / enterBare.values.back());
    leaveRatio.values.push_back(leave.values.back() / leaveBare.values.back());
  }

  std::printf("%zu apps with %zu processes in the band; %zu processes on the machine; %d rounds, medians\n",
              managed, members, machine.processes.scan().size(), rounds);
  std::printf("into the band: %7.2f ms, bare loop %7.2f ms, ratio %.2f\n", enter.median(), enterBare.median(),
              enterRatio.median());
  printCalls(recordings.phases[0], bareEnter);
  std::printf("out of it:     %7.2f ms, bare loop %7.2f ms, ratio %.2f\n", leave.median(), leaveBare.median(),
              leaveRatio.median());
  printCalls(recordings.phases[1], bareLeave);
  machine.band.reclaim();
  std::filesystem::remove_all(folder);
  return managed == 0 ? 1 : 0;
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) {
  return vantle::bench::run(argc > 1 ? std::max(std::atoi(argv[1]), 1) : 15);
}
