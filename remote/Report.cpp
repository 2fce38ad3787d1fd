// SPDX-License-Identifier: MIT
#include "remote/Report.h"

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
  for (const auto& [subject, sentence] : facts) text += subject + ": " + sentence + "\n";
  text += std::string("Boost: ") + (status.isActive ? "on" : "off") + "\n";
  text += std::string("Automatic: ") + (status.isAutomatic ? "on" : "off") +
          (status.pausedUntil != 0 ? ", paused" : "") + "\n";
  text += "Memory pressure: " + status.pressure + "\n";
  text += "Apps: " + std::to_string(status.apps.size()) + "\n";
  if (withNames) {
    for (const AppStatus& app : status.apps) {
      text += "  " + app.name + " [" + app.id.value_or("no identifier") + ", " + std::to_string(app.pid) +
              ", processes: " + std::to_string(app.processes) + "]: " + decisionOf(app) + "\n";
    }
    return text;
  }
  std::map<std::string, std::size_t> counts;
  for (const AppStatus& app : status.apps) ++counts[decisionOf(app)];
  for (const auto& [decision, count] : counts) text += "  " + std::to_string(count) + " " + decision + "\n";
  return text;
}

} // namespace vantle
