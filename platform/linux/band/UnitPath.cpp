// SPDX-License-Identifier: MIT
#include "platform/linux/band/UnitPath.h"

#include <algorithm>

namespace vantle {

namespace {

bool isBelow(std::string_view path, std::string_view folder) {
  return path.size() > folder.size() && path.starts_with(folder) && path[folder.size()] == '/';
}

// The folder that a path goes on with below another one; empty when it does not.
std::string_view nextFolder(std::string_view path, std::string_view folder) {
  if (!isBelow(path, folder)) return {};
  const std::string_view rest = path.substr(folder.size() + 1);
  return rest.substr(0, rest.find('/'));
}

std::string_view commonFolder(std::string_view left, std::string_view right) {
  std::string_view common;
  for (;;) {
    const std::string_view next = nextFolder(left, common);
    if (next.empty() || next != nextFolder(right, common)) return common;
    common = left.substr(0, common.size() + 1 + next.size());
  }
}

bool isUnitFolder(std::string_view name) {
  return name.ends_with(".scope") || name.ends_with(".service") || name.ends_with(".slice");
}

UnitPlace placeOf(std::string_view folder, std::string_view name) {
  std::string path(folder);
  path.append("/").append(name);
  // The manager puts an underscore before names that would clash with the kernel's own files.
  if (name.starts_with('_')) name.remove_prefix(1);
  return {std::string(name), std::move(path)};
}

} // namespace

bool UnitPlace::holds(std::string_view processPath) const {
  return processPath == path || isBelow(processPath, path);
}

std::string userManagerPath(unsigned user) {
  const std::string id = std::to_string(user);
  return "/user.slice/user-" + id + ".slice/user@" + id + ".service";
}

std::string appSlicePath(unsigned user) { return userManagerPath(user) + "/app.slice"; }

std::optional<UnitPlace> unitOf(std::string_view managerPath, std::string_view processPath) {
  std::string_view folder = processPath.substr(0, managerPath.size());
  if (folder != managerPath) return std::nullopt;
  for (;;) {
    const std::string_view next = nextFolder(processPath, folder);
    if (next.ends_with(".scope") || next.ends_with(".service")) return placeOf(folder, next);
    if (!next.ends_with(".slice")) return std::nullopt;
    folder = processPath.substr(0, folder.size() + 1 + next.size());
  }
}

std::string appPlaceOf(std::string_view managerPath, std::string_view processPath) {
  std::optional<UnitPlace> unit = unitOf(managerPath, processPath);
  if (!unit || unit->name == "init.scope") return {};
  const bool isForAnApp =
      !unit->isService() || unit->name.starts_with("app-") || unit->name.starts_with("dbus-:");
  return isForAnApp ? std::move(unit->path) : std::string();
}

std::optional<UnitPlace> weighingUnit(std::string_view managerPath, std::string_view frontPath,
                                      std::string_view processPath) {
  const std::string_view common = commonFolder(frontPath, processPath);
  if (common != managerPath && !isBelow(common, managerPath)) return std::nullopt;
  // Inside one unit there are no further units: what parts there was made by the app itself.
  if (unitOf(managerPath, common)) return std::nullopt;
  const std::string_view next = nextFolder(processPath, common);
  if (next.empty() || !isUnitFolder(next)) return std::nullopt;
  return placeOf(common, next);
}

} // namespace vantle
