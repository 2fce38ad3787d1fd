// SPDX-License-Identifier: MIT
#include "platform/linux/files/SingleCopyLock.h"

#include "base/Names.h"
#include "platform/linux/files/OwnFolder.h"
#include "platform/linux/files/PosixFileStore.h"
#include "platform/linux/process/KernelFile.h"

#include <cerrno>
#include <chrono>
#include <fcntl.h>
#include <sstream>
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

bool stillNames(const std::string& path, int descriptor) {
  struct stat opened {};
  struct stat named {};
  return ::fstat(descriptor, &opened) == 0 && ::lstat(path.c_str(), &named) == 0 &&
         opened.st_dev == named.st_dev && opened.st_ino == named.st_ino;
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
    if (!file) return {};
    Attempt attempt = lock(std::move(file));
    if (!attempt.descriptor) return attempt;
    // Somebody may have tidied the file away between the two calls; the lock would then guard nothing.
    if (!stillNames(path, attempt.descriptor.get())) continue;
    ::fchmod(attempt.descriptor.get(), ownerOnlySticky);
    return attempt;
  }
}

std::string commandName(const std::string& pid) {
  return readKernelFile("/proc/" + pid + "/comm").value_or("");
}

// Others have reasons to lock a folder, too. One whose holder cannot be seen counts as a copy.
bool isHeldByStranger(const std::string& folder) {
  struct stat about {};
  if (::stat(folder.c_str(), &about) != 0) return true;
  std::istringstream lines(readKernelFile("/proc/locks").value_or(""));
  const std::string inode = ":" + std::to_string(about.st_ino);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line); // "1: FLOCK ADVISORY WRITE 4711 00:2a:815 0 EOF"
    std::string number, kind, strictness, access, pid, file;
    if (!(words >> number >> kind >> strictness >> access >> pid >> file)) continue;
    if (kind == "FLOCK" && file.ends_with(inode)) return commandName(pid) != commandName("self");
  }
  return false;
}

Attempt lockFolder(const std::string& folder) {
  Descriptor file(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!file) return {};
  Attempt attempt = lock(std::move(file));
  if (attempt.isHeldByOther && isHeldByStranger(folder)) return {};
  return attempt;
}

} // namespace

SingleCopyLock SingleCopyLock::acquire(const XdgFolders& folders) {
  std::vector<std::string> places;
  if (folders.runtime && openOwnFolder(*folders.runtime)) places.push_back(*folders.runtime);
  const std::string data = folders.data + "/" + names::display;
  PosixFileStore(folders.data, PosixFileStore::Sync::none).createFolders(data);
  if (openOwnFolder(data)) places.push_back(data);
  return acquire(places);
}

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
