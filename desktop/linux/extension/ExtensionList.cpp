// SPDX-License-Identifier: MIT
#include "desktop/linux/extension/ExtensionList.h"

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vantle {

namespace {

constexpr std::string_view noneBefore = "@as ";

// The names, quoted as they are printed.
std::optional<std::vector<std::string>> namesOf(std::string_view list) {
  if (list.starts_with(noneBefore)) list.remove_prefix(noneBefore.size());
  if (!list.starts_with('[') || !list.ends_with(']')) return std::nullopt;
  list = list.substr(1, list.size() - 2);
  std::vector<std::string> names;
  while (!list.empty()) {
    const char quote = list.front();
    if (quote != '\'' && quote != '"') return std::nullopt;
    std::size_t end = 1;
    while (end < list.size() && list[end] != quote) end += list[end] == '\\' ? 2 : 1;
    if (end >= list.size()) return std::nullopt;
    names.emplace_back(list.substr(0, end + 1));
    list.remove_prefix(end + 1);
    if (list.starts_with(", ")) {
      list.remove_prefix(2);
    } else if (!list.empty()) {
      return std::nullopt;
    }
  }
  return names;
}

std::string printed(const std::vector<std::string>& names) {
  std::string list;
  for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
  return (list.empty() ? std::string(noneBefore) : "") + "[" + list + "]";
}

std::string quoted(std::string_view uuid) { return "'" + std::string(uuid) + "'"; }

} // namespace

bool namesExtension(std::string_view list, std::string_view uuid) {
  const auto names = namesOf(list);
  return names && std::find(names->begin(), names->end(), quoted(uuid)) != names->end();
}

std::optional<std::string> withExtension(std::string_view list, std::string_view uuid) {
  auto names = namesOf(list);
  if (!names) return std::nullopt;
  if (!namesExtension(list, uuid)) names->push_back(quoted(uuid));
  return printed(*names);
}

std::optional<std::string> withoutExtension(std::string_view list, std::string_view uuid) {
  auto names = namesOf(list);
  if (!names) return std::nullopt;
  std::erase(*names, quoted(uuid));
  return printed(*names);
}

} // namespace vantle
