// SPDX-License-Identifier: MIT
#include "command/linux/BusDictionaries.h"

#include "status/Interface.h"

#include <functional>
#include <string>
#include <string_view>

namespace vantle {
namespace {

using Entry = std::function<int(std::string_view key, const char* type)>;

// Each entry of a dictionary: `entry` reads the value that stands next, if it wants it.
bool readEntries(sd_bus_message* message, const Entry& entry) {
  if (sd_bus_message_enter_container(message, 'a', "{sv}") < 0) return false;
  while (sd_bus_message_enter_container(message, 'e', "sv") > 0) {
    const char* key = nullptr;
    const char* type = nullptr;
    if (sd_bus_message_read_basic(message, 's', &key) < 0) return false;
    if (sd_bus_message_peek_type(message, nullptr, &type) < 0) return false;
    if (sd_bus_message_enter_container(message, 'v', type) < 0) return false;
    if (entry(key, type) < 0) return false;
    if (sd_bus_message_exit_container(message) < 0) return false;
    if (sd_bus_message_exit_container(message) < 0) return false;
  }
  return sd_bus_message_exit_container(message) >= 0;
}

template <class Basic> int take(sd_bus_message* message, std::string_view type, char wanted, Basic& value) {
  if (type != std::string_view(&wanted, 1)) return sd_bus_message_skip(message, type.data());
  return sd_bus_message_read_basic(message, wanted, &value);
}

int takeText(sd_bus_message* message, std::string_view type, std::string& text) {
  const char* value = nullptr;
  const int status = take(message, type, 's', value);
  if (status >= 0 && value != nullptr) text = value;
  return status;
}

int takeText(sd_bus_message* message, std::string_view type, std::optional<std::string>& text) {
  return takeText(message, type, text.emplace());
}

int takeBool(sd_bus_message* message, std::string_view type, bool& truth) {
  int value = truth ? 1 : 0;
  const int status = take(message, type, 'b', value);
  truth = value != 0;
  return status;
}

bool readApp(sd_bus_message* message, AppStatus& app) {
  return readEntries(message, [&](std::string_view key, const char* type) {
    if (key == boost1::appName) return takeText(message, type, app.name);
    if (key == boost1::appId) return takeText(message, type, app.id);
    if (key == boost1::appPid) return take(message, type, 'i', app.pid);
    if (key == boost1::appState) return takeText(message, type, app.state);
    if (key == boost1::appReason) return takeText(message, type, app.reason);
    if (key == boost1::appLever) return takeText(message, type, app.lever);
    if (key == boost1::appProcesses) return take(message, type, 't', app.processes);
    if (key == boost1::appMemory) return take(message, type, 't', app.memory);
    if (key == boost1::appKnownBy) return takeText(message, type, app.knownBy);
    if (key == boost1::appKnownBecause) return takeText(message, type, app.knownBecause);
    return sd_bus_message_skip(message, type);
  });
}

} // namespace

bool readApps(sd_bus_message* message, std::vector<AppStatus>& apps) {
  apps.clear();
  if (sd_bus_message_enter_container(message, 'a', "a{sv}") < 0) return false;
  while (sd_bus_message_at_end(message, 0) == 0) {
    if (!readApp(message, apps.emplace_back())) return false;
  }
  return sd_bus_message_exit_container(message) >= 0;
}

bool readStatus(sd_bus_message* message, Status& status) {
  return readEntries(message, [&](std::string_view key, const char* type) {
    if (key == boost1::version) return takeText(message, type, status.version);
    if (key == boost1::active) return takeBool(message, type, status.isActive);
    if (key == boost1::automatic) return takeBool(message, type, status.isAutomatic);
    if (key == boost1::pausedUntil) return take(message, type, 't', status.pausedUntil);
    if (key == boost1::pressure) return takeText(message, type, status.pressure);
    const std::string_view signature(type);
    if (key == boost1::app && signature == "a{sv}") {
      AppStatus app;
      if (!readApp(message, app)) return -1;
      status.boostName = app.name;
      status.boostId = app.id;
      status.boostPid = app.pid;
      return 0;
    }
    if (key == boost1::apps && signature == "aa{sv}") return readApps(message, status.apps) ? 0 : -1;
    return sd_bus_message_skip(message, type);
  });
}

} // namespace vantle
