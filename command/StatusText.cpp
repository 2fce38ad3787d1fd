// SPDX-License-Identifier: MIT
#include "command/StatusText.h"

#include "base/PlainText.h"
#include "status/Words.h"

#include <array>
#include <cstddef>
#include <ctime>

namespace vantle {
namespace {

std::string memoryText(std::uint64_t bytes) {
  constexpr std::uint64_t megabyte = 1024 * 1024;
  return std::to_string(bytes / megabyte) + " MB";
}

std::string stateText(const AppStatus& app) {
  std::string text = app.state;
  if (app.lever) text += " by its " + *app.lever;
  if (app.memory != 0) text += ", " + memoryText(app.memory);
  return text;
}

} // namespace

std::string clockText(std::uint64_t seconds) {
  const auto time = static_cast<std::time_t>(seconds);
  const std::time_t now = std::time(nullptr);
  std::tm local{};
  std::tm today{};
  std::array<char, 32> text{};
  if (::localtime_r(&time, &local) == nullptr || ::localtime_r(&now, &today) == nullptr) return {};
  const bool isToday = local.tm_year == today.tm_year && local.tm_yday == today.tm_yday;
  return {text.data(), std::strftime(text.data(), text.size(), isToday ? "%H:%M" : "%Y-%m-%d %H:%M", &local)};
}

std::string statusText(const Status& status) {
  std::string text =
      status.isActive ? "Boost on for " + plainText(status.boostName) + "\n" : std::string("Boost off\n");
  text += status.isAutomatic ? "Starts by itself" : "Does not start by itself";
  if (status.pausedUntil != 0) text += ", paused until " + clockText(status.pausedUntil);
  text += "\nMemory pressure: " + status.pressure + "\n";
  for (const AppStatus& app : status.apps) {
    text += "  " + plainText(app.name) + " (" + std::to_string(app.pid) + "): " + stateText(app);
    if (app.reason != app.state) text += " (" + app.reason + ")";
    text += "\n";
  }
  return text;
}

std::string whyText(const AppStatus& app) {
  std::string text = plainText(app.name) + " (" + std::to_string(app.pid) + "): " + stateText(app) + ". " +
                     std::string(sentenceOf(app.reason)) + "\n";
  if (!app.knownBy) return text;
  text += "  Known";
  if (app.id) text += " as " + plainText(*app.id);
  text += " by " + plainText(*app.knownBy);
  if (app.knownBecause) text += ": " + plainText(*app.knownBecause);
  return text + ".\n";
}

} // namespace vantle
