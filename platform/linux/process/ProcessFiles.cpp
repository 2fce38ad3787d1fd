// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcessFiles.h"

#include "platform/linux/process/ControlGroupFile.h"
#include "platform/linux/process/KernelFile.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantle {

namespace {

using PathBuffer = std::array<char, 64>;

// "PID/file" without an allocation.
const char* pathOf(PathBuffer& buffer, Pid pid, const char* file) {
  std::snprintf(buffer.data(), buffer.size(), "%d/%s", pid, file);
  return buffer.data();
}

std::optional<Pid> pidOf(std::string_view name) {
  if (!name.empty() && name.front() == '0') return std::nullopt; // no name that the kernel writes
  Pid pid = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
  if (error != std::errc{} || end != name.data() + name.size() || pid <= 0) return std::nullopt;
  return pid;
}

// Calls back with every entry of an open folder that is a number.
template <typename Callback> void forEachPid(int folder, Callback call) {
  struct Entry { // linux_dirent64
    std::uint64_t inode;
    std::int64_t offset;
    unsigned short length;
    unsigned char type;
    char name[1];
  };
  // NOLINTNEXTLINE(cppcoreguidelines-pro-type-member-init): filled by the kernel
  alignas(Entry) std::array<char, std::size_t{32} << 10U> buffer;
  long got = 0;
  while ((got = ::syscall(SYS_getdents64, folder, buffer.data(), buffer.size())) > 0) {
    for (long at = 0; at < got;) {
      const char* entry = buffer.data() + at;
      unsigned short length = 0;
      std::copy_n(entry + offsetof(Entry, length), sizeof length, reinterpret_cast<char*>(&length));
      if (const auto pid = pidOf(entry + offsetof(Entry, name))) call(*pid);
      at += length;
    }
  }
}

} // namespace

ProcessFiles::ProcessFiles(const std::string& procRoot)
    : m_root(::open(procRoot.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
      m_load(::openat(m_root.get(), "loadavg", O_RDONLY | O_CLOEXEC)), m_user(::geteuid()) {}

Descriptor ProcessFiles::open(Pid pid, const char* file, int flags) const {
  PathBuffer path;
  return Descriptor(::openat(m_root.get(), pathOf(path, pid, file), flags | O_CLOEXEC | O_NONBLOCK));
}

std::optional<std::string> ProcessFiles::read(Pid pid, const char* file) const {
  PathBuffer path;
  return readKernelFile(m_root.get(), pathOf(path, pid, file));
}

std::string ProcessFiles::unifiedPath(Pid pid) const {
  const std::optional<std::string> file = read(pid, "cgroup");
  const auto path = file ? controlGroupPath(*file) : std::nullopt;
  return path ? std::string(*path) : std::string();
}

std::optional<Pid> ProcessFiles::birthMark() const {
  std::array<char, 128> text; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by pread
  const ssize_t got = m_load ? ::pread(m_load.get(), text.data(), text.size(), 0) : -1;
  if (got <= 0) return std::nullopt;
  std::string_view load(text.data(), static_cast<std::size_t>(got)); // "0.20 0.18 0.12 1/80 11206"
  while (load.ends_with('\n')) load.remove_suffix(1);
  return pidOf(load.substr(load.rfind(' ') + 1));
}

std::optional<ProcessStat> ProcessFiles::stat(Pid pid) const {
  if (pid <= 0) return std::nullopt;
  const Descriptor file = open(pid, "stat", O_RDONLY);
  std::array<char, longestStat> text; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
  const ssize_t got = file ? ::read(file.get(), text.data(), text.size()) : -1;
  if (got <= 0) return std::nullopt;
  const std::string_view line(text.data(), static_cast<std::size_t>(got));
  const std::optional<ProcStat> numbers = parseProcStat(line);
  if (!numbers) return std::nullopt;
  ProcessStat process{*numbers};
  process.pid = pid;
  const std::size_t name = line.find('(') + 1;
  const std::size_t length = std::min(line.rfind(')') - name, process.name.size() - 1);
  std::copy_n(line.data() + name, length, process.name.data());
  return process;
}

std::vector<ProcessStat> ProcessFiles::scan() const {
  std::vector<ProcessStat> found;
  m_last = {{}, birthMark(), std::chrono::steady_clock::now()};
  const Descriptor folder(::openat(m_root.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return found;
  forEachPid(folder.get(), [&](Pid pid) {
    if (const std::optional<ProcessStat> process = stat(pid)) found.push_back(*process);
  });
  m_last.processes = found;
  return found;
}

std::vector<ProcessStat> ProcessFiles::recentScan() const {
  // Processes also end and change their sessions, so it must be one of the same pass, however slow.
  constexpr std::chrono::seconds oldest{5};
  const bool isRecent = std::chrono::steady_clock::now() - m_last.at < oldest;
  if (isRecent && m_last.births && !m_last.processes.empty() && m_last.births == birthMark()) {
    return m_last.processes;
  }
  return scan();
}

std::vector<Pid> ProcessFiles::threads(Pid pid) const {
  std::vector<Pid> found;
  const Descriptor folder = open(pid, "task", O_RDONLY | O_DIRECTORY);
  if (folder) forEachPid(folder.get(), [&](Pid tid) { found.push_back(tid); });
  return found;
}

bool ProcessFiles::isOwn(Pid pid) const {
  PathBuffer path;
  struct stat folder {};
  if (::fstatat(m_root.get(), pathOf(path, pid, ""), &folder, 0) != 0) return false;
  // The folder belongs to the process's user, but to root when the process hides its memory, as one does that
  // has another real user. So an ordinary user's own folder says all; otherwise only status does.
  if (m_user != 0 && folder.st_uid == m_user) return true;
  const std::optional<std::string> status = read(pid, "status");
  const std::size_t line = status ? status->find("\nUid:") : std::string::npos;
  if (line == std::string::npos) return false;
  unsigned real = 0;
  unsigned effective = 0;
  if (std::sscanf(status->c_str() + line, "\nUid: %u %u", &real, &effective) != 2) return false;
  return real == m_user && effective == m_user;
}

} // namespace vantle
