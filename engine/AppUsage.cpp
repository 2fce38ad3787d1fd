// SPDX-License-Identifier: MIT
#include "engine/AppUsage.h"

#include "base/Invariant.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <limits>

namespace vantle {

namespace {

// The same in every locale, as the words around the numbers are.
std::string fixed(double amount, int decimals) {
  std::array<char, 32> digits{};
  const auto result =
      std::to_chars(digits.data(), digits.data() + digits.size(), amount, std::chars_format::fixed, decimals);
  return {digits.data(), result.ptr};
}

// No unit counts beyond four digits before the point, so one comma is enough.
std::string withGrouping(const std::string& number) {
  const std::size_t wholeDigits = std::min(number.find('.'), number.size());
  if (wholeDigits <= 3) return number;
  return number.substr(0, wholeDigits - 3) + "," + number.substr(wholeDigits - 3);
}

std::string withoutTrailingZeros(std::string number) {
  if (number.find('.') == std::string::npos) return number;
  number.erase(number.find_last_not_of('0') + 1);
  if (number.back() == '.') number.pop_back();
  return number;
}

} // namespace

std::uint64_t footprint(const ProcessTable& processes, Pid pid) {
  return processes.footprint(pid).value_or(0);
}

std::uint64_t appFootprint(const ProcessTable& processes, const AppTrees& trees, Pid app) {
  std::uint64_t sum = 0;
  for (const Pid pid : trees.processesOf(app)) {
    const std::uint64_t bytes = footprint(processes, pid);
    invariant(bytes <= std::numeric_limits<std::uint64_t>::max() - sum, "memory sum overflows");
    sum += bytes;
  }
  return sum;
}

std::vector<AppUsage> usageList(const ProcessTable& processes, const AppTrees& trees,
                                const std::map<Pid, ManagedApp>& managed) {
  std::vector<AppUsage> rows;
  rows.reserve(managed.size());
  for (const auto& [pid, app] : managed) rows.push_back({pid, app.name, appFootprint(processes, trees, pid)});
  std::stable_sort(rows.begin(), rows.end(),
                   [](const AppUsage& left, const AppUsage& right) { return left.bytes > right.bytes; });
  return rows;
}

std::string byteText(std::uint64_t count) {
  invariant(count <= static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max()),
            "byte count above the signed range");
  constexpr std::array units{"bytes", "KB", "MB", "GB", "TB", "PB", "EB"};
  constexpr std::array decimals{0, 0, 1, 2, 2, 2, 2};
  constexpr double step = 1024;
  if (count == 0) return "Zero KB";
  if (count == 1) return "1 byte";

  double amount = static_cast<double>(count);
  std::size_t unit = 0;
  const auto toNextUnit = [&] {
    amount /= step;
    ++unit;
  };
  while (amount >= step && unit + 1 < units.size()) toNextUnit();
  std::string text = fixed(amount, decimals.at(unit));
  // 1,023.97 MB would round up to 1,024 MB, which is 1 GB.
  if (text.starts_with("1024") && unit + 1 < units.size()) {
    toNextUnit();
    text = fixed(amount, decimals.at(unit));
  }
  return withoutTrailingZeros(withGrouping(text)) + " " + units.at(unit);
}

} // namespace vantle
