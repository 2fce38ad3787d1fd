// SPDX-License-Identifier: MIT
#include "platform/linux/sockets/LocalSocket.h"

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <utility>

namespace vantle {

Descriptor connectTo(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) return Descriptor();
  path.copy(address.sun_path, path.size());
  Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
  if (!socket || ::connect(socket.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
    return Descriptor();
  return socket;
}

std::optional<LocalPeer> connectToOwn(const std::string& path) {
  Descriptor socket = connectTo(path);
  if (!socket) return std::nullopt;
  ucred peer{};
  socklen_t size = sizeof peer;
  if (::getsockopt(socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return std::nullopt;
  if (peer.uid != ::geteuid()) return std::nullopt;
  return LocalPeer{std::move(socket), peer.pid};
}

std::string waylandSocket(const std::string& display, const std::string& runtimeFolder) {
  if (display.empty() || display.starts_with('/')) return display;
  return runtimeFolder.empty() ? std::string() : runtimeFolder + "/" + display;
}

} // namespace vantle
