// SPDX-License-Identifier: MIT
#include "platform/linux/kernel/ProcKernel.h"

#include "platform/linux/process/KernelFile.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <system_error>
#include <thread>
#include <unistd.h>
#include <utility>

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

// What an open /proc/PID/autogroup says.
std::optional<Autogroup> readAutogroup(const Descriptor& file) {
  std::array<char, 64> text; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by pread
  const ssize_t got = file ? ::pread(file.get(), text.data(), text.size(), 0) : -1;
  if (got <= 0) return std::nullopt;
  return Autogroup::parse({text.data(), static_cast<std::size_t>(got)});
}

std::optional<ProcessStat> parsed(Pid pid, std::string_view line) {
  const std::optional<ProcStat> numbers = parseProcStat(line);
  if (!numbers) return std::nullopt;
  ProcessStat process{*numbers};
  process.pid = pid;
  const std::size_t name = line.find('(') + 1;
  const std::size_t length = std::min(line.rfind(')') - name, process.name.size() - 1);
  std::copy_n(line.data() + name, length, process.name.data());
  return process;
}

constexpr std::size_t mostOpenFiles = 4096; // that a process is asked for; few have a tenth of it

// Half of what this process may have open, less what else it needs.
std::size_t mostDescriptorsToHold() {
  constexpr rlim_t reserve = 64;
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0 || limit.rlim_cur / 2 <= reserve) return 0;
  return static_cast<std::size_t>(std::min<rlim_t>(limit.rlim_cur / 2 - reserve, 1024));
}

} // namespace

ProcKernel::ProcKernel(std::string procRoot, std::string sysRoot)
    : m_procRoot(std::move(procRoot)), m_sysRoot(std::move(sysRoot)),
      m_root(::open(m_procRoot.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC)),
      m_load(::openat(m_root.get(), "loadavg", O_RDONLY | O_CLOEXEC)), m_user(::geteuid()),
      m_mostHeld(mostDescriptorsToHold()) {}

Pid ProcKernel::self() const { return ::getpid(); }

Descriptor ProcKernel::open(Pid pid, const char* file, int flags) const {
  PathBuffer path;
  return Descriptor(::openat(m_root.get(), pathOf(path, pid, file), flags | O_CLOEXEC | O_NONBLOCK));
}

std::optional<std::string> ProcKernel::readOf(Pid pid, const char* file) const {
  PathBuffer path;
  return readKernelFile(m_root.get(), pathOf(path, pid, file));
}

std::vector<Pid> ProcKernel::processes() const {
  std::vector<Pid> found;
  const Descriptor folder(::openat(m_root.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder) forEachPid(folder.get(), [&](Pid pid) { found.push_back(pid); });
  return found;
}

std::optional<std::vector<std::string>> ProcKernel::openFiles(Pid pid) const {
  std::vector<std::string> found;
  const Descriptor folder = open(pid, "fd", O_RDONLY | O_DIRECTORY);
  if (!folder) return std::nullopt;
  forEachPid(folder.get(), [&](int number) { // the names are numbers here as well
    if (found.size() >= mostOpenFiles) return;
    std::optional<std::string> file = readKernelLink(folder.get(), std::to_string(number).c_str());
    if (file) found.push_back(std::move(*file));
  });
  return found;
}

std::optional<Pid> ProcKernel::birthMark() const {
  std::array<char, 128> text; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by pread
  const ssize_t got = m_load ? ::pread(m_load.get(), text.data(), text.size(), 0) : -1;
  if (got <= 0) return std::nullopt;
  std::string_view load(text.data(), static_cast<std::size_t>(got)); // "0.20 0.18 0.12 1/80 11206"
  while (load.ends_with('\n')) load.remove_suffix(1);
  return pidOf(load.substr(load.rfind(' ') + 1));
}

std::shared_ptr<const void> ProcKernel::hold() const {
  auto held = std::make_shared<Held>();
  m_held = held;
  return held;
}

std::optional<ProcessStat> ProcKernel::stat(Pid pid) const {
  if (pid <= 0) return std::nullopt;
  std::array<char, longestStat> text; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
  if (const std::shared_ptr<Held> held = m_held.lock()) {
    const auto known = held->find(pid);
    const ssize_t got = known == held->end() ? -1 : ::pread(known->second.get(), text.data(), text.size(), 0);
    if (got > 0) return parsed(pid, {text.data(), static_cast<std::size_t>(got)});
    if (known != held->end()) held->erase(known); // it has ended; the number may be another one's by now
  }
  const Descriptor file = open(pid, "stat", O_RDONLY);
  const ssize_t got = file ? ::read(file.get(), text.data(), text.size()) : -1;
  if (got <= 0) return std::nullopt;
  return parsed(pid, {text.data(), static_cast<std::size_t>(got)});
}

std::vector<ProcessStat> ProcKernel::scan() const {
  std::vector<ProcessStat> found;
  const std::shared_ptr<Held> held = m_held.lock();
  if (held) held->clear();
  const Descriptor folder(::openat(m_root.get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return found;
  forEachPid(folder.get(), [&](Pid pid) {
    Descriptor file = open(pid, "stat", O_RDONLY);
    std::array<char, longestStat> text; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
    const ssize_t got = file ? ::read(file.get(), text.data(), text.size()) : -1;
    if (got <= 0) return;
    std::optional<ProcessStat> process = parsed(pid, {text.data(), static_cast<std::size_t>(got)});
    if (!process) return;
    struct stat owner {};
    if (::fstat(file.get(), &owner) == 0) process->user = owner.st_uid;
    found.push_back(*process);
    const bool isWorthIt = process->user == m_user && !process->isKernelThread();
    if (held && isWorthIt && held->size() < m_mostHeld) held->emplace(pid, std::move(file));
  });
  return found;
}

// Every thread is found by its own number as well, and below that with figures of its own.
std::optional<ThreadActivity> ProcKernel::activity(Pid tid) const {
  PathBuffer path;
  std::snprintf(path.data(), path.size(), "%d/task/%d/stat", tid, tid);
  const Descriptor file(::openat(m_root.get(), path.data(), O_RDONLY | O_CLOEXEC));
  std::array<char, longestStat> text; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
  const ssize_t got = file ? ::read(file.get(), text.data(), text.size()) : -1;
  if (got <= 0) return std::nullopt;
  const std::optional<ProcStat> stat = parseProcStat({text.data(), static_cast<std::size_t>(got)});
  if (!stat) return std::nullopt;
  ThreadActivity activity;
  // Interruptible sleep, stopped by a signal or a tracer, ended.
  activity.isResting = std::string_view("STtZXx").find(stat->state) != std::string_view::npos;
  activity.isRunning = stat->state == 'R';
  activity.cpuTicks = stat->userTicks + stat->kernelTicks;
  activity.startTicks = stat->startTicks;
  activity.residentPages = stat->residentPages;
  return activity;
}

std::vector<Pid> ProcKernel::threads(Pid pid) const {
  std::vector<Pid> found;
  const Descriptor folder = open(pid, "task", O_RDONLY | O_DIRECTORY);
  if (folder) forEachPid(folder.get(), [&](Pid tid) { found.push_back(tid); });
  return found;
}

bool ProcKernel::isOwnChild(Pid pid) const {
  PathBuffer path;
  struct stat folder {};
  // The folder itself, unlike the files in it, always belongs to the effective user.
  return ::fstatat(m_root.get(), pathOf(path, pid, ""), &folder, 0) == 0 && folder.st_uid == m_user;
}

bool ProcKernel::isOwn(Pid pid) const {
  PathBuffer path;
  struct stat file {};
  if (::fstatat(m_root.get(), pathOf(path, pid, "stat"), &file, 0) != 0) return false;
  // The file belongs to the process's effective user, but to root when the process hides its memory, as one
  // does that has another real user. So an ordinary user's own file says all; otherwise only status does.
  if (m_user != 0 && file.st_uid == m_user) return true;
  const std::optional<std::string> status = readOf(pid, "status");
  const std::size_t line = status ? status->find("\nUid:") : std::string::npos;
  if (line == std::string::npos) return false;
  unsigned real = 0;
  unsigned effective = 0;
  if (std::sscanf(status->c_str() + line, "\nUid: %u %u", &real, &effective) != 2) return false;
  return real == m_user && effective == m_user;
}

std::optional<Autogroup> ProcKernel::autogroup(Pid pid) const {
  return readAutogroup(open(pid, "autogroup", O_RDONLY));
}

std::optional<Autogroup> ProcKernel::writableAutogroup(Pid pid) const {
  // Opening for writing is the whole permission check: after it the kernel only asks for patience.
  return readAutogroup(open(pid, "autogroup", O_RDWR));
}

SessionChange ProcKernel::setAutogroupNice(Pid pid, const Autogroup& expected, int nice,
                                           std::chrono::milliseconds insisting) {
  constexpr int writesBetweenLooks = 64; // well below a tenth of a millisecond
  // The descriptor stays bound to that very process.
  const Descriptor file = open(pid, "autogroup", O_RDWR);
  const std::string text = std::to_string(nice);
  const auto end = now() + insisting;
  do {
    const std::optional<Autogroup> group = readAutogroup(file);
    if (!group || group->id != expected.id) return SessionChange::elsewhere;
    if (group->nice != expected.nice) return SessionChange::chosen;
    for (int count = insisting.count() > 0 ? writesBetweenLooks : 1; count > 0; --count) {
      if (::write(file.get(), text.data(), text.size()) >= 0) return SessionChange::done;
      if (errno != EAGAIN) return SessionChange::refused;
    }
  } while (now() < end);
  return SessionChange::later;
}

std::string ProcKernel::placeOf(const std::string& path) const {
  constexpr std::string_view proc = "/proc/";
  constexpr std::string_view sys = "/sys/";
  if (path.starts_with(proc)) return m_procRoot + path.substr(proc.size() - 1);
  if (path.starts_with(sys)) return m_sysRoot + path.substr(sys.size() - 1);
  return path;
}

std::optional<std::string> ProcKernel::read(const std::string& path) const {
  return readKernelFile(placeOf(path));
}

bool ProcKernel::exists(const std::string& path) const { return ::access(placeOf(path).c_str(), F_OK) == 0; }

std::optional<std::string> ProcKernel::link(const std::string& path) const {
  return readKernelLink(placeOf(path));
}

std::optional<std::vector<std::string>> ProcKernel::folders(const std::string& path) const {
  std::vector<std::string> found;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(placeOf(path), error), end; !error && entry != end;
       entry.increment(error)) {
    if (entry->is_directory(error)) found.push_back(entry->path().filename().string());
  }
  if (error) return std::nullopt;
  return found;
}

void ProcKernel::sleep(std::chrono::steady_clock::duration duration) {
  std::this_thread::sleep_for(duration);
}

} // namespace vantle
