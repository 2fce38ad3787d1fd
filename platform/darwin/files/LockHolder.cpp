// SPDX-License-Identifier: MIT
#include "platform/posix/files/LockHolder.h"

#include <sys/stat.h>

namespace vantle {

// The system names nobody who has such a lock. The file is this program's own, so a copy has that; anybody
// may have locked a folder.
LockHolder lockHolder(const std::string& path) {
  struct stat about {};
  const bool isFile = ::lstat(path.c_str(), &about) == 0 && S_ISREG(about.st_mode);
  return isFile ? LockHolder::copy : LockHolder::stranger;
}

} // namespace vantle
