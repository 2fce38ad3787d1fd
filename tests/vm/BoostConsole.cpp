// SPDX-License-Identifier: MIT
// Boosts without a desktop: the engine, the band and the question who is heard are the program's own, only
// the list of apps is told. One command a line on standard input, one answer a line.
//
//   start     "PID VERDICT" for each app: "heard", "slowed" or another one's number
//   stop      "1" when nothing is left of it
//
// usage: boost_console BUS_ADDRESS LIMIT_IN_MILLISECONDS BOOST_APP APP...     the apps by their main
// processes
#include "bench/support/BenchMachine.h"
#include "engine/Engine.h"
#include "platform/linux/audio/LinuxAudio.h"
#include "platform/linux/audio/pipewire/PipeWireQuestion.h"

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <string>
#include <vector>

namespace vantle {
namespace {

std::string nameOf(Verdict verdict) {
  if (verdict == Verdict::heard) return "heard";
  if (verdict == Verdict::slowed) return "slowed";
  return std::to_string(static_cast<int>(verdict));
}

int run(const std::string& bus, std::chrono::milliseconds limit, Pid game, const std::vector<Pid>& apps) {
  char folder[] = "/tmp/vantle-boosts-XXXXXX";
  if (::mkdtemp(folder) == nullptr) return 1;
  {
    bench::BenchMachine machine(folder, {apps.begin(), apps.end()}, bus);
    const std::string pipeWire =
        pipeWireSocket([](const char* name) -> const char* { return std::getenv(name); });
    LinuxAudio audio(machine.kernel, {.pipeWire = pipeWire}, {}, limit);
    AppSettings settings(machine.defaults);
    Engine engine(machine.ports(audio, machine.power, machine.pressure), settings);
    const AppRef boostApp = std::make_shared<bench::BenchApp>(game, "org.example.Game");
    for (std::string command; std::getline(std::cin, command);) {
      std::string answer;
      if (command == "start") {
        engine.startBoost(boostApp);
        for (const auto& [pid, about] : engine.verdicts())
          answer += std::to_string(pid) + ' ' + nameOf(about.verdict) + ' ';
      } else {
        engine.stopBoost();
        answer = machine.band.settle(std::chrono::minutes(1)) ? "1" : "0";
      }
      std::puts(answer.c_str());
      std::fflush(stdout);
    }
  }
  std::filesystem::remove_all(folder);
  return 0;
}

} // namespace
} // namespace vantle

int main(int count, char** arguments) {
  const std::vector<std::string> words(arguments + 1, arguments + count);
  if (words.size() < 4) return 2;
  std::vector<vantle::Pid> apps;
  for (std::size_t at = 3; at < words.size(); ++at) apps.push_back(std::stoi(words[at]));
  return vantle::run(words[0], std::chrono::milliseconds(std::stol(words[1])), std::stoi(words[2]), apps);
}
