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

// What stands in the line of that label. The name line comes first, but a line break in a name is written as
// "\n": the others are the kernel's. Absent when there is none, or it is cut short.
std::optional<std::string_view> lineOf(std::string_view status, std::string_view label) {
  const std::size_t line = status.find(label);
  if (line == std::string_view::npos) return std::nullopt;
  const std::string_view value = status.substr(line + label.size());
  const std::size_t end = value.find('\n');
  return end == std::string_view::npos ? std::nullopt : std::optional(value.substr(0, end));
}

} // namespace

std::vector<Pid> namespacePids(std::string_view status) {
  std::string_view list = lineOf(status, "\nNSpid:\t").value_or("");
  std::vector<Pid> numbers;
  while (!list.empty()) {
    Pid number = 0;
    if (numbers.size() == mostNamespaces || !readNumber(takePart(list, '\t'), number)) return {};
    numbers.push_back(number);
  }
  return numbers;
}

std::optional<Pid> processOfThread(std::string_view status) {
  Pid process = 0;
  if (!readNumber(lineOf(status, "\nTgid:\t").value_or(""), process)) return std::nullopt;
  return process;
}

} // namespace vantle
