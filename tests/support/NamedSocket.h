// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <sys/socket.h>

namespace vantle::desktop {

// Sockets of a path, or of a name that is no path when it begins with a zero.

// Listens; everybody may connect to it. What stood at the path is gone. -1 when it cannot be.
int listeningSocket(const std::string& name);

// Connected, and closed in programs that are started unless the flags say otherwise. -1 when nobody listens.
int connectedSocket(const std::string& name, int flags = SOCK_CLOEXEC);

} // namespace vantle::desktop
