// SPDX-License-Identifier: MIT
#include "tests/support/Kernel.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sched.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantle::test {

namespace {

// linux/ioprio.h
constexpr int ioOfOne = 1;
constexpr int ioClassShift = 13;
constexpr int ioClassIdle = 3;

// Every name that is a number, of a folder that may go away meanwhile.
std::vector<Pid> numbersIn(const std::string& folder) {
  std::vector<Pid> numbers;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    Pid number = 0;
    const auto [stop, failure] = std::from_chars(name.data(), name.data() + name.size(), number);
    if (failure == std::errc() && *stop == '\0') numbers.push_back(number);
  }
  return numbers;
}

} // namespace

std::string procText(Pid process, const std::string& file) {
  const std::string path = "/proc/" + std::to_string(process) + "/" + file;
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (descriptor < 0) return {};
  std::string text;
  std::array<char, 4096> part{};
  ssize_t size = 0;
  while ((size = ::read(descriptor, part.data(), part.size())) > 0) {
    text.append(part.data(), static_cast<std::size_t>(size));
  }
  ::close(descriptor);
  return size < 0 ? std::string() : text;
}

std::optional<ThreadState> threadState(Pid thread) {
  ThreadState state;
  state.policy = ::sched_getscheduler(thread);
  errno = 0;
  state.nice = ::getpriority(PRIO_PROCESS, static_cast<id_t>(thread));
  if (errno != 0) return {};
  state.ioPriority = static_cast<int>(::syscall(SYS_ioprio_get, ioOfOne, thread));
  const std::string status = procText(thread, "status");
  const std::string name = "\nCpus_allowed:\t";
  const std::size_t at = status.find(name);
  if (at == std::string::npos || state.policy < 0 || state.ioPriority < 0) return {};
  const std::size_t from = at + name.size();
  state.affinity = status.substr(from, status.find('\n', from) - from);
  return state;
}

std::map<Pid, ThreadState> threadStates(Pid process) {
  std::map<Pid, ThreadState> states;
  for (const Pid thread : numbersIn("/proc/" + std::to_string(process) + "/task")) {
    if (const auto state = threadState(thread)) states.emplace(thread, *state);
  }
  return states;
}

bool isIdleClass(const ThreadState& state) { return state.ioPriority >> ioClassShift == ioClassIdle; }

std::string text(const ThreadState& state) {
  return "policy " + std::to_string(state.policy) + " nice " + std::to_string(state.nice) + " io " +
         std::to_string(state.ioPriority) + " processors " + state.affinity;
}

std::optional<int> sessionNice(Pid process) {
  const std::string text = procText(process, "autogroup"); // "/autogroup-12 nice 0"
  const std::size_t nice = text.rfind(' ');
  if (nice == std::string::npos) return {};
  return std::stoi(text.substr(nice));
}

std::optional<ProcessState> processState(Pid process) {
  const std::string stat = procText(process, "stat");
  const std::size_t open = stat.find('(');
  const std::size_t close = stat.rfind(')');
  if (open == std::string::npos || close == std::string::npos) return {};
  ProcessState state;
  state.name = stat.substr(open + 1, close - open - 1);
  unsigned long long user = 0;
  unsigned long long kernel = 0;
  const int fields =
      std::sscanf(stat.c_str() + close + 1,
                  " %c %d %*d %d %*d %*d %u %*u %*u %*u %*u %llu %llu %*d %*d %*d %*d %*d %*d %llu",
                  &state.state, &state.parent, &state.session, &state.flags, &user, &kernel, &state.start);
  state.ticks = user + kernel;
  return fields == 7 ? std::optional(state) : std::nullopt;
}

std::map<Pid, ProcessState> allProcesses() {
  std::map<Pid, ProcessState> all;
  for (const Pid process : numbersIn("/proc")) {
    if (const auto state = processState(process)) all.emplace(process, *state);
  }
  return all;
}

} // namespace vantle::test
