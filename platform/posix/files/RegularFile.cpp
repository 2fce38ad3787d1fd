// SPDX-License-Identifier: MIT
#include "platform/posix/files/RegularFile.h"

#include <fcntl.h>
#include <sys/stat.h>

namespace vantle {

Descriptor openRegularFile(const std::string& path) {
  struct stat about {};
  if (::stat(path.c_str(), &about) != 0 || !S_ISREG(about.st_mode)) return {};
  Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  // It may have been replaced between the two.
  if (!file || ::fstat(file.get(), &about) != 0 || !S_ISREG(about.st_mode)) return {};
  return file;
}

} // namespace vantle
