// SPDX-License-Identifier: MIT
#include "platform/linux/band/KernelFile.h"

#include "platform/linux/Descriptor.h"

#include <array>
#include <fcntl.h>
#include <unistd.h>

namespace vantle {

std::optional<std::string> readKernelFile(int folder, const char* path) {
  constexpr std::size_t largest = std::size_t{64} << 10U;
  const Descriptor file(::openat(folder, path, O_RDONLY | O_CLOEXEC));
  if (!file) return std::nullopt;
  std::string text;
  std::array<char, 4096> buffer; // NOLINT(cppcoreguidelines-pro-type-member-init): filled by read
  ssize_t got = 0;
  while (text.size() < largest && (got = ::read(file.get(), buffer.data(), buffer.size())) > 0) {
    text.append(buffer.data(), static_cast<std::size_t>(got));
  }
  if (got < 0) return std::nullopt;
  return text;
}

std::optional<std::string> readKernelFile(const std::string& path) {
  return readKernelFile(AT_FDCWD, path.c_str());
}

} // namespace vantle
