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
//
// With a journal it also keeps the order of things: each process's record is read afresh when it is written
// down, before it is changed and after, or before it is put back and for the look at what was born since;
// and the journal is written before and after the changes, or after them.
class BarePass {
 public:
  // With an empty address the sessions are weighed; otherwise the units in which the apps stand now.
  explicit BarePass(std::vector<pid_t> roots, const std::string& userBus = {}, std::string journal = {});

  void enter() { run(true); }
  void leave() { run(false); }

 private:
  struct Process {
    pid_t pid;
    pid_t parent;
  };
  struct Identity {
    pid_t pid;
    unsigned long startTicks;
  };

  void run(bool enter);
  void scan();
  std::vector<pid_t> treeOf(pid_t root) const;
  void enterProcess(pid_t pid);
  void leaveProcess(pid_t pid);
  void change(pid_t pid, bool enter) const;
  void weighSession(pid_t root, bool enter) const;
  void weighUnits(bool enter);
  void record(); // of all apps
  void writeJournal() const;
  bool isOrdered() const { return !m_journal.empty(); }

  std::vector<pid_t> m_roots;
  std::vector<Process> m_processes;
  std::vector<Identity> m_recorded;
  std::string m_journal;
  unsigned long m_online;
  unsigned long m_chosen;
  bool m_isRoot;
  PollEventLoop m_loop;
  std::optional<UserManager> m_manager;
  std::vector<std::string> m_units;
};

} // namespace vantle::bench
