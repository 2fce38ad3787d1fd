// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

using SocketInode = std::uint64_t; // that a descriptor of the socket shows, "socket:[1234]"

// Who is connected to which Unix socket of this machine, as the kernel lists it to everybody (sock_diag(7)).
// Sockets of other network namespaces are not in the list. Read in turns, however many there are.
class SocketPeers {
 public:
  SocketPeers();

  // Goes on until all is read or the time is up; true for the former, and when nothing can be read.
  bool advance(std::chrono::steady_clock::time_point end);

  // The clients' ends of all connections that were made to the socket with this name.
  std::vector<SocketInode> clientsOf(const std::string& name) const;
  // The name of the socket that this end is connected to; empty when it has none.
  std::string nameBehind(SocketInode client) const;

 private:
  bool ask();
  bool takeReply(std::string_view reply); // true when it is the last
  void take(std::string_view message);

  Descriptor m_kernel;
  std::map<std::string, std::vector<SocketInode>> m_clients; // by the name of the socket that took them
};

} // namespace vantle
