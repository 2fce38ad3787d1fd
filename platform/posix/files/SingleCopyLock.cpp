// SPDX-License-Identifier: MIT
#include "platform/posix/files/SingleCopyLock.h"

#include "base/Names.h"
#include "platform/posix/files/LockHolder.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>

namespace vantle {

namespace {

// Together a quarter of a second: with much memory a process takes that long to end.
constexpr int mostAttempts = 25;
constexpr std::chrono::milliseconds betweenAttempts{10};

// The sticky bit asks those who tidy runtime folders by age to leave the file alone.
constexpr mode_t ownerOnlySticky = 01600;

bool stillNames(const std::string& path, const struct stat& opened) {
  struct stat named {};
  return ::lstat(path.c_str(), &named) == 0 && opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
}

struct Attempt {
  Descriptor descriptor; // with the lock; none when there is no lock to be had
  bool isHeldByOther = false;
};

// A copy that was killed a moment ago holds its locks until the kernel has taken it apart.
Attempt lock(Descriptor file) {
  for (int attempts = 0; attempts <= mostAttempts;) {
    if (::flock(file.get(), LOCK_EX | LOCK_NB) == 0) return {std::move(file), false};
    if (errno == EINTR) continue;
    if (errno != EWOULDBLOCK) return {};
    if (attempts++ < mostAttempts) std::this_thread::sleep_for(betweenAttempts);
  }
  return {Descriptor(), true};
}

Attempt lockFile(const std::string& path) {
  for (;;) {
    Descriptor file(::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY,
                           ownerOnlySticky & 0777));
    struct stat opened {};
    if (!file || ::fstat(file.get(), &opened) != 0) return {};
    Attempt attempt = lock(std::move(file));
    const bool isLeftOver = attempt.isHeldByOther && lockHolder(path) == LockHolder::dead;
    if (isLeftOver && stillNames(path, opened) && ::unlink(path.c_str()) == 0) continue; // with a new one
    if (!attempt.descriptor) return attempt;
    // Somebody may have tidied the file away between the two calls; the lock would then guard nothing.
    if (!stillNames(path, opened)) continue;
    ::fchmod(attempt.descriptor.get(), ownerOnlySticky);
    return attempt;
  }
}

Attempt lockFolder(const std::string& folder) {
  Descriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!file) return {};
  Attempt attempt = lock(std::move(file));
  if (attempt.isHeldByOther && lockHolder(folder) != LockHolder::copy) return {};
  return attempt;
}

} // namespace

SingleCopyLock SingleCopyLock::acquire(const std::vector<std::string>& folders) {
  std::vector<Descriptor> locked;
  for (const std::string& folder : folders) {
    Attempt file = lockFile(folder + "/" + names::identifier + ".lock");
    if (file.isHeldByOther) return {Outcome::heldByOther, {}};
    if (!file.descriptor) continue;
    locked.push_back(std::move(file.descriptor));
    break;
  }
  for (const std::string& folder : folders) {
    Attempt whole = lockFolder(folder);
    if (whole.isHeldByOther) return {Outcome::heldByOther, {}};
    if (whole.descriptor) locked.push_back(std::move(whole.descriptor));
  }
  const Outcome outcome = locked.empty() ? Outcome::unavailable : Outcome::acquired;
  return {outcome, std::move(locked)};
}

} // namespace vantle
