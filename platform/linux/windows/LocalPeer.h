// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/posix/Descriptor.h"

#include <optional>
#include <string>

namespace vantle {

// A process of this user's at the other end of a socket.
struct LocalPeer {
  Descriptor socket; // connected; does not block
  Pid pid = 0;       // that has opened the socket for others
};

// Absent when nobody is there to take it at once, or somebody else is: a socket's file outlives its process,
// and a name in the environment says nothing of whose it is.
std::optional<LocalPeer> connectToOwn(const std::string& path);

} // namespace vantle
