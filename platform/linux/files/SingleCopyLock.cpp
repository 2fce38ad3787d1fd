// SPDX-License-Identifier: MIT
#include "platform/linux/files/SingleCopyLock.h"

#include "platform/linux/files/PosixFileStore.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace vantle {

namespace {

constexpr const char* fileName = "/com.halvo.vantle.lock";

// Together a quarter of a second: with much memory a process takes that long to end.
constexpr int mostAttempts = 25;
constexpr std::chrono::milliseconds betweenAttempts{10};

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
    int attempts = 0;
    for (;;) {
      Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY,
                             ownerOnlySticky & 0777));
      if (!file) break;
      if (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno == EINTR) continue;
        if (errno != EWOULDBLOCK) break;
        // A copy that was killed a moment ago holds it until the kernel has taken it apart.
        if (attempts++ == mostAttempts) return {Outcome::heldByOther, Descriptor()};
        std::this_thread::sleep_for(betweenAttempts);
        continue;
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
