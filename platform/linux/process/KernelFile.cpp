// SPDX-License-Identifier: MIT
#include "platform/linux/process/KernelFile.h"

#include "platform/posix/Descriptor.h"

#include <array>
#include <climits>
#include <fcntl.h>
#include <unistd.h>

namespace vantle {

std::optional<std::string> readKernelFile(int folder, const char* path) {
  constexpr std::size_t largest = std::size_t{64} << 10U;
  const Descriptor file(::openat(folder, path, O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (!file) return std::nullopt;
  std::string text;
  std::array<char, 16384> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
  ssize_t got = 0;
  while (text.size() < largest && (got = ::read(file.get(), buffer.data(), buffer.size())) > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(got));
    // The kernel fills the buffer up to the last record that fits; none is as long as half of it.
    if (static_cast<std::size_t>(got) < buffer.size() / 2) break;
  }
  if (got < 0) return std::nullopt;
  return text;
}

std::optional<std::string> readKernelFile(const std::string& path) {
  return readKernelFile(AT_FDCWD, path.c_str());
}

std::optional<std::string> readKernelLink(int folder, const char* path) {
  std::array<char, PATH_MAX> target; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by readlinkat
  const ssize_t length = ::readlinkat(folder, path, target.data(), target.size());
  if (length <= 0) return std::nullopt;
  return std::string(target.data(), static_cast<std::size_t>(length));
}

std::optional<std::string> readKernelLink(const std::string& path) {
  return readKernelLink(AT_FDCWD, path.c_str());
}

std::string withoutDeletedMark(std::string path) {
  if (path.ends_with(deletedMark)) path.resize(path.size() - deletedMark.size());
  return path;
}

} // namespace vantle
