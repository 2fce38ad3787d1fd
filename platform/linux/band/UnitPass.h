// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "platform/linux/band/AppOwners.h"
#include "platform/linux/band/ProcessScan.h"
#include "platform/linux/band/UnitWeights.h"

#include <functional>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace vantle {

// The part of a pass that goes through the user manager: finds for each process the unit whose weight decides
// between it and the app in front, gives apps that have none a unit of their own, and lowers them all.
class UnitPass {
 public:
  struct View {
    const ProcessScan& scan;
    AppOwners& owners;
    const std::vector<std::vector<Pid>>& trees; // one a group
    const std::set<Pid>& everyApp;
    std::function<bool(const ProcessStat&)> mayTouch;
  };

  UnitPass(UnitWeights& units, const Kernel& kernel, std::string frontPath, UnitWeights::Deadline deadline)
      : m_units(units), m_kernel(kernel), m_frontPath(std::move(frontPath)), m_deadline(deadline) {}

  void run(std::span<const BandGroup> groups, const View& view);

  // Gives back what this pass lowered for nothing: units that no process with such a path has entered.
  void raiseUnused(const std::vector<std::string>& enteredPaths);

  // Where an app is adopted to: a scope as desktops make them.
  static UnitPlace scopeOf(const UnitWeights& units, const ProcessStat& root);
  // The move of these processes of an app, and of what they start meanwhile; absent when the app may not be
  // moved from where its main process stands. `everyApp` as in the port.
  static std::optional<UnitWeights::Adoption> adoptionOf(const UnitWeights& units, const Kernel& kernel,
                                                         const ProcessStat& root, std::vector<Pid> processes,
                                                         const std::set<Pid>& everyApp);

 private:
  // What one look at the groups found.
  struct Found {
    std::vector<UnitPlace> own;
    std::vector<std::vector<Pid>> homeless; // one list a group: processes without a unit of their app's own
  };
  Found find(std::span<const BandGroup> groups, const View& view);
  std::vector<UnitPlace> adopt(std::span<const BandGroup> groups, const View& view, Found& found);
  std::optional<UnitPlace> ownUnit(const ProcessStat& process, Pid app, const View& view);
  Pid appIn(const UnitPlace& place, const View& view) const;

  UnitWeights& m_units;
  const Kernel& m_kernel;
  std::string m_frontPath;
  UnitWeights::Deadline m_deadline;
  std::unordered_map<std::string, Pid> m_apps; // that a unit belongs to, by its path; 0: to none alone
  std::vector<UnitPlace> m_lowered;            // by this pass
};

} // namespace vantle
