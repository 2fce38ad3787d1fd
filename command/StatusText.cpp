// SPDX-License-Identifier: MIT
#include "command/StatusText.h"

#include "status/Words.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <ctime>

namespace vantle {
namespace {

// Names come from other programs; a terminal must not be told anything by one.
std::string printable(const std::string& text) {
  std::string clean = text;
  std::replace_if(
      clean.begin(), clean.end(),
      [](char letter) { return static_cast<unsigned char>(letter) < 0x20 || letter == 0x7f; }, '?');
  return clean;
}

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
  std::tm local{};
  std::array<char, 16> text{};
  if (::localtime_r(&time, &local) == nullptr) return {};
  return {text.data(), std::strftime(text.data(), text.size(), "%H:%M", &local)};
}

std::string statusText(const Status& status) {
  std::string text =
      status.isActive ? "Boost on for " + printable(status.boostName) + "\n" : std::string("Boost off\n");
  text += status.isAutomatic ? "Starts by itself" : "Does not start by itself";
  if (status.pausedUntil != 0) text += ", paused until " + clockText(status.pausedUntil);
  text += "\nMemory pressure: " + status.pressure + "\n";
  for (const AppStatus& app : status.apps) {
    text += "  " + printable(app.name) + " (" + std::to_string(app.pid) + "): " + stateText(app);
    if (app.reason != app.state) text += " (" + app.reason + ")";
    text += "\n";
  }
  return text;
}

std::string whyText(const AppStatus& app) {
  return printable(app.name) + " (" + std::to_string(app.pid) + "): " + stateText(app) + ". " +
         std::string(sentenceOf(app.reason)) + "\n";
}

} // namespace vantle
