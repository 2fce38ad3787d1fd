// SPDX-License-Identifier: MIT
#include "platform/linux/band/ProcessScan.h"

#include "platform/linux/band/ControlGroupFile.h"
#include "platform/linux/band/KernelFile.h"

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
    : m_root(::open(procRoot.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)), m_user(::geteuid()) {}

Descriptor ProcessFiles::open(Pid pid, const char* file, int flags) const {
  PathBuffer path;
  return Descriptor(::openat(m_root.get(), pathOf(path, pid, file), flags | O_CLOEXEC));
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

std::optional<std::string> ProcessFiles::birthMark() const {
  const std::optional<std::string> load = readKernelFile(m_root.get(), "loadavg");
  if (!load) return std::nullopt;
  // The last word is the pid that was given out last.
  const std::size_t end = load->find_last_not_of(" \n");
  const std::size_t space = load->rfind(' ', end);
  if (end == std::string::npos || space == std::string::npos) return std::nullopt;
  return load->substr(space + 1, end - space);
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
  const Descriptor folder(::openat(m_root.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return found;
  forEachPid(folder.get(), [&](Pid pid) {
    if (const std::optional<ProcessStat> process = stat(pid)) found.push_back(*process);
  });
  return found;
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

ProcessScan::ProcessScan(const ProcessFiles& files) : m_all(files.scan()) {
  m_places.reserve(m_all.size());
  for (std::size_t at = 0; at < m_all.size(); ++at) {
    const ProcessStat& process = m_all[at];
    m_places.emplace(process.pid, at);
    m_sessions[process.session].push_back(at);
    m_children[process.parent].push_back(process.pid);
  }
}

const ProcessStat* ProcessScan::find(Pid pid) const {
  const auto found = m_places.find(pid);
  return found == m_places.end() ? nullptr : &m_all[found->second];
}

std::span<const std::size_t> ProcessScan::session(Pid session) const {
  const auto found = m_sessions.find(session);
  if (found == m_sessions.end()) return {};
  return found->second;
}

std::unordered_set<Pid> ProcessScan::withDescendants(std::span<const Pid> roots) const {
  std::unordered_set<Pid> tree;
  std::vector<Pid> toVisit(roots.begin(), roots.end());
  while (!toVisit.empty()) {
    const Pid pid = toVisit.back();
    toVisit.pop_back();
    if (!tree.insert(pid).second) continue;
    const auto children = m_children.find(pid);
    if (children != m_children.end()) {
      toVisit.insert(toVisit.end(), children->second.begin(), children->second.end());
    }
  }
  return tree;
}

} // namespace vantle
