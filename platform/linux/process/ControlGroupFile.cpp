// SPDX-License-Identifier: MIT
#include "platform/linux/process/ControlGroupFile.h"

namespace vantle {

namespace {

bool hasController(std::string_view list, std::string_view controller) {
  while (!list.empty()) {
    const std::string_view item = list.substr(0, list.find(','));
    if (item == controller) return true;
    list.remove_prefix(item.size() < list.size() ? item.size() + 1 : list.size());
  }
  return false;
}

} // namespace

std::optional<std::string_view> controlGroupPath(std::string_view cgroupFile, bool cpuOnly) {
  while (!cgroupFile.empty()) { // lines of "number:controllers:path"
    const std::string_view line = cgroupFile.substr(0, cgroupFile.find('\n'));
    cgroupFile.remove_prefix(line.size() < cgroupFile.size() ? line.size() + 1 : cgroupFile.size());
    const std::size_t first = line.find(':');
    const std::size_t second = line.find(':', first + 1);
    if (first == std::string_view::npos || second == std::string_view::npos) continue;
    const std::string_view controllers = line.substr(first + 1, second - first - 1);
    const bool wanted = cpuOnly ? hasController(controllers, "cpu") : line.starts_with("0::");
    if (wanted) return line.substr(second + 1);
  }
  return std::nullopt;
}

bool hasWord(std::string_view list, std::string_view word) {
  while (!list.empty()) {
    const std::size_t end = list.find_first_of(" \n");
    if (list.substr(0, end) == word) return true;
    list.remove_prefix(end == std::string_view::npos ? list.size() : end + 1);
  }
  return false;
}

} // namespace vantle
