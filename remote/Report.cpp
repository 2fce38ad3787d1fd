// SPDX-License-Identifier: MIT
#include "remote/Report.h"

#include "base/PlainText.h"

#include <cstddef>
#include <map>

namespace vantle {
namespace {

std::string decisionOf(const AppStatus& app) {
  std::string text = app.state;
  if (app.reason != app.state) text += " (" + app.reason + ")";
  if (app.lever) text += " by its " + *app.lever;
  return text;
}

} // namespace

std::string reportText(const Status& status, const std::vector<std::pair<std::string, std::string>>& facts,
                       bool withNames) {
  std::string text = "Vantle " + status.version + "\n";
  for (const auto& [subject, sentence] : facts)
    text.append(subject).append(": ").append(sentence).append("\n");
  text += std::string("Boost: ") + (status.isActive ? "on" : "off") + "\n";
  text += std::string("Automatic: ") + (status.isAutomatic ? "on" : "off") +
          (status.pausedUntil != 0 ? ", paused" : "") + "\n";
  text += "Memory pressure: " + status.pressure + "\n";
  text += "Apps: " + std::to_string(status.apps.size()) + "\n";
  if (withNames) {
    for (const AppStatus& app : status.apps) {
      text.append("  ")
          .append(plainText(app.name))
          .append(" [")
          .append(plainText(app.id.value_or("no identifier")));
      text.append(", ").append(std::to_string(app.pid)).append(", processes: ");
      text.append(std::to_string(app.processes));
      if (app.knownBy) text.append(", known by: ").append(*app.knownBy);
      text.append("]: ").append(decisionOf(app)).append("\n");
    }
    return text;
  }
  std::map<std::string, std::size_t> counts;
  for (const AppStatus& app : status.apps) ++counts[decisionOf(app)];
  for (const auto& [decision, count] : counts) {
    text.append("  ").append(std::to_string(count)).append(" ").append(decision).append("\n");
  }
  return text;
}

} // namespace vantle
