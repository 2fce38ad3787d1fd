// SPDX-License-Identifier: MIT
// What it costs to know who is heard, who keeps the machine awake, and what the panel shows when it opens:
// against the same questions asked bare, in the same run. A real sound server with players and a real login
// daemon with inhibitors answer; 40 apps with 400 processes are in the background. And what a probe costs
// while nobody asks: its memory and its wake-ups.
//
// usage: probes [ROUNDS [SECONDS]]
#include "bench/support/BareProbes.h"
#include "bench/support/BenchMachine.h"
#include "bench/support/IdleApps.h"
#include "bench/support/Series.h"
#include "engine/Engine.h"
#include "engine/Protection.h"
#include "platform/linux/audio/LinuxAudio.h"
#include "platform/linux/power/DesktopPowerAssertions.h"
#include "platform/linux/pressure/PsiMemoryPressure.h"
#include "tests/support/Logind.h"
#include "tests/support/Props.h"
#include "tests/support/SoundServer.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <vector>

namespace vantle::bench {
namespace {

using desktop::Program;
using desktop::require;

constexpr std::size_t players = 5;
constexpr std::size_t inhibitors = 5;
constexpr std::chrono::hours untilKilled{24};

// A probe in a program of its own, which then waits for events as Vantle does. Without an address it is the
// same program that never asked.
int hold(const std::string& ready, const LinuxAudio::Servers& servers) {
  PollEventLoop loop;
  LinuxAudio audio(std::make_shared<ProcKernel>(), servers);
  // Somebody plays: nothing heard means no connection.
  if (!servers.pipeWire.empty() && audio.runningOutput().empty()) return 1;
  std::ofstream(ready) << "ready";
  loop.runUntil([] { return false; }, untilKilled);
  return 0;
}

long voluntarySwitches(Pid pid) {
  long sum = 0;
  std::error_code gone;
  for (const auto& task :
       std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task", gone)) {
    std::ifstream status(task.path() / "status");
    for (std::string line; std::getline(status, line);) {
      const std::string label = "voluntary_ctxt_switches:";
      if (line.starts_with(label)) sum += std::atol(line.c_str() + label.size());
    }
  }
  return sum;
}

class Stage {
 public:
  Stage() {
    for (std::size_t at = 0; at < players; ++at) m_desktop.launch({desktop::tonePlayer()});
    LinuxAudio audio(std::make_shared<ProcKernel>(), soundServers());
    require("the players", [&] { return audio.runningOutput().size() == players; });
    if (!desktop::Logind::isPossible()) return;
    m_logind.emplace();
    for (std::size_t at = 0; at < inhibitors; ++at) m_logind->inhibit("sleep:idle", "block");
    PollEventLoop loop;
    LoginProbe probe(loop, *this);
    require("the inhibitors", [&] { return assertionPIDs(probe.power).size() == inhibitors; });
  }

  // Asks the login daemon, over connections of its own.
  struct LoginProbe {
    LoginProbe(EventLoop& loop, const Stage& stage)
        : system(loop, stage.systemBus()), session(loop, stage.m_desktop.busAddress()) {}
    BusConnection system;
    BusConnection session;
    ProcfsProcessTable processes{BootEpoch(0)};
    DesktopPowerAssertions power{system, session, {processes}};
  };

  bool hasLogind() const { return m_logind.has_value(); }
  std::string systemBus() const {
    return m_logind ? m_logind->bus().address() : std::string("unix:path=/nonexistent");
  }
  std::string soundServer() const { return m_sound.address(); }
  LinuxAudio::Servers soundServers() const {
    return {.pipeWire = m_sound.pipeWire(), .pulseAudio = m_sound.address()};
  }

  // A program that waits, and that asked the sound servers or did not.
  Program& waiting(const char* ready, const LinuxAudio::Servers& servers) {
    const std::string file = m_desktop.folder().path() / ready;
    Program& program = m_desktop.launch({std::filesystem::read_symlink("/proc/self/exe"), "--hold", file,
                                         servers.pipeWire, servers.pulseAudio});
    require("a waiting program", [&] { return std::filesystem::exists(file) || !program.isRunning(); });
    return program;
  }

 private:
  desktop::VirtualDesktop m_desktop{
      {.user = {}, .screen = "640x480x24", .windowManager = false, .environment = {}}};
  desktop::SoundServer m_sound{m_desktop};
  std::optional<desktop::Logind> m_logind;
};

double millis(const std::function<void()>& work) {
  const auto begin = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begin).count();
}

// One thing as Vantle does it and bare, in turns.
class Comparison {
 public:
  Comparison(const char* name, std::function<void()> work, std::function<void()> bareWork)
      : m_name(name), m_work(std::move(work)), m_bareWork(std::move(bareWork)) {}

  void round() {
    m_own.values.push_back(millis(m_work));
    m_bare.values.push_back(millis(m_bareWork));
    m_ratio.values.push_back(m_own.values.back() / m_bare.values.back());
  }
  void print() {
    std::printf("%-24s %7.2f ms (%.2f), bare %7.2f ms (%.2f), ratio %.2f\n", m_name, m_own.median(),
                m_own.least(), m_bare.median(), m_bare.least(), m_ratio.median());
  }

 private:
  const char* m_name;
  std::function<void()> m_work;
  std::function<void()> m_bareWork;
  Series m_own, m_bare, m_ratio;
};

void measureTimes(const Stage& stage, int rounds) {
  const IdleApps apps({.apps = 43, .processes = 430, .threads = 430});
  const IdleApps game({.apps = 1, .processes = 1, .threads = 1});
  const desktop::TemporaryFolder folder;
  BenchMachine machine(folder.path(), apps.roots());
  LinuxAudio audio(std::make_shared<ProcKernel>(), stage.soundServers());
  Stage::LoginProbe login(machine.loop, stage);
  PsiMemoryPressure pressure(machine.loop);
  AppSettings settings(machine.defaults);
  // Three of them are protected, which leaves 40.
  settings.protectedApps.set({"org.example.App3", "org.example.App7", "org.example.App11"});
  Engine engine(machine.ports(audio, login.power, pressure), settings);
  engine.startBoost(std::make_shared<BenchApp>(game.roots().front(), "org.example.Game"));
  std::vector<pid_t> slowed;
  for (const auto& [pid, app] : engine.managed()) {
    for (const ProcessIdentity& member : app.members) slowed.push_back(member.pid);
  }

  BareSound bareSound(stage.soundServer());
  std::optional<BareInhibitors> bareInhibitors;
  if (stage.hasLogind()) bareInhibitors.emplace(stage.systemBus());
  const auto refresh = [&] {
    engine.usageList();
    engine.protectedInUse();
    engine.currentPressureLevel();
    engine.ownFootprint();
  };
  const auto bareRefresh = [&] {
    readBareRefresh(slowed);
    bareSound.ask();
  };
  std::vector<Comparison> comparisons;
  comparisons.emplace_back(
      "who is heard", [&] { audioPIDs(audio); }, [&] { bareSound.ask(); });
  if (bareInhibitors) {
    comparisons.emplace_back(
        "who keeps it awake", [&] { assertionPIDs(login.power); }, [&] { bareInhibitors->ask(); });
  }
  comparisons.emplace_back("a refresh of the panel", refresh, bareRefresh);
  comparisons.emplace_back(
      "  of it: memory of apps", [&] { engine.usageList(); }, [&] { readBareRefresh(slowed); });
  for (Comparison& comparison : comparisons) comparison.round(); // the first one connects
  for (int round = 0; round < rounds; ++round) {
    for (Comparison& comparison : comparisons) comparison.round();
  }

  std::printf("%zu apps with %zu processes in the background, %zu processes on the machine, %zu players, "
              "%zu inhibitors; %d rounds, medians (and the fastest)\n",
              engine.managed().size(), slowed.size(), machine.processes.scan().size(), players,
              stage.hasLogind() ? inhibitors : 0, rounds);
  for (Comparison& comparison : comparisons) comparison.print();
  if (!stage.hasLogind()) std::printf("no login daemon here\n");
  engine.stopBoost();
  machine.band.settle(std::chrono::seconds(60));
}

void measureRest(Stage& stage, int seconds) {
  Program& without = stage.waiting("without", {});
  Program& with = stage.waiting("with", stage.soundServers());
  const ProcfsProcessTable table(BootEpoch(0));
  const auto before = voluntarySwitches(with.pid());
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  const auto after = voluntarySwitches(with.pid());
  if (!with.isRunning()) throw std::runtime_error("the probe heard nobody");
  const auto kilobytes = [&](const Program& program) {
    return static_cast<double>(table.footprint(program.pid()).value_or(0)) / 1024;
  };
  std::printf("own memory: %.0f KB without a question to the sound servers, %.0f KB after it\n",
              kilobytes(without), kilobytes(with));
  std::printf("voluntary context switches of the probe that asked in %d s: %ld\n", seconds, after - before);
}

void run(int rounds, int seconds) {
  Stage stage;
  measureTimes(stage, rounds);
  measureRest(stage, seconds);
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  try {
    if (arguments.size() == 4 && arguments[0] == "--hold")
      return vantle::bench::hold(arguments[1], {.pipeWire = arguments[2], .pulseAudio = arguments[3]});
    vantle::bench::run(argc > 1 ? std::max(std::atoi(argv[1]), 1) : 21,
                       argc > 2 ? std::max(std::atoi(argv[2]), 1) : 20);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
