// SPDX-License-Identifier: MIT
#include "platform/posix/files/FolderLock.h"

#include "platform/linux/process/KernelFile.h"

#include <sstream>
#include <sys/stat.h>

namespace vantle {

namespace {

std::string commandName(const std::string& pid) {
  return readKernelFile("/proc/" + pid + "/comm").value_or("");
}

} // namespace

bool isLockedByStranger(const std::string& folder) {
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

} // namespace vantle
