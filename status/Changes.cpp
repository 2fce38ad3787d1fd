// SPDX-License-Identifier: MIT
#include "status/Changes.h"

#include <algorithm>
#include <tuple>

namespace vantle {
namespace {

auto toldOf(const AppStatus& app) {
  return std::tie(app.name, app.id, app.pid, app.state, app.reason, app.lever, app.processes, app.knownBy);
}

bool areSame(const std::vector<AppStatus>& before, const std::vector<AppStatus>& now) {
  return std::equal(
      before.begin(), before.end(), now.begin(), now.end(),
      [](const AppStatus& left, const AppStatus& right) { return toldOf(left) == toldOf(right); });
}

} // namespace

Changes changesBetween(const Status& before, const Status& now) {
  const auto boostOf = [](const Status& status) {
    return std::tie(status.boostName, status.boostId, status.boostPid);
  };
  return {.active = before.isActive != now.isActive,
          .app = boostOf(before) != boostOf(now),
          .automatic = before.isAutomatic != now.isAutomatic,
          .pausedUntil = before.pausedUntil != now.pausedUntil,
          .pressure = before.pressure != now.pressure,
          .apps = !areSame(before.apps, now.apps)};
}

} // namespace vantle
