// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// The version 2 control group tree below one user manager: which folders there are, who stands where, and
// which of them have a weight. The folders above the manager are fixed.
class SimulatedUnits {
 public:
  static constexpr std::uint64_t noWeight = ~std::uint64_t{0}; // "not set", which counts as 100

  struct Unit {
    std::uint64_t weight = noWeight;   // as the manager remembers it
    std::uint64_t inKernel = noWeight; // as it told the kernel
    std::uint64_t own = noWeight;      // as it would be without this program
  };

  SimulatedUnits(std::string managerPath, bool isDelegated)
      : m_managerPath(std::move(managerPath)), m_isDelegated(isDelegated) {}

  const std::string& managerPath() const { return m_managerPath; }
  // The unit on this path that a desktop made for an app; empty when there is none.
  std::string appUnitOn(std::string_view path) const;
  std::string appSlice() const { return m_managerPath + "/app.slice"; }
  bool isDelegated() const { return m_isDelegated; } // the manager has the cpu controller

  std::function<void(Pid pid, const std::string& path)> onMove;

  // Where processes stand. A scope ends with its last process; services and slices stay, with their weights.
  void move(Pid pid, const std::string& path);
  void remove(Pid pid);
  const std::string* pathOf(Pid pid) const;
  const std::map<Pid, std::string>& places() const { return m_places; }

  std::map<std::string, Unit>& units() { return m_units; } // by path
  const std::map<std::string, Unit>& units() const { return m_units; }
  std::optional<std::string> pathOfUnit(std::string_view name) const;

  // As the kernel shows it.
  bool hasFolder(const std::string& path) const;
  bool hasCpu(const std::string& path) const;  // cpu.weight and cpu.idle stand in the folder
  bool isIdle(const std::string& path) const;  // and cpu.idle is 1
  bool isWeighed(std::string_view path) const; // a process there stands in some group with a weight
  std::vector<Pid> processesIn(const std::string& path) const;    // in this very folder
  std::vector<Pid> processesBelow(const std::string& path) const; // and in it
  std::vector<std::string> foldersIn(const std::string& path) const;

 private:
  void addUnitsOn(const std::string& path);
  void endScope(const std::string& path);
  bool isManaged(std::string_view path) const;

  std::string m_managerPath;
  bool m_isDelegated;
  std::map<Pid, std::string> m_places;
  std::map<std::string, Unit> m_units;
};

// The folders on the way to a path, the outermost first, itself included.
std::vector<std::string> foldersOnTheWay(std::string_view path);

} // namespace vantle
