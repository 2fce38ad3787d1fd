// SPDX-License-Identifier: MIT
#include "status/StatusJson.h"

#include <utility>

namespace vantle {
namespace {

Json orNull(const std::optional<std::string>& text) { return text ? Json(*text) : Json(); }

Json number(Pid pid) { return Json(static_cast<std::int64_t>(pid)); }

Json boostJson(const Status& status) {
  Json app;
  if (status.isActive) {
    app = Json::Object{
        {"name", status.boostName}, {"id", orNull(status.boostId)}, {"pid", number(status.boostPid)}};
  }
  return Json::Object{{"active", status.isActive}, {"app", std::move(app)}};
}

Json appJson(const AppStatus& app) {
  return Json::Object{{"name", app.name},           {"id", orNull(app.id)},
                      {"pid", number(app.pid)},     {"state", app.state},
                      {"reason", app.reason},       {"lever", orNull(app.lever)},
                      {"processes", app.processes}, {"knownBy", orNull(app.knownBy)}};
}

} // namespace

Json statusJson(const Status& status) {
  Json::Array apps;
  apps.reserve(status.apps.size());
  for (const AppStatus& app : status.apps) apps.push_back(appJson(app));
  return Json::Object{{"version", status.version},   {"running", true},
                      {"boost", boostJson(status)},  {"automatic", status.isAutomatic},
                      {"pressure", status.pressure}, {"apps", std::move(apps)}};
}

Json statusJsonWithoutCopy(const std::string& version) {
  return Json::Object{{"version", version},  {"running", false},   {"boost", boostJson({})},
                      {"automatic", Json()}, {"pressure", Json()}, {"apps", Json::Array{}}};
}

} // namespace vantle
