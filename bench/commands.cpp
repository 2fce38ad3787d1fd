// SPDX-License-Identifier: MIT
// What each command costs: the time from its start to its end, and the memory that it has as it ends,
// beside a program that does nothing (/bin/true). Asked of a copy that runs a Boost on a private X desktop.
// usage: commands [RUNS]
#include "bench/support/Series.h"
#include "platform/posix/process/ExecPointers.h"
#include "tests/support/KernelState.h"
#include "tests/support/Props.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace vantle::bench {
namespace {

// A child that becomes the program, its output discarded.
[[noreturn]] void become(char* const* arguments, char* const* environment) {
  const int nothing = ::open("/dev/null", O_WRONLY | O_CLOEXEC);
  ::dup2(nothing, STDOUT_FILENO);
  ::execve(arguments[0], arguments, environment);
  ::_exit(127);
}

void expectSuccess(const std::string& name, int status) {
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return;
  std::fprintf(stderr, "%s has failed\n", name.c_str());
}

double millisecondsOf(const std::string& name, char* const* arguments, char* const* environment) {
  const auto begin = std::chrono::steady_clock::now();
  const pid_t pid = ::fork();
  if (pid == 0) become(arguments, environment);
  int status = 0;
  ::waitpid(pid, &status, 0);
  const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;
  expectSuccess(name, status);
  return time.count();
}

struct Memory { // in KB
  long own = 0;
  long resident = 0; // at the most, with what it shares with others
};

Memory readMemory(pid_t pid) {
  Memory memory;
  std::ifstream file("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("RssAnon:")) memory.own = std::stol(line.substr(8));
    if (line.starts_with("VmHWM:")) memory.resident = std::stol(line.substr(6));
  }
  return memory;
}

// Looked at as it ends: what a child has used at the most is told with that of its parent before it became
// the program.
Memory memoryOf(const std::string& name, char* const* arguments, char* const* environment) {
  const pid_t pid = ::fork();
  if (pid == 0) {
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    become(arguments, environment);
  }
  Memory memory;
  int status = 0;
  bool isStarted = false;
  while (::waitpid(pid, &status, 0) == pid && WIFSTOPPED(status)) {
    if (!isStarted) ::ptrace(PTRACE_SETOPTIONS, pid, nullptr, PTRACE_O_TRACEEXIT);
    isStarted = true;
    if (status >> 8 == (SIGTRAP | (PTRACE_EVENT_EXIT << 8))) memory = readMemory(pid);
    ::ptrace(PTRACE_CONT, pid, nullptr, nullptr);
  }
  expectSuccess(name, status);
  return memory;
}

void measure(const std::string& name, std::vector<std::string> command, std::vector<std::string>& environment,
             int runs) {
  const std::vector<char*> arguments = execPointers(command);
  const std::vector<char*> variables = execPointers(environment);
  Series times;
  for (int run = 0; run < runs; ++run) {
    times.values.push_back(millisecondsOf(name, arguments.data(), variables.data()));
  }
  const Memory memory = memoryOf(name, arguments.data(), variables.data());
  std::printf("%-24s middle %6.2f ms, least %6.2f ms; own memory %4ld KB, resident %5ld KB\n", name.c_str(),
              times.median(), times.least(), memory.own, memory.resident);
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
  for (const auto& [name, value] : desktop.environment()) {
    environment.emplace_back(name).append("=").append(value);
  }
  const auto vantle = [&](const std::vector<std::string>& arguments) {
    std::vector<std::string> command{VANTLE_PROGRAM};
    std::string name = "vantle";
    for (const std::string& argument : arguments) {
      name.append(" ").append(argument);
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
