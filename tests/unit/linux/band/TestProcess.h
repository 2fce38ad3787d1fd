// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/User.h"

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vantle::test {

// A process that does what a test tells it, one letter at a time. It dies with its test.
class TestProcess {
 public:
  enum class Session { own, inherited };
  // Runs in the process for each letter; its value is the answer.
  using Act = std::function<int(char)>;

  TestProcess() : TestProcess(Session::own) {}
  explicit TestProcess(Session session, const Act& act = {});
  ~TestProcess();
  TestProcess(const TestProcess&) = delete;
  TestProcess& operator=(const TestProcess&) = delete;

  Pid pid() const { return m_process ? m_process->pid() : 0; } // 0 after its end
  // Letters that every process knows: 't' starts a thread and answers with its id; 'f' forks a child that
  // waits and answers with its pid; 'o' forks one whose parent ends at once; 's' the same as 'f' in a session
  // of its own. 'd' both, as daemons are started, which the test has to end itself.
  int ask(char letter) const;
  void end(); // with all that it has started

 private:
  std::optional<ForkedProcess> m_process;
  int m_channel = -1;
};

// Runs a function in a process of its own as an ordinary user without any rights (when the tests run as root;
// otherwise the tests' user is one). True when no expectation failed in it.
bool passesAsOrdinaryUser(const std::function<void()>& body);

// Everything of a thread that the band could change, as text for comparing.
std::string schedulingState(Pid tid);
std::string autogroupLine(Pid pid);
std::vector<Pid> threadsOf(Pid pid);

} // namespace vantle::test
