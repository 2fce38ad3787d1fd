// SPDX-License-Identifier: MIT
#include "tests/soak/Machine.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sched.h>
#include <string_view>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantle::soak {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view roleVariable = "SOAK_ROLE=";

// What is gone while it is read is empty.
std::string contents(const std::string& path) {
  const int file = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return {};
  std::string text;
  std::array<char, 4096> part{};
  ssize_t size = 0;
  while ((size = ::read(file, part.data(), part.size())) > 0)
    text.append(part.data(), static_cast<std::size_t>(size));
  ::close(file);
  return size < 0 ? std::string() : text;
}

bool isNumber(const std::string& name) { return name.find_first_not_of("0123456789") == std::string::npos; }

// Absent when the thread is gone.
std::optional<ThreadSettings> threadSettings(Pid thread, const std::string& folder) {
  constexpr int ofProcess = 1;
  ThreadSettings settings;
  settings.policy = ::sched_getscheduler(thread);
  errno = 0;
  settings.nice = ::getpriority(PRIO_PROCESS, static_cast<id_t>(thread));
  if (errno != 0) return {};
  settings.io = static_cast<int>(::syscall(SYS_ioprio_get, ofProcess, thread));
  const std::string status = contents(folder + "/status");
  const std::string_view name = "\nCpus_allowed:\t";
  const std::size_t at = status.find(name);
  if (at == std::string::npos || settings.policy < 0 || settings.io < 0) return {};
  const std::size_t from = at + name.size();
  settings.affinity = status.substr(from, status.find('\n', from) - from);
  return settings;
}

// False for who is gone, or on its way: that has no memory and no control groups of its own any more.
bool readStat(ProcessSettings& process, const std::string& folder) {
  constexpr unsigned exiting = 4;
  const std::string stat = contents(folder + "/stat");
  const std::size_t open = stat.find('(');
  const std::size_t close = stat.rfind(')');
  if (open == std::string::npos || close == std::string::npos) return false;
  process.name = stat.substr(open + 1, close - open - 1);
  unsigned flags = 0;
  return std::sscanf(stat.c_str() + close + 1,
                     " %c %d %*d %*d %*d %*d %u %*u %*u %*u %*u %*u %*u %*d %*d %*d %*d %*d %*d %llu",
                     &process.state, &process.parent, &flags, &process.start) == 4 &&
         process.state != 'Z' && process.state != 'X' && (flags & exiting) == 0;
}

int sessionNice(const std::string& folder) {
  const std::string text = contents(folder + "/autogroup"); // "/autogroup-12 nice 0"
  const std::size_t nice = text.rfind(' ');
  return nice == std::string::npos ? 0 : std::stoi(text.substr(nice));
}

// False when the process is none of the stage's, or is just becoming another program.
bool readRole(ProcessSettings& process, const std::string& folder, const std::string& desktopMarker) {
  const std::string variables = contents(folder + "/environ");
  bool isOnStage = isNamespaceOfItsOwn() && !variables.empty();
  for (std::size_t from = 0; from < variables.size();) {
    const std::size_t to = std::min(variables.find('\0', from), variables.size());
    const std::string_view variable(variables.data() + from, to - from);
    if (variable == desktopMarker) isOnStage = true;
    if (variable.starts_with(roleVariable)) process.role = variable.substr(roleVariable.size());
    from = to + 1;
  }
  return isOnStage;
}

std::optional<ProcessSettings> processSettings(Pid pid, const std::string& desktopMarker) {
  const std::string folder = "/proc/" + std::to_string(pid);
  ProcessSettings process;
  process.pid = pid;
  if (!readStat(process, folder)) return {};
  if (!readRole(process, folder, desktopMarker)) return {};
  process.sessionNice = sessionNice(folder);
  process.groups = contents(folder + "/cgroup");
  std::error_code error;
  for (fs::directory_iterator entry(folder + "/task", error), end; !error && entry != end;
       entry.increment(error)) {
    const std::string name = entry->path().filename();
    if (const auto thread = threadSettings(std::stoi(name), entry->path()))
      process.threads[std::stoi(name)] = *thread;
  }
  ProcessSettings later;
  if (process.threads.empty() || !readStat(later, folder) || later.start != process.start) return {};
  return process;
}

} // namespace

bool isNamespaceOfItsOwn() { return ::getpid() == 1; }

Machine lookAtMachine(const std::string& desktopMarker) {
  Machine machine;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename();
    if (!isNumber(name) || std::stoi(name) == ::getpid()) continue;
    if (auto process = processSettings(std::stoi(name), desktopMarker))
      machine.push_back(std::move(*process));
  }
  return machine;
}

ThreadSettings settingsOfThisThread() { return threadSettings(::gettid(), "/proc/thread-self").value(); }

std::string controlGroupsOfThisProcess() { return contents("/proc/self/cgroup"); }

std::string text(const ThreadSettings& settings) {
  char text[160];
  std::snprintf(text, sizeof text, "class %d nice %d io 0x%04x processors %s", settings.policy, settings.nice,
                static_cast<unsigned>(settings.io), settings.affinity.c_str());
  return text;
}

} // namespace vantle::soak
