// SPDX-License-Identifier: MIT
#include "platform/posix/files/OwnFolder.h"

#include "base/Text.h"

#include <cerrno>

namespace vantle {

bool isOwnFolder(std::string path) {
  for (;;) {
    if (openOwnFolder(path)) return true;
    const std::string above = folderOf(path);
    if (errno != ENOENT || above.empty() || above == path) return false;
    path = above;
  }
}

} // namespace vantle
