// SPDX-License-Identifier: MIT
#include "tests/desktop/harness/Program.h"

#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <fstream>
#include <grp.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle::desktop {

namespace fs = std::filesystem;

namespace {

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  result.reserve(texts.size() + 1);
  for (std::string& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

std::string resolved(const std::string& command, const Environment& environment) {
  if (command.find('/') != std::string::npos) return command;
  const auto path = environment.find("PATH");
  std::string folders = path == environment.end() ? "/usr/bin:/bin" : path->second;
  for (std::size_t from = 0; from <= folders.size();) {
    const std::size_t to = std::min(folders.find(':', from), folders.size());
    const std::string candidate = folders.substr(from, to - from) + "/" + command;
    if (::access(candidate.c_str(), X_OK) == 0) return candidate;
    from = to + 1;
  }
  throw std::runtime_error("not installed: " + command);
}

// In the child, between fork and exec: only calls that are safe there.
void become(const Start& start) {
  if (start.ownSession) ::setsid();
  const int none = ::open("/dev/null", O_RDONLY);
  const int output = ::open(start.output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
  ::dup2(none, STDIN_FILENO);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(output, STDERR_FILENO);
  if (start.user) {
    const uid_t user = *start.user;
    const auto group = static_cast<gid_t>(user);
    if (::setgroups(0, nullptr) != 0 || ::setresgid(group, group, group) != 0 ||
        ::setresuid(user, user, user) != 0) {
      ::_exit(126);
    }
  }
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (::chdir(start.workingFolder.c_str()) != 0) ::_exit(126);
  sigset_t nothing;
  ::sigemptyset(&nothing);
  ::sigprocmask(SIG_SETMASK, &nothing, nullptr);
  for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGPIPE, SIGCHLD}) ::signal(number, SIG_DFL);
  ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
  for (const int descriptor : start.keptDescriptors) ::fcntl(descriptor, F_SETFD, 0);
}

struct Stat {
  Pid parent = 0;
  Pid session = 0;
  char state = 'X';
};

std::optional<Stat> readStat(Pid pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
  std::string text;
  std::getline(file, text, '\0');
  const std::size_t end = text.rfind(')');
  if (end == std::string::npos) return {};
  Stat stat;
  Pid group = 0;
  if (std::sscanf(text.c_str() + end + 1, " %c %d %d %d", &stat.state, &stat.parent, &group, &stat.session) !=
      4) {
    return {};
  }
  return stat;
}

std::map<Pid, Stat> allProcesses() {
  std::map<Pid, Stat> all;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc")) {
    const std::string name = entry.path().filename().string();
    Pid pid = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
    if (error != std::errc() || *end != '\0') continue;
    if (const std::optional<Stat> stat = readStat(pid)) all.emplace(pid, *stat);
  }
  return all;
}

// Variables end with a zero byte each; the marker is one whole variable.
bool environmentHolds(Pid pid, const std::string& marker) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/environ", std::ios::binary);
  for (std::string variable; std::getline(file, variable, '\0');) {
    if (variable == marker) return true;
  }
  return false;
}

} // namespace

Program::Program(const Start& start) {
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  const std::string program = resolved(start.command.at(0), start.environment);
  std::vector<std::string> arguments = start.command;
  std::vector<std::string> environment;
  for (const auto& [name, value] : start.environment) environment.push_back(name + "=" + value);
  const std::vector<char*> argv = pointers(arguments);
  const std::vector<char*> envp = pointers(environment);
  m_pid = ::fork();
  if (m_pid < 0) throw std::runtime_error("no process for " + program);
  if (m_pid == 0) {
    become(start);
    ::execve(program.c_str(), argv.data(), envp.data());
    ::_exit(127);
  }
}

Program::~Program() {
  endProcessesOf({m_pid});
  isRunning();
}

bool Program::isRunning() {
  int status = 0;
  if (!m_status && ::waitpid(m_pid, &status, WNOHANG) == m_pid) m_status = status;
  return !m_status;
}

void Program::signal(int number) {
  if (isRunning()) ::kill(m_pid, number);
}

std::optional<int> Program::waitForEnd(std::chrono::milliseconds limit) {
  waitUntil([this] { return !isRunning(); }, limit);
  return m_status;
}

std::optional<int> Program::exitStatus(std::chrono::milliseconds limit) {
  const std::optional<int> status = waitForEnd(limit);
  if (!status) return {};
  return WIFEXITED(*status) ? WEXITSTATUS(*status) : -WTERMSIG(*status);
}

void Program::kill() {
  signal(SIGKILL);
  waitForEnd();
}

bool isAlive(Pid pid) {
  const std::optional<Stat> stat = readStat(pid);
  return stat && stat->state != 'Z' && stat->state != 'X';
}

std::set<Pid> processesOf(const std::set<Pid>& roots, const std::string& marker) {
  const std::map<Pid, Stat> all = allProcesses();
  std::set<Pid> ours{::getpid()};
  std::set<Pid> found;
  const auto belongs = [&](Pid pid, const Stat& stat) {
    return roots.contains(pid) || found.contains(stat.parent) || roots.contains(stat.session) ||
           found.contains(stat.session) || (!marker.empty() && environmentHolds(pid, marker));
  };
  for (bool grew = true; grew;) {
    grew = false;
    for (const auto& [pid, stat] : all) {
      if (!ours.contains(pid) && ours.contains(stat.parent)) grew = ours.insert(pid).second;
      if (pid == ::getpid() || !ours.contains(pid) || found.contains(pid)) continue;
      if (belongs(pid, stat)) grew = found.insert(pid).second;
    }
  }
  return found;
}

void endProcessesOf(const std::set<Pid>& roots, const std::string& marker) {
  std::set<Pid> known = roots;
  waitUntil([&] {
    bool anyLeft = false;
    for (const Pid pid : processesOf(known, marker)) {
      known.insert(pid);
      if (isAlive(pid)) {
        ::kill(pid, SIGKILL);
        anyLeft = true;
      } else if (!roots.contains(pid)) {
        ::waitpid(pid, nullptr, WNOHANG); // an orphan that came to us
      }
    }
    return !anyLeft;
  });
}

} // namespace vantle::desktop
