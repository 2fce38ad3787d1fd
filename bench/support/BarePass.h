// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/UserManager.h"
#include "platform/shared/PollEventLoop.h"

#include <optional>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vantle::bench {

// The least that slowing these apps down asks of the kernel, as a plain C loop: the list of processes once,
// one stat file each, the threads of each app's processes, the changes of each thread and the weight of each
// session, or of each unit through the user manager's bus. It asks nothing of what the threads were before,
// so it could not put back what it did not set itself.
class BarePass {
 public:
  // With an empty address the sessions are weighed; otherwise the units in which the apps stand now.
  explicit BarePass(std::vector<pid_t> roots, const std::string& userBus = {});

  void enter() { run(true); }
  void leave() { run(false); }

 private:
  struct Process {
    pid_t pid;
    pid_t parent;
  };

  void run(bool enter);
  void scan();
  void change(pid_t pid, bool enter);
  void weighSession(pid_t root, bool enter) const;
  void weighUnits(bool enter);

  std::vector<pid_t> m_roots;
  std::vector<Process> m_processes;
  unsigned long m_online;
  unsigned long m_chosen;
  bool m_isRoot;
  PollEventLoop m_loop;
  std::optional<UserManager> m_manager;
  std::vector<std::string> m_units;
};

} // namespace vantle::bench
