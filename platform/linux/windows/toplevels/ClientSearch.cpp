// SPDX-License-Identifier: MIT
#include "platform/linux/windows/toplevels/ClientSearch.h"

#include "platform/linux/process/KernelFile.h"

#include <algorithm>
#include <charconv>
#include <cstring>
#include <dirent.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

constexpr std::string_view socketLink = "socket:[";

template <class Number> Number numberIn(std::string_view text) {
  Number number = 0; // also of what is none
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

SocketInode inodeOf(int socket) {
  struct stat facts {};
  return ::fstat(socket, &facts) == 0 ? facts.st_ino : 0;
}

// 0 for what is no socket.
SocketInode socketAt(std::string_view link) {
  return link.starts_with(socketLink) ? numberIn<SocketInode>(link.substr(socketLink.size())) : 0;
}

// Where the X server of this machine that ":1" or ":1.0" names takes its clients, by its path; empty for
// others.
std::string socketOfDisplay(std::string_view display) {
  if (!display.starts_with(':')) return {};
  display.remove_prefix(1);
  return "/tmp/.X11-unix/X" + std::string(display.substr(0, display.find('.')));
}

bool isOver(std::chrono::steady_clock::time_point end) { return std::chrono::steady_clock::now() >= end; }

} // namespace

bool DesktopClient::isStillThere() const {
  return std::any_of(sockets.begin(), sockets.end(), [](const auto& socket) {
    return socketAt(readKernelLink(socket.second).value_or("")) == socket.first;
  });
}

ClientSearch::ClientSearch(const Kernel& kernel, int own, const std::string& display)
    : m_kernel(kernel), m_own(inodeOf(own)), m_display(socketOfDisplay(display)),
      m_processes(nullptr, ::closedir), m_descriptors(nullptr, ::closedir) {}

ClientSearch::~ClientSearch() = default;

bool ClientSearch::advance(Time end) { return readSockets(end) && readDescriptors(end) && readEvidence(end); }

// The compositor's socket is the one that this program is connected to itself: what it is called in the
// environment may be a link to it. The X server takes clients under the same name in two places.
bool ClientSearch::readSockets(Time end) {
  if (m_hasSockets) return true;
  if (!m_peers.advance(end)) return false;
  m_hasSockets = true;
  const auto addTo = [this](std::set<SocketInode>& sockets, const std::string& name) {
    if (name.empty()) return;
    for (const SocketInode client : m_peers.clientsOf(name)) sockets.insert(client);
  };
  addTo(m_native, m_peers.nameBehind(m_own));
  addTo(m_x11, m_display);
  if (!m_display.empty()) addTo(m_x11, std::string(1, '\0') + m_display);
  if (!m_native.empty()) m_processes.reset(::opendir("/proc"));
  return !isOver(end);
}

bool ClientSearch::readDescriptors(Time end) {
  while (m_processes) {
    if (m_descriptors) {
      const dirent* const entry = ::readdir(m_descriptors.get());
      if (entry == nullptr) m_descriptors.reset();
      if (entry != nullptr) takeDescriptor(entry->d_name);
    } else if (const dirent* const entry = ::readdir(m_processes.get())) {
      m_pid = numberIn<Pid>(entry->d_name);
      if (m_pid > 0) m_descriptors.reset(::opendir(("/proc/" + std::to_string(m_pid) + "/fd").c_str()));
    } else {
      m_processes.reset();
      collect();
    }
    if (isOver(end)) return false;
  }
  return true;
}

void ClientSearch::takeDescriptor(const char* name) {
  const SocketInode socket = socketAt(readKernelLink(::dirfd(m_descriptors.get()), name).value_or(""));
  const bool isNative = m_native.contains(socket);
  const bool isX11 = m_x11.contains(socket);
  if (!isNative && !isX11) return;
  DesktopClient& client = m_found[m_pid];
  client.pid = m_pid;
  client.sockets[socket] = "/proc/" + std::to_string(m_pid) + "/fd/" + name;
  client.isNative |= isNative;
  client.isX11 |= isX11;
}

// A descriptor is inherited: what a child has of its parent's connections is not its own.
void ClientSearch::collect() {
  std::map<SocketInode, std::set<Pid>> holders;
  for (const auto& [pid, client] : m_found) {
    for (const auto& [socket, path] : client.sockets) holders[socket].insert(pid);
  }
  std::set<Pid> owners;
  for (const auto& [socket, pids] : holders) owners.merge(originOf(pids));
  for (auto& [pid, client] : m_found) {
    if (owners.contains(pid)) m_clients.push_back(std::move(client));
  }
  m_found.clear();
}

std::set<Pid> ClientSearch::originOf(const std::set<Pid>& holders) const {
  if (holders.size() < 2) return holders;
  std::set<Pid> origin;
  for (const Pid pid : holders) {
    const auto stat = m_kernel.stat(pid);
    if (stat && !holders.contains(stat->parent)) origin.insert(pid);
  }
  return origin;
}

bool ClientSearch::readEvidence(Time end) {
  while (m_withEvidence < m_clients.size()) {
    DesktopClient& client = m_clients[m_withEvidence++];
    client.evidence = vantle::readEvidence(client.pid);
    if (isOver(end)) break;
  }
  return m_withEvidence == m_clients.size();
}

} // namespace vantle
