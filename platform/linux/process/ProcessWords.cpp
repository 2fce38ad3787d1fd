// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcessWords.h"

#include "base/Text.h"
#include "platform/posix/Descriptor.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <fcntl.h>
#include <unistd.h>

namespace vantle {

std::string readProcessWords(const std::string& path) {
  constexpr std::size_t longestRead = std::size_t{256} * 1024; // no environment can sensibly be longer
  // A sandbox can put anything where a file is expected; opening a pipe must not wait.
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  std::string bytes;
  std::array<char, 4096> buffer{};
  while (bytes.size() < longestRead) {
    const ssize_t count = ::read(file.get(), buffer.data(), buffer.size());
    if (count <= 0) break;
    bytes.append(buffer.data(), static_cast<std::size_t>(count));
  }
  return bytes;
}

std::vector<std::string> readEnvironment(Pid pid) {
  return split(readProcessWords("/proc/" + std::to_string(pid) + "/environ"), '\0');
}

std::string valueOf(const std::vector<std::string>& environment, std::string_view variable) {
  const auto isIt = [variable](const std::string& one) {
    return one.starts_with(variable) && one.size() > variable.size() && one[variable.size()] == '=';
  };
  const auto found = std::find_if(environment.begin(), environment.end(), isIt);
  return found == environment.end() ? std::string() : found->substr(variable.size() + 1);
}

} // namespace vantle
