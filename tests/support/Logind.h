// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/PrivateBus.h"
#include "tests/support/Program.h"

#include <memory>
#include <string>
#include <vector>

namespace vantle::desktop {

// systemd's login daemon on a system bus of its own, in a mount namespace of its own. An ordinary user is
// root in a user namespace for it, where the system allows such namespaces; who asks from outside then speaks
// sd-bus's way of logging in, which names no user.
class Logind {
 public:
  static bool isPossible(); // on this machine, for this user

  Logind(); // ready for calls
  PrivateBus& bus() { return m_bus; }
  const PrivateBus& bus() const { return m_bus; }
  Program& daemon() { return *m_daemon; }
  void start(); // again, after it was killed

  // Holds an inhibitor until the program ends (or for a minute); its process is the holder.
  Program& inhibit(const std::string& what, const std::string& mode);
  // Runs a small tool against this bus to its end; true when it succeeded.
  bool run(std::vector<std::string> command);

 private:
  Start startOf(std::vector<std::string> command) const;

  PrivateBus m_bus;
  std::unique_ptr<Program> m_daemon;
  std::vector<std::unique_ptr<Program>> m_programs;
};

} // namespace vantle::desktop
