// SPDX-License-Identifier: MIT
#include "platform/linux/process/NamespacePids.h"

#include "base/Text.h"

#include <charconv>
#include <cstddef>
#include <system_error>

namespace vantle {

namespace {

constexpr std::size_t mostNamespaces = 33; // MAX_PID_NS_LEVEL further in than the first

bool readNumber(std::string_view text, Pid& number) {
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  return error == std::errc{} && stop == end && number >= 1;
}

} // namespace

std::vector<Pid> namespacePids(std::string_view status) {
  constexpr std::string_view label = "\nNSpid:\t";
  // The name line comes first, but a line break in a name is written as "\n": this one is the kernel's.
  const std::size_t line = status.find(label);
  if (line == std::string_view::npos) return {};
  std::string_view list = status.substr(line + label.size());
  const std::size_t end = list.find('\n');
  if (end == std::string_view::npos) return {}; // cut short
  list = list.substr(0, end);
  std::vector<Pid> numbers;
  while (!list.empty()) {
    Pid number = 0;
    if (numbers.size() == mostNamespaces || !readNumber(takePart(list, '\t'), number)) return {};
    numbers.push_back(number);
  }
  return numbers;
}

} // namespace vantle
