// SPDX-License-Identifier: MIT
#include "platform/darwin/process/SystemValue.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <sys/sysctl.h>

namespace vantle {

std::optional<int> systemNumber(const char* name) {
  int value = 0;
  std::size_t size = sizeof value;
  if (::sysctlbyname(name, &value, &size, nullptr, 0) != 0 || size != sizeof value) return std::nullopt;
  return value;
}

// Longer ones are none that anybody here asks for.
std::optional<std::string> systemText(const char* name) {
  std::array<char, 256> text{};
  std::size_t size = text.size();
  if (::sysctlbyname(name, text.data(), &size, nullptr, 0) != 0 || size > text.size()) return std::nullopt;
  return std::string(text.data(), ::strnlen(text.data(), size));
}

} // namespace vantle
