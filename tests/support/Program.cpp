// SPDX-License-Identifier: MIT
#include "tests/support/Program.h"

#include "tests/support/Kernel.h"
#include "tests/support/User.h"

#include <algorithm>
#include <csignal>
#include <fcntl.h>
#include <stdexcept>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle::desktop {

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

// In the child, before it becomes the program.
void become(const Start& start) {
  if (start.ownSession) ::setsid();
  const int none = ::open("/dev/null", O_RDONLY);
  const int output = ::open(start.output.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0666);
  ::dup2(none, STDIN_FILENO);
  ::dup2(output, STDOUT_FILENO);
  ::dup2(output, STDERR_FILENO);
  if (start.user && !test::becomeUser(*start.user)) ::_exit(126);
  if (::chdir(start.workingFolder.c_str()) != 0) ::_exit(126);
  sigset_t nothing;
  ::sigemptyset(&nothing);
  ::sigprocmask(SIG_SETMASK, &nothing, nullptr);
  for (const int number : {SIGTERM, SIGINT, SIGHUP, SIGPIPE, SIGCHLD}) ::signal(number, SIG_DFL);
  ::close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
  for (const int descriptor : start.keptDescriptors) ::fcntl(descriptor, F_SETFD, 0);
}

// Variables end with a zero byte each; the marker is one whole variable.
bool environmentHolds(Pid pid, const std::string& marker) {
  const std::string whole = '\0' + marker + '\0';
  return ('\0' + test::procText(pid, "environ")).find(whole) != std::string::npos;
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
  m_process.emplace([&] {
    become(start);
    ::execve(program.c_str(), argv.data(), envp.data());
    ::_exit(127);
  });
}

Program::~Program() { endProcessesOf({pid()}); }

void Program::signal(int number) {
  if (isRunning()) ::kill(pid(), number);
}

std::optional<int> Program::waitForEnd(std::chrono::milliseconds limit) {
  if (!waitUntil([this] { return !isRunning(); }, limit)) return {};
  return m_process->waitForEnd();
}

std::optional<int> Program::exitStatus(std::chrono::milliseconds limit) {
  const std::optional<int> status = waitForEnd(limit);
  if (!status) return {};
  return WIFEXITED(*status) ? WEXITSTATUS(*status) : -WTERMSIG(*status);
}

bool isAlive(Pid pid) {
  const auto state = test::processState(pid);
  return state && state->isAlive();
}

std::set<Pid> processesOf(const std::set<Pid>& roots, const std::string& marker) {
  const auto all = test::allProcesses();
  std::set<Pid> ours{::getpid()};
  std::set<Pid> found;
  const auto belongs = [&](Pid pid, const test::ProcessState& stat) {
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
