// SPDX-License-Identifier: MIT
#include "platform/linux/files/SingleCopyLock.h"

#include "platform/linux/files/PosixFileStore.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace vantle {

namespace {

constexpr const char* fileName = "/com.halvo.vantle.lock";

// The sticky bit asks those who tidy runtime folders by age to leave the file alone.
constexpr mode_t ownerOnlySticky = 01600;

bool stillNames(const std::string& path, int descriptor) {
  struct stat opened {};
  struct stat named {};
  return ::fstat(descriptor, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

} // namespace

SingleCopyLock SingleCopyLock::acquire(const XdgFolders& folders) {
  std::vector<std::string> places;
  if (folders.runtime) places.push_back(*folders.runtime);
  const std::string data = folders.data + "/Vantle";
  PosixFileStore(folders.data, PosixFileStore::Sync::none).createFolders(data);
  places.push_back(data);
  return acquire(places);
}

SingleCopyLock SingleCopyLock::acquire(const std::vector<std::string>& folders) {
  for (const std::string& folder : folders) {
    const std::string path = folder + fileName;
    for (;;) {
      Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY,
                             ownerOnlySticky & 0777));
      if (!file) break;
      if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) break;
        return {Outcome::heldByOther, Descriptor()};
      }
      // Somebody may have tidied the file away between the two calls; the lock would then guard nothing.
      if (!stillNames(path, file.get())) continue;
      ::fchmod(file.get(), ownerOnlySticky);
      return {Outcome::acquired, std::move(file)};
    }
  }
  return {Outcome::unavailable, Descriptor()};
}

} // namespace vantle
