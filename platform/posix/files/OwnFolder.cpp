// SPDX-License-Identifier: MIT
#include "platform/posix/files/OwnFolder.h"

#include "base/Text.h"

#include <cerrno>
#include <unistd.h>

namespace vantle {

bool isTrustedOwner(uid_t owner) { return owner == 0 || owner == ::geteuid(); }

// A user's own group often may write to the user's folders; what root keeps is for root alone. The sticky bit
// keeps everybody from exchanging what belongs to others.
bool isSafeFolder(const struct stat& folder) {
  if (!S_ISDIR(folder.st_mode) || !isTrustedOwner(folder.st_uid)) return false;
  if ((folder.st_mode & S_ISVTX) != 0) return true;
  const bool isForeignGroup = ::geteuid() == 0 && folder.st_gid != 0;
  return (folder.st_mode & (S_IWOTH | (isForeignGroup ? S_IWGRP : 0U))) == 0;
}

bool isOwnFolder(std::string path) {
  for (;;) {
    if (openOwnFolder(path)) return true;
    const std::string above = folderOf(path);
    if (errno != ENOENT || above.empty() || above == path) return false;
    path = above;
  }
}

} // namespace vantle
