// SPDX-License-Identifier: MIT
#include "platform/posix/files/OwnFolder.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>

namespace vantle {

namespace {

Descriptor refused() {
  errno = EPERM;
  return {};
}

} // namespace

Descriptor openOwnFolder(const std::string& path) {
  Descriptor folder(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!path.starts_with('/')) return refused();
  std::string left = path;
  for (int links = 0; folder && !left.empty();) {
    const std::size_t slash = left.find('/');
    const std::string name = left.substr(0, slash);
    left = slash == std::string::npos ? std::string() : left.substr(slash + 1);
    if (name.empty()) continue;
    Descriptor next(::openat(folder.get(), name.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    struct stat about {};
    if (!next || ::fstat(next.get(), &about) != 0) return {};
    if (!S_ISLNK(about.st_mode)) {
      if (!isSafeFolder(about)) return refused();
      folder = std::move(next);
      continue;
    }
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlinkat(next.get(), "", target.data(), target.size());
    if (length < 0 || !isTrustedOwner(about.st_uid) || ++links > mostLinks) return refused();
    const std::string_view leadsTo(target.data(), static_cast<std::size_t>(length));
    if (leadsTo.starts_with('/')) folder = Descriptor(::open("/", O_PATH | O_DIRECTORY | O_CLOEXEC));
    left = std::string(leadsTo).append("/").append(left);
  }
  return folder;
}

std::string pathOf(const Descriptor& folder) { return "/proc/self/fd/" + std::to_string(folder.get()); }

} // namespace vantle
