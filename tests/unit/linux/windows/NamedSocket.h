// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"

#include <string>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace vantle {

struct SocketAddress {
  sockaddr_un value{.sun_family = AF_UNIX, .sun_path = {}};
  socklen_t size = sizeof value;
};

// Of a path; of a name that is none when it begins with a zero.
inline SocketAddress socketAddress(const std::string& name) {
  SocketAddress address;
  name.copy(address.value.sun_path, sizeof address.value.sun_path - 1);
  if (name.starts_with('\0'))
    address.size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size());
  return address;
}

// Everybody may connect to it.
inline Descriptor listenAt(const std::string& name) {
  const SocketAddress address = socketAddress(name);
  Descriptor socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const bool isPath = !name.starts_with('\0');
  if (isPath) ::unlink(name.c_str());
  const bool isThere =
      ::bind(socket.get(), reinterpret_cast<const sockaddr*>(&address.value), address.size) == 0 &&
      ::listen(socket.get(), 64) == 0 && (!isPath || ::chmod(name.c_str(), 0777) == 0);
  return isThere ? std::move(socket) : Descriptor();
}

// Stays open in a program that is started.
inline int connectTo(const std::string& name) {
  const SocketAddress address = socketAddress(name);
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  if (::connect(socket, reinterpret_cast<const sockaddr*>(&address.value), address.size) != 0) ::_exit(1);
  return socket;
}

} // namespace vantle
