// SPDX-License-Identifier: MIT
#pragma once

#include "platform/posix/Descriptor.h"

#include <string>
#include <sys/stat.h>

namespace vantle {

// So many symbolic links may follow each other on the way to a file (path_resolution(7)).
constexpr int mostLinks = 40;

// Answered by each system for itself: what opens nothing but the way to a folder is called differently on
// each.

// Opens a folder that nobody but this user and root can have put there or exchanged: every folder and every
// link on the way belongs to one of the two. None, as well, when it does not exist (errno tells). The
// descriptor is good for names below it, not for reading.
Descriptor openOwnFolder(const std::string& path);

// The path that the descriptor's folder has in this process, whatever happens to its name.
std::string pathOf(const Descriptor& folder);

// For those who answer: whether this user or root owns something, and whether nobody else can exchange what
// is in a folder.
bool isTrustedOwner(uid_t owner);
bool isSafeFolder(const struct stat& folder);

// Whether the folder is one of one's own, or would be if it were made.
bool isOwnFolder(std::string path);

} // namespace vantle
