// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <string>
#include <sys/types.h>

namespace vantle::test {

// A copy of this process that prepares itself as told, and then lives as told: by default it waits for its
// end.
class ForkedProcess {
 public:
  // Returns when the preparing is done.
  explicit ForkedProcess(const std::function<void()>& prepare = {}, const std::function<void()>& live = {});
  ~ForkedProcess();
  ForkedProcess(const ForkedProcess&) = delete;
  ForkedProcess& operator=(const ForkedProcess&) = delete;

  pid_t pid() const { return m_pid; }

 private:
  pid_t m_pid;
};

// Runs the check as the first process of a pid namespace with a procfs of its own; see InChild.h.
std::string inOwnPidNamespace(const std::function<std::string()>& check);

bool writeFile(const std::string& path, const std::string& bytes); // in place, as procfs wants it

} // namespace vantle::test
