// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/apps/AppEvidence.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/linux/windows/toplevels/SocketPeers.h"

#include <chrono>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

struct __dirstream;

namespace vantle {

// A process that could have windows on this desktop.
struct DesktopClient {
  Pid pid = 0;
  std::map<SocketInode, std::string> sockets = {}; // its ends of connections, each with /proc/PID/fd/NUMBER
  bool isNative = false;                           // one of them leads to the compositor
  bool isX11 = false;                              // one of them leads to the X server
  AppEvidence evidence = {};                       // without a window's

  // The process still has one of them: since it was found it has not ended, nor given its number away.
  bool isStillThere() const;
};

// Finds out which processes are connected to a compositor and to its X server: who is connected by the
// kernel's list of sockets, whose these are by one pass over the descriptors that this user may see. In
// turns, so that nobody waits for it however many processes and descriptors there are.
class ClientSearch {
 public:
  // `own` is a socket that this process has connected to the compositor; the X server's number is absent
  // where there is none.
  ClientSearch(const Kernel& kernel, int own, const std::string& display);
  ~ClientSearch();
  ClientSearch(const ClientSearch&) = delete;
  ClientSearch& operator=(const ClientSearch&) = delete;

  // Goes on until all is found or the time is up, and 100 ms beyond that when a process keeps its memory from
  // being read. True when all is found.
  bool advance(std::chrono::steady_clock::time_point end);

  const std::vector<DesktopClient>& clients() const { return m_clients; }

 private:
  using Folder = std::unique_ptr<__dirstream, int (*)(__dirstream*)>;
  using Time = std::chrono::steady_clock::time_point;

  bool readSockets(Time end);
  bool readDescriptors(Time end);
  bool readEvidence(Time end);
  void takeDescriptor(const char* name);
  void collect();
  std::set<Pid> originOf(const std::set<Pid>& holders) const;

  const Kernel& m_kernel;
  SocketInode m_own = 0;
  std::string m_display;
  SocketPeers m_peers;
  bool m_hasSockets = false;
  std::set<SocketInode> m_native;
  std::set<SocketInode> m_x11;
  Folder m_processes;
  Folder m_descriptors; // of the process that is looked at
  Pid m_pid = 0;
  std::map<Pid, DesktopClient> m_found;
  std::vector<DesktopClient> m_clients;
  std::size_t m_withEvidence = 0; // so many of them
};

} // namespace vantle
