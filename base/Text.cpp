// SPDX-License-Identifier: MIT
#include "base/Text.h"

#include <algorithm>

namespace vantle {

std::string_view takePart(std::string_view& list, char separator) {
  const std::size_t end = std::min(list.find(separator), list.size());
  const std::string_view part = list.substr(0, end);
  list.remove_prefix(std::min(end + 1, list.size()));
  return part;
}

std::vector<std::string> split(std::string_view list, char separator) {
  std::vector<std::string> parts;
  while (!list.empty()) parts.emplace_back(takePart(list, separator));
  return parts;
}

bool holdsPart(std::string_view list, char separator, std::string_view part) {
  while (!list.empty()) {
    if (takePart(list, separator) == part) return true;
  }
  return false;
}

std::string asciiLowered(std::string_view text) {
  std::string lowered(text);
  std::transform(lowered.begin(), lowered.end(), lowered.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return lowered;
}

std::string fileNameOf(std::string_view path) { return std::string(path.substr(path.rfind('/') + 1)); }

std::string folderOf(std::string_view path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos) return {};
  return std::string(path.substr(0, std::max<std::size_t>(slash, 1)));
}

} // namespace vantle
