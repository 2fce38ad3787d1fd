// SPDX-License-Identifier: MIT
#include "platform/linux/process/ControlGroupFile.h"

#include "base/Text.h"

namespace vantle {

std::optional<std::string_view> controlGroupPath(std::string_view cgroupFile, bool cpuOnly) {
  while (!cgroupFile.empty()) { // lines of "number:controllers:path"
    const std::string_view line = takePart(cgroupFile, '\n');
    const std::size_t first = line.find(':');
    const std::size_t second = line.find(':', first + 1);
    if (first == std::string_view::npos || second == std::string_view::npos) continue;
    const std::string_view controllers = line.substr(first + 1, second - first - 1);
    const bool wanted = cpuOnly ? holdsPart(controllers, ',', "cpu") : line.starts_with("0::");
    if (wanted) return line.substr(second + 1);
  }
  return std::nullopt;
}

bool hasWord(std::string_view list, std::string_view word) {
  while (!list.empty()) {
    if (holdsPart(takePart(list, '\n'), ' ', word)) return true;
  }
  return false;
}

} // namespace vantle
