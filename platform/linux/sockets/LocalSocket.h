// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/posix/Descriptor.h"

#include <optional>
#include <string>

namespace vantle {

// Connected to the socket of that path, which does not block; none when nobody is there to take it at once.
Descriptor connectTo(const std::string& path);

// A process of this user's at the other end of a socket.
struct LocalPeer {
  Descriptor socket; // connected; does not block
  Pid pid = 0;       // that has opened the socket for others
};

// Absent when nobody is there to take it at once, or somebody else is: a socket's file outlives its process,
// and a name in the environment says nothing of whose it is.
std::optional<LocalPeer> connectToOwn(const std::string& path);

// The path of a Wayland compositor's socket, by the rule of all its clients, from WAYLAND_DISPLAY and
// XDG_RUNTIME_DIR; empty when they do not tell.
std::string waylandSocket(const std::string& display, const std::string& runtimeFolder);

} // namespace vantle
