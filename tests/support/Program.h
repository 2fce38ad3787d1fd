// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/Wait.h"

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vantle::desktop {

using Environment = std::map<std::string, std::string>;

// How a program is started. By default as a desktop starts an app: in a session of its own.
struct Start {
  std::vector<std::string> command = {}; // the program (a path, or searched in PATH) and its arguments
  Environment environment = {};          // all of it; nothing is inherited
  std::filesystem::path workingFolder = "/";
  std::filesystem::path output = "/dev/null"; // where its output and errors are appended
  std::optional<uid_t> user = {};             // gid the same, no other groups; needs root
  bool ownSession = true;
  std::vector<int> keptDescriptors = {}; // these stay open in the program under their numbers
};

// A program that a test has started: a child of this process, and it dies with it. Stays valid after its end.
class Program {
 public:
  explicit Program(const Start& start);
  ~Program(); // ends it, and what it left behind in its session
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  Pid pid() const { return m_process->pid(); }
  bool isRunning() { return m_process->isRunning(); }
  void signal(int number);
  // The wait status (see waitpid) once it has ended; absent when it does not end within the limit.
  std::optional<int> waitForEnd(std::chrono::milliseconds limit = guardLimit);
  // The exit status, and -N for a program that was killed by signal N.
  std::optional<int> exitStatus(std::chrono::milliseconds limit = guardLimit);
  void kill() { m_process->kill(); } // SIGKILL, and waits for it

 private:
  std::optional<test::ForkedProcess> m_process;
};

// False for zombies as well: nothing of them runs any more.
bool isAlive(Pid pid);

// The roots, everything that descends from them, everything in a session that one of them leads, and whatever
// carries the marker in its environment: of all these, the ones that descend from this process. (It makes
// itself the reaper of orphans, so that everything a test starts does, and a number that has gone to a
// foreign process never counts.)
std::set<Pid> processesOf(const std::set<Pid>& roots, const std::string& marker = {});

// Kills all of those until none is left.
void endProcessesOf(const std::set<Pid>& roots, const std::string& marker = {});

} // namespace vantle::desktop
