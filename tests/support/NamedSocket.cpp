// SPDX-License-Identifier: MIT
#include "tests/support/NamedSocket.h"

#include <cstddef>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace vantle::desktop {

namespace {

// Binds or connects.
template <class Call> bool withAddress(const std::string& name, Call call) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (name.empty() || name.size() >= sizeof address.sun_path) return false;
  name.copy(address.sun_path, name.size());
  // A name that is none of the file system's has a length; a path ends with a zero.
  const bool isPath = name.front() != '\0';
  const std::size_t size = isPath ? sizeof address : offsetof(sockaddr_un, sun_path) + name.size();
  return call(reinterpret_cast<const sockaddr*>(&address), static_cast<socklen_t>(size)) == 0;
}

int orNone(int socket, bool isUsable) {
  if (isUsable) return socket;
  ::close(socket);
  return -1;
}

} // namespace

int listeningSocket(const std::string& name) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const bool isPath = !name.starts_with('\0');
  if (isPath) ::unlink(name.c_str());
  const bool isBound = withAddress(
      name, [&](const sockaddr* address, socklen_t size) { return ::bind(socket, address, size); });
  return orNone(socket,
                isBound && ::listen(socket, 64) == 0 && (!isPath || ::chmod(name.c_str(), 0777) == 0));
}

int connectedSocket(const std::string& name, int flags) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | flags, 0);
  return orNone(socket, withAddress(name, [&](const sockaddr* address, socklen_t size) {
                  return ::connect(socket, address, size);
                }));
}

} // namespace vantle::desktop
