// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace vantle::desktop {

// The command of a bus daemon that listens there, starts nothing by itself and lets everybody own and ask
// everything; its configuration is written into the folder.
std::vector<std::string> busDaemon(const TemporaryFolder& folder, const std::filesystem::path& socket);
bool isServed(const std::filesystem::path& socket);

// A message bus of its own that starts nothing by itself and lets everybody own and ask everything. Stands in
// for the session's bus as well as for the system's.
class PrivateBus {
 public:
  // Ready for connections. A prefix stands before the daemon's own command.
  explicit PrivateBus(std::vector<std::string> prefix = {});
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  const std::string& address() const { return m_address; }
  Program& daemon() { return *m_daemon; }
  void kill() { m_daemon->kill(); }
  void start(); // again, at the same address, after it was killed

 private:
  std::vector<std::string> m_prefix;
  TemporaryFolder m_folder;
  std::filesystem::path m_socket;
  std::string m_address;
  std::unique_ptr<Program> m_daemon;
};

} // namespace vantle::desktop
