// SPDX-License-Identifier: MIT
// What each command costs: the time from its start to its end, and the memory that was its own at the most,
// beside a program that does nothing (/bin/true). Asked of a copy that runs a Boost on a private X desktop.
// usage: commands [RUNS]
#include "tests/support/KernelState.h"
#include "tests/support/Props.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <string>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace vantle::bench {
namespace {

struct Cost {
  double milliseconds = 0;
  long kilobytes = 0; // resident at the most, what it shares with others included
};

std::vector<char*> pointersTo(std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  pointers.reserve(texts.size() + 1);
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

Cost costOf(std::vector<std::string> command, std::vector<std::string>& environment) {
  const std::vector<char*> arguments = pointersTo(command);
  const std::vector<char*> variables = pointersTo(environment);
  const auto begin = std::chrono::steady_clock::now();
  const pid_t pid = ::vfork();
  if (pid == 0) {
    const int nothing = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
    ::dup2(nothing, STDOUT_FILENO);
    ::execve(arguments[0], arguments.data(), variables.data());
    ::_exit(127);
  }
  int status = 0;
  rusage used{};
  ::wait4(pid, &status, 0, &used);
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
  if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    std::fprintf(stderr, "%s has failed\n", command.back().c_str());
  }
  return {time.count(), used.ru_maxrss};
}

void measure(const std::string& name, const std::vector<std::string>& command,
             std::vector<std::string>& environment, int runs) {
  std::vector<double> times;
  long memory = 0;
  for (int run = 0; run < runs; ++run) {
    const Cost cost = costOf(command, environment);
    times.push_back(cost.milliseconds);
    memory = std::max(memory, cost.kilobytes);
  }
  std::sort(times.begin(), times.end());
  std::printf("%-24s median %6.2f ms, slowest %6.2f ms, %5.1f MB resident at the most\n", name.c_str(),
              times[times.size() / 2], times.back(), static_cast<double>(memory) / 1024);
}

void measureAll(int runs) {
  desktop::VirtualDesktop desktop;
  desktop.installDesktopFile("org.example.Game",
                             "[Desktop Entry]\nType=Application\nExec=true\nCategories=Game;\nName=Game\n"
                             "StartupWMClass=Game\n");
  desktop::Program& app = desktop.launch({desktop::testWindow()});
  desktop.waitForWindow(app.pid());
  desktop::Program& game = desktop.launch({desktop::testWindow(), "--class", "Game", "--background"});
  desktop.launch({VANTLE_PROGRAM});
  desktop.waitForBusName("com.halvo.vantle");
  desktop.activate(game);
  desktop::require("a Boost", [&] { return desktop::isSlowed(app.pid()); });

  std::vector<std::string> environment;
  for (const auto& [name, value] : desktop.environment()) environment.push_back(name + "=" + value);
  const auto vantle = [&](const std::vector<std::string>& arguments) {
    std::vector<std::string> command{VANTLE_PROGRAM};
    std::string name = "vantle";
    for (const std::string& argument : arguments) {
      name += " " + argument;
      command.push_back(argument);
    }
    measure(name, command, environment, runs);
  };
  measure("/bin/true", {"/bin/true"}, environment, runs);
  vantle({"--version"});
  vantle({"--help"});
  vantle({"status"});
  vantle({"status", "--json"});
  vantle({"why", "Game"});
  vantle({"boost", "Game"});
  vantle({"pause", "1h"});
  vantle({"pause", "0s"});
  vantle({"report"});
  vantle({"off"});
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) {
  try {
    vantle::bench::measureAll(argc > 1 ? std::max(std::atoi(argv[1]), 1) : 50);
  } catch (const std::exception& problem) {
    std::fprintf(stderr, "%s\n", problem.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
