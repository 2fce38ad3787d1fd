// SPDX-License-Identifier: MIT
#include "platform/posix/files/PosixFileStore.h"

#include "base/Text.h"
#include "platform/posix/Descriptor.h"
#include "platform/posix/files/OwnFolder.h"
#include "platform/posix/files/RegularFile.h"
#include "platform/posix/files/TemporaryFile.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <string_view>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vantle {

namespace {

constexpr mode_t ownerOnlyFolder = 0700;

// A link that stands in a folder of one's own was made by oneself, unless everybody may make one there.
bool isOwnLink(const std::string& path, const struct stat& link) {
  return (link.st_uid == 0 || link.st_uid == ::geteuid()) && openOwnFolder(folderOf(path));
}

// Where a write through the path ends up; absent when it would replace something that is no regular file
// behind a link, when somebody else has made the link, or when the links run in a circle.
std::optional<std::string> writeTarget(std::string path) {
  for (int links = 0; links <= mostLinks; ++links) {
    char link[PATH_MAX];
    const ssize_t length = ::readlink(path.c_str(), link, sizeof link);
    if (length < 0) {
      struct stat about {};
      const bool isFree = ::lstat(path.c_str(), &about) != 0;
      return isFree || S_ISREG(about.st_mode) || links == 0 ? std::optional(path) : std::nullopt;
    }
    struct stat about {};
    if (::lstat(path.c_str(), &about) != 0 || !isOwnLink(path, about)) return std::nullopt;
    const std::string_view next(link, static_cast<std::size_t>(length));
    path = next.starts_with('/') ? std::string(next) : folderOf(path).append("/").append(next);
  }
  return std::nullopt;
}

} // namespace

std::optional<std::string> PosixFileStore::read(const std::string& path, std::size_t limit) const {
  if (m_foreign == Foreign::ignored && !openOwnFolder(folderOf(path))) return std::nullopt;
  const Descriptor file = openRegularFile(path);
  struct stat about {};
  if (!file || ::fstat(file.get(), &about) != 0) return std::nullopt;
  if (about.st_size > 0 && static_cast<std::uintmax_t>(about.st_size) > limit) return std::nullopt;

  // One byte more than there is, so that the end shows with the first read; more only if the file grows.
  std::string bytes;
  std::size_t room = static_cast<std::size_t>(about.st_size) + 1;
  for (;;) {
    const std::size_t had = bytes.size();
    bytes.resize(had + room);
    const ssize_t length = ::read(file.get(), bytes.data() + had, room);
    if (length < 0 && errno != EINTR) return std::nullopt;
    bytes.resize(had + static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
    if (length == 0) return bytes;
    if (bytes.size() > limit) return std::nullopt;
    room = std::min(std::max<std::size_t>(bytes.size(), 512), limit - bytes.size() + 1);
  }
}

bool PosixFileStore::writeAtomically(const std::string& path, const std::string& bytes) {
  const std::optional<std::string> target = writeTarget(path);
  if (!target) return false;
  const Descriptor folder = openOwnFolder(folderOf(*target));
  if (!folder) return false;
  const std::string place = pathOf(folder);
  if (m_tidiedFolders.insert(folderOf(*target)).second) TemporaryFile::removeLeftovers(place);
  TemporaryFile file(place);
  return file.write(bytes) && (m_sync == Sync::none || file.flushToDisk()) &&
         file.replace(place + "/" + fileNameOf(*target));
}

bool PosixFileStore::exists(const std::string& path) const { return ::access(path.c_str(), F_OK) == 0; }

bool PosixFileStore::rename(const std::string& path, const std::string& newPath) {
  const Descriptor folder = openOwnFolder(folderOf(path));
  return folder &&
         ::renameat(folder.get(), fileNameOf(path).c_str(), folder.get(), fileNameOf(newPath).c_str()) == 0;
}

void PosixFileStore::createFolders(const std::string& path) {
  for (std::size_t end = 1; end != std::string::npos;) {
    end = path.find('/', end);
    const std::string next = path.substr(0, end);
    if (!exists(next)) {
      const Descriptor folder = openOwnFolder(folderOf(next));
      if (!folder) return;
      ::mkdirat(folder.get(), fileNameOf(next).c_str(), ownerOnlyFolder);
    }
    if (end != std::string::npos) ++end;
  }
}

void PosixFileStore::removeFolder(const std::string& path) {
  const Descriptor folder = openOwnFolder(folderOf(path));
  std::error_code ignored;
  if (folder) std::filesystem::remove_all(pathOf(folder) + "/" + fileNameOf(path), ignored);
}

} // namespace vantle
