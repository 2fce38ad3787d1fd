// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// A place in the version 2 control group tree that the user manager keeps for one of its units.
struct UnitPlace {
  std::string name; // of the unit, as the manager knows it
  std::string path; // of its folder below the mount

  bool isService() const { return name.ends_with(".service"); }
  // Whether a process with this path stands in the unit, however deep.
  bool holds(std::string_view processPath) const;
  friend bool operator==(const UnitPlace&, const UnitPlace&) = default;
};

// Where the user manager keeps all that is its own, and where desktops put apps in it.
std::string userManagerPath(unsigned user);
std::string appSlicePath(unsigned user);

// The unit of the user manager that a process stands in: its scope or service, in whatever slices. Absent for
// processes that stand elsewhere.
std::optional<UnitPlace> unitOf(std::string_view managerPath, std::string_view processPath);

// The path of the unit that a process stands in, if desktops make such units for one app each: scopes, and
// services that were made for an app or for its activation. Empty for all others.
std::string appPlaceOf(std::string_view managerPath, std::string_view processPath);

// The unit whose weight decides between a process and the app in front: where their two paths part, the
// folder on the side of the process. A weight further in would be compared only with the process's own
// neighbours. Absent when they do not part at a unit of this manager.
std::optional<UnitPlace> weighingUnit(std::string_view managerPath, std::string_view frontPath,
                                      std::string_view processPath);

} // namespace vantle
