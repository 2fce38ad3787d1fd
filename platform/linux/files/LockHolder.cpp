// SPDX-License-Identifier: MIT
#include "platform/posix/files/LockHolder.h"

#include "platform/linux/process/KernelFile.h"
#include "platform/linux/process/ProcStat.h"

#include <sstream>
#include <sys/stat.h>

namespace vantle {

namespace {

std::string commandName(const std::string& pid) {
  return readKernelFile("/proc/" + pid + "/comm").value_or("");
}

// Its main thread, that is; the program does nothing without that one.
bool hasEnded(const std::string& pid) {
  const auto process = parseProcStat(readKernelFile("/proc/" + pid + "/stat").value_or(""));
  return process && (process->state == 'Z' || process->state == 'X' || process->state == 'x');
}

} // namespace

LockHolder lockHolder(const std::string& path) {
  struct stat about {};
  if (::stat(path.c_str(), &about) != 0) return LockHolder::stranger;
  std::istringstream lines(readKernelFile("/proc/locks").value_or(""));
  const std::string inode = ":" + std::to_string(about.st_ino);
  for (std::string line; std::getline(lines, line);) {
    std::istringstream words(line); // "1: FLOCK ADVISORY WRITE 4711 00:2a:815 0 EOF"
    std::string number, kind, strictness, access, pid, file;
    if (!(words >> number >> kind >> strictness >> access >> pid >> file)) continue;
    if (kind != "FLOCK" || !file.ends_with(inode)) continue;
    if (commandName(pid) != commandName("self")) return LockHolder::stranger;
    return hasEnded(pid) ? LockHolder::dead : LockHolder::copy;
  }
  return LockHolder::copy;
}

} // namespace vantle
