// SPDX-License-Identifier: MIT
#include "platform/linux/kernel/Kernel.h"

#include "platform/linux/process/ControlGroupFile.h"

#include <charconv>
#include <cstddef>
#include <sched.h>
#include <system_error>

namespace vantle {

namespace {

template <typename Number> bool takeNumber(std::string_view& text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return error == std::errc{};
}

bool takeWord(std::string_view& text, std::string_view word) {
  if (!text.starts_with(word)) return false;
  text.remove_prefix(word.size());
  return true;
}

} // namespace

std::optional<Autogroup> Autogroup::parse(std::string_view text) {
  Autogroup group;
  if (!takeWord(text, "/autogroup-") || !takeNumber(text, group.id) || !takeWord(text, " nice ") ||
      !takeNumber(text, group.nice)) {
    return std::nullopt;
  }
  return group;
}

bool Scheduling::isRealTime() const {
  return policy == SCHED_FIFO || policy == SCHED_RR || policy == SCHED_DEADLINE;
}

std::string Kernel::bootId() const {
  const std::string text = read("/proc/sys/kernel/random/boot_id").value_or("");
  return text.substr(0, text.find('\n'));
}

std::string Kernel::unifiedPath(Pid pid) const {
  const std::optional<std::string> file = controlGroups(pid);
  const auto path = file ? controlGroupPath(*file) : std::nullopt;
  return path ? std::string(*path) : std::string();
}

} // namespace vantle
