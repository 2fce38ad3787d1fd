// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcfsProcessTable.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <fcntl.h>
#include <string_view>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <unistd.h>

namespace vantle {

namespace {

constexpr std::size_t longestPath = 4096; // PATH_MAX
constexpr std::size_t longestStatus = 8192;
constexpr std::string_view deletedMark = " (deleted)";

// "PID/NAME", without an allocation.
class ProcPath {
 public:
  ProcPath(std::string_view pidText, std::string_view name) {
    char* at = m_text.data();
    std::memcpy(at, pidText.data(), pidText.size());
    at += pidText.size();
    *at++ = '/';
    std::memcpy(at, name.data(), name.size());
    at[name.size()] = '\0';
  }
  const char* text() const { return m_text.data(); }

 private:
  std::array<char, 32> m_text{}; // a pid has at most 11 characters, a name 6
};

class PidText {
 public:
  explicit PidText(Pid pid) {
    *std::to_chars(m_text.data(), m_text.data() + m_text.size() - 1, pid).ptr = '\0';
  }
  const char* text() const { return m_text.data(); }

 private:
  std::array<char, 16> m_text{};
};

// One read: procfs writes the whole of these files in one go when the buffer is large enough.
std::string_view readFile(int folder, const char* path, char* buffer, std::size_t size) {
  const Descriptor file(::openat(folder, path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file) return {};
  const ssize_t length = ::read(file.get(), buffer, size);
  return {buffer, length > 0 ? static_cast<std::size_t>(length) : 0};
}

std::optional<std::uint64_t> kibibytesOf(std::string_view status, std::string_view label) {
  const std::size_t line = status.find(label);
  if (line == std::string_view::npos) return std::nullopt;
  const std::string_view value = status.substr(line + label.size());
  const std::size_t digits = value.find_first_not_of(" \t");
  if (digits == std::string_view::npos) return std::nullopt;
  std::uint64_t number = 0;
  const auto [stop, error] = std::from_chars(value.data() + digits, value.data() + value.size(), number);
  if (error != std::errc{} || number > (UINT64_MAX >> 12U)) return std::nullopt;
  return number;
}

std::optional<Pid> pidOf(const char* name) {
  if (*name < '1' || *name > '9') return std::nullopt;
  const char* const end = name + std::strlen(name);
  Pid pid = 0;
  const auto [stop, error] = std::from_chars(name, end, pid);
  if (error != std::errc{} || stop != end) return std::nullopt;
  return pid;
}

bool isSameFile(const struct stat& left, const struct stat& right) {
  return left.st_dev == right.st_dev && left.st_ino == right.st_ino;
}

// struct linux_dirent64, as the kernel fills it.
struct Entry {
  std::uint64_t inode;
  std::int64_t offset;
  std::uint16_t length;
  std::uint8_t type;
  char name[1];
};

} // namespace

ProcfsProcessTable::ProcfsProcessTable(BootEpoch epoch, const std::string& procRoot)
    : m_proc(::open(procRoot.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)), m_epoch(epoch),
      m_microsPerTick(1'000'000 / static_cast<std::uint64_t>(::sysconf(_SC_CLK_TCK))) {}

std::optional<ProcStat> ProcfsProcessTable::readStat(const char* pidText) const {
  std::array<char, longestStat> buffer{};
  const ProcPath path(pidText, "stat");
  const std::string_view line = readFile(m_proc.get(), path.text(), buffer.data(), buffer.size());
  std::optional<ProcStat> stat = parseProcStat(line);
  if (stat && !stat->isAlive()) stat.reset();
  return stat;
}

std::optional<ProcStat> ProcfsProcessTable::readStat(Pid pid) const {
  if (pid < 1) return std::nullopt;
  return readStat(PidText(pid).text());
}

ProcessRecord ProcfsProcessTable::recordOf(Pid pid, const ProcStat& stat) const {
  const std::uint64_t start = m_epoch.micros() + stat.startTicks * m_microsPerTick;
  return {pid, stat.parent, start / 1'000'000, start % 1'000'000};
}

std::optional<ProcessRecord> ProcfsProcessTable::record(Pid pid) const {
  const std::optional<ProcStat> stat = readStat(pid);
  if (!stat) return std::nullopt;
  return recordOf(pid, *stat);
}

std::vector<ProcessRecord> ProcfsProcessTable::scan() const {
  // A descriptor of its own: two listings never share a position.
  const Descriptor folder(::openat(m_proc.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  std::vector<ProcessRecord> records;
  if (!folder) return records;
  records.reserve(512);
  alignas(Entry) std::array<char, std::size_t{32} * 1024> buffer{};
  // The C library's readdir would allocate its own buffer and do the same.
  for (long length = 0;
       (length = ::syscall(SYS_getdents64, folder.get(), buffer.data(), buffer.size())) > 0;) {
    for (long at = 0; at < length;) {
      const auto* entry = reinterpret_cast<const Entry*>(buffer.data() + at);
      at += entry->length;
      const char* const name = entry->name;
      const std::optional<Pid> pid = pidOf(name);
      if (!pid) continue;
      if (const std::optional<ProcStat> stat = readStat(name)) records.push_back(recordOf(*pid, *stat));
    }
  }
  return records;
}

std::optional<std::string> ProcfsProcessTable::executablePathBytes(Pid pid) const {
  const PidText text(pid);
  const ProcPath link(text.text(), "exe");
  std::string path(longestPath, '\0');
  const ssize_t length = ::readlinkat(m_proc.get(), link.text(), path.data(), path.size());
  if (length <= 0) return std::nullopt;
  path.resize(static_cast<std::size_t>(length));
  if (path.ends_with(deletedMark)) {
    // A file may really be called so; then the path leads to the very file that runs.
    struct stat running {};
    struct stat named {};
    const bool isItsName = ::fstatat(m_proc.get(), link.text(), &running, 0) == 0 &&
                           ::stat(path.c_str(), &named) == 0 && isSameFile(running, named);
    if (!isItsName) path.resize(path.size() - deletedMark.size());
  }
  return path;
}

std::optional<std::uint64_t> ProcfsProcessTable::footprint(Pid pid) const {
  std::array<char, longestStatus> buffer{};
  const PidText text(pid);
  const ProcPath path(text.text(), "status");
  const std::string_view status = readFile(m_proc.get(), path.text(), buffer.data(), buffer.size());
  // The name line comes first, but a line break in a name is written as "\n": these are always the kernel's.
  const auto resident = kibibytesOf(status, "\nRssAnon:");
  const auto swapped = kibibytesOf(status, "\nVmSwap:");
  if (!resident || !swapped) return std::nullopt;
  return (*resident + *swapped) * 1024;
}

std::optional<std::uint64_t> ProcfsProcessTable::cpuTime(Pid pid) const {
  const std::optional<ProcStat> stat = readStat(pid);
  if (!stat) return std::nullopt;
  return stat->userTicks + stat->kernelTicks;
}

std::optional<int> ProcfsProcessTable::schedulerPriority(Pid pid) const {
  const std::optional<ProcStat> stat = readStat(pid);
  if (!stat) return std::nullopt;
  return stat->priority;
}

} // namespace vantle
