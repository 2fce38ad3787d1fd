// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "platform/linux/band/UnitWeights.h"

#include <functional>
#include <optional>
#include <span>
#include <string>
#include <unordered_map>
#include <vector>

namespace vantle {

// The part of a pass that goes through the user manager: finds for each process the unit whose weight decides
// between it and the app in front, gives apps that have none a unit of their own, and lowers them all.
class UnitPass {
 public:
  using MayTouch = std::function<bool(const ProcessRecord&)>;

  UnitPass(UnitWeights& units, Kernel& kernel, std::string frontPath, UnitWeights::Deadline deadline)
      : m_units(units), m_kernel(kernel), m_frontPath(std::move(frontPath)), m_deadline(deadline) {}

  void run(const BandPass& pass, const MayTouch& mayTouch);

  // Where a process stands, as this pass knows it.
  const std::string& pathOf(Pid pid);

  // Gives back what this pass lowered for nothing: units that no process with such a path has entered.
  void raiseUnused(const std::vector<std::string>& enteredPaths);

  // Where an app is adopted to: a scope as desktops make them.
  static UnitPlace scopeOf(const UnitWeights& units, const ProcessStat& root);
  // The move of these processes of an app, and of what they start meanwhile; absent when the app may not be
  // moved from where its main process stands.
  static std::optional<UnitWeights::Adoption> adoptionOf(const UnitWeights& units, const Kernel& kernel,
                                                         const ProcessView& view, Pid app,
                                                         const std::vector<Pid>& processes);

 private:
  // What one look at the apps found.
  struct Found {
    std::vector<UnitPlace> own;
    std::vector<std::vector<Pid>> homeless; // one list an app: processes without a unit of their app's own
  };
  Found find(const BandPass& pass, const MayTouch& mayTouch);
  std::vector<UnitPlace> adopt(const BandPass& pass, const MayTouch& mayTouch, Found& found);
  std::optional<UnitPlace> ownUnit(Pid pid, Pid app, const BandPass& pass, const MayTouch& mayTouch);
  Pid appIn(const UnitPlace& place, const BandPass& pass, const MayTouch& mayTouch) const;

  UnitWeights& m_units;
  Kernel& m_kernel;
  std::string m_frontPath;
  UnitWeights::Deadline m_deadline;
  std::unordered_map<Pid, std::string> m_paths;
  std::unordered_map<std::string, Pid> m_apps; // that a unit belongs to, by its path; 0: to none alone
  std::vector<UnitPlace> m_lowered;            // by this pass
};

} // namespace vantle
