// SPDX-License-Identifier: MIT
#include "platform/posix/files/OwnFolder.h"

#include <array>
#include <cerrno>
#include <climits>
#include <cstddef>
#include <fcntl.h>
#include <string_view>
#include <utility>

namespace vantle {

namespace {

Descriptor refused() {
  errno = EPERM;
  return {};
}

Descriptor openRoot() { return Descriptor(::open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC)); }

} // namespace

// Nothing here opens a folder without the right to read it, so one that may only be passed through ends the
// way; folders of a person's own can be read. A link is looked at before the folder is opened, and the folder
// once more when it is open.
Descriptor openOwnFolder(const std::string& path) {
  Descriptor folder = openRoot();
  if (!path.starts_with('/')) return refused();
  std::string left = path;
  for (int links = 0; folder && !left.empty();) {
    const std::size_t slash = left.find('/');
    const std::string name = left.substr(0, slash);
    left = slash == std::string::npos ? std::string() : left.substr(slash + 1);
    if (name.empty()) continue;
    struct stat about {};
    if (::fstatat(folder.get(), name.c_str(), &about, AT_SYMLINK_NOFOLLOW) != 0) return {};
    if (!S_ISLNK(about.st_mode)) {
      if (!isSafeFolder(about)) return refused();
      Descriptor next(::openat(folder.get(), name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
      if (!next || ::fstat(next.get(), &about) != 0) return {};
      if (!isSafeFolder(about)) return refused();
      folder = std::move(next);
      continue;
    }
    std::array<char, PATH_MAX> target{};
    const ssize_t length = ::readlinkat(folder.get(), name.c_str(), target.data(), target.size());
    if (length < 0 || !isTrustedOwner(about.st_uid) || ++links > mostLinks) return refused();
    const std::string_view leadsTo(target.data(), static_cast<std::size_t>(length));
    if (leadsTo.starts_with('/')) folder = openRoot();
    left = std::string(leadsTo).append("/").append(left);
  }
  return folder;
}

// There are no names below an open descriptor here. Nobody else can exchange a folder on the way to this one,
// so its path is as good; empty when it has none any more.
std::string pathOf(const Descriptor& folder) {
  std::array<char, PATH_MAX> path{};
  return ::fcntl(folder.get(), F_GETPATH, path.data()) == 0 ? std::string(path.data()) : std::string();
}

} // namespace vantle
