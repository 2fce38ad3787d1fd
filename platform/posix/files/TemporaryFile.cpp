// SPDX-License-Identifier: MIT
#include "platform/posix/files/TemporaryFile.h"

#include "base/Pid.h"
#include "platform/posix/files/Flush.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <fcntl.h>
#include <filesystem>
#include <optional>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace vantle {

namespace {

constexpr mode_t ownerOnly = 0600;

// ".vantle-PID-NUMBER.tmp": the pid says who may still be writing it.
constexpr std::string_view prefix = ".vantle-";
constexpr std::string_view suffix = ".tmp";
constexpr int mostNames = 100;

std::optional<Pid> writerOf(std::string_view name) {
  if (!name.starts_with(prefix) || !name.ends_with(suffix)) return std::nullopt;
  name.remove_prefix(prefix.size());
  Pid pid = 0;
  const auto [stop, error] = std::from_chars(name.data(), name.data() + name.size(), pid);
  if (error != std::errc{} || *stop != '-' || pid < 1) return std::nullopt;
  return pid;
}

} // namespace

TemporaryFile::TemporaryFile(const std::string& folder) {
  const std::string start = folder + "/" + std::string(prefix) + std::to_string(::getpid()) + "-";
  for (int number = 0; number < mostNames; ++number) {
    m_path = start + std::to_string(number).append(suffix);
    m_file = Descriptor(::open(m_path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, ownerOnly));
    if (m_file || errno != EEXIST) return;
  }
}

TemporaryFile::~TemporaryFile() {
  if (m_file) ::unlink(m_path.c_str());
}

bool TemporaryFile::write(std::string_view bytes) {
  // The mode again: a umask may have taken even the owner's rights away.
  if (!m_file || ::fchmod(m_file.get(), ownerOnly) != 0) return false;
  while (!bytes.empty()) {
    const ssize_t written = ::write(m_file.get(), bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

bool TemporaryFile::flushToDisk() { return flushFile(m_file.get()); }

bool TemporaryFile::replace(const std::string& target) {
  if (!m_file || ::rename(m_path.c_str(), target.c_str()) != 0) return false;
  m_file = Descriptor();
  return true;
}

void TemporaryFile::removeLeftovers(const std::string& folder) {
  std::error_code error;
  std::filesystem::directory_iterator entries(folder, error);
  const std::filesystem::directory_iterator end;
  while (!error && entries != end) {
    const std::string name = entries->path().filename().string();
    const std::optional<Pid> writer = writerOf(name);
    if (writer && ::kill(*writer, 0) != 0 && errno == ESRCH) ::unlink(entries->path().c_str());
    entries.increment(error);
  }
}

} // namespace vantle
