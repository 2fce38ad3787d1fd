// SPDX-License-Identifier: MIT
#include "platform/linux/band/UnitPass.h"

#include "platform/linux/band/TaskGroups.h"
#include "platform/linux/programs/DesktopPrograms.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <utility>

namespace vantle {

namespace {

bool isLoginSession(const std::string& path, const UnitWeights& units) {
  // "/user.slice/user-UID.slice/session-N.scope", beside the manager's own folder
  const std::string userSlice = units.managerPath().substr(0, units.managerPath().rfind('/'));
  return path.starts_with(userSlice + "/session-") && path.ends_with(".scope");
}

} // namespace

UnitPlace UnitPass::scopeOf(const UnitWeights& units, const ProcessStat& root) {
  // As desktops name them: app-LAUNCHER-APP-NUMBER.scope, a dash inside a part written as \x2d.
  std::string app;
  for (const char letter : root.shortName()) {
    const bool plain =
        std::isalnum(static_cast<unsigned char>(letter)) != 0 || letter == '.' || letter == '_';
    app += plain ? std::string(1, letter) : std::string("\\x2d");
  }
  if (app.empty()) app = "app";
  std::string name = "app-vantle-" + app + "-" + std::to_string(root.pid) + ".scope";
  std::string path = units.appSlice() + "/" + name;
  return {std::move(name), std::move(path)};
}

std::optional<UnitWeights::Adoption> UnitPass::adoptionOf(const UnitWeights& units, const Kernel& kernel,
                                                          const ProcessStat& root, std::vector<Pid> processes,
                                                          const std::set<Pid>& everyApp) {
  const std::string path = kernel.unifiedPath(root.pid);
  const UnitPlace scope = scopeOf(units, root);
  const std::optional<UnitPlace> unit = unitOf(units.managerPath(), path);
  if (!unit && !isLoginSession(path, units)) return std::nullopt;
  // A service's own main process stays: the manager watches it there.
  if (unit && unit->isService() && !unit->holds(kernel.unifiedPath(root.parent))) return std::nullopt;

  std::set<std::string> sources; // what stands elsewhere has a place of its own
  for (const Pid pid : processes) sources.insert(kernel.unifiedPath(pid));
  UnitWeights::Adoption adoption;
  adoption.scope = scope.name;
  adoption.isStarted = unit && unit->path == scope.path;
  adoption.outside = [&kernel, everyApp, app = root.pid, sources = std::move(sources),
                      processes = std::move(processes)](const ProcessScan& now) {
    AppOwners owners(now, everyApp);
    owners.claim(app, processes);
    std::vector<Pid> outside;
    for (const Pid pid : owners.processesOf(app)) {
      const ProcessStat& process = *now.find(pid);
      if (!process.isAlive() || isSystemPart(process.shortName())) continue;
      if (sources.contains(kernel.unifiedPath(pid)) && kernel.isOwn(pid)) outside.push_back(pid);
    }
    return outside;
  };
  return adoption;
}

void UnitPass::run(std::span<const BandGroup> groups, const View& view) {
  Found found = find(groups, view);
  const std::vector<UnitPlace> incomplete = adopt(groups, view, found);
  std::erase_if(found.own, [&](const UnitPlace& place) {
    return std::find(incomplete.begin(), incomplete.end(), place) != incomplete.end();
  });
  if (found.own.empty()) return;
  const std::vector<UnitPlace> lowered = m_units.lower(found.own, m_deadline);
  m_lowered.insert(m_lowered.end(), lowered.begin(), lowered.end());
}

UnitPass::Found UnitPass::find(std::span<const BandGroup> groups, const View& view) {
  Found found;
  m_apps.clear();
  for (std::size_t at = 0; at < groups.size(); ++at) {
    std::vector<Pid>& homeless = found.homeless.emplace_back();
    for (const Pid pid : view.trees[at]) {
      const ProcessStat* process = view.scan.find(pid);
      if (!process || !view.mayTouch(*process)) continue;
      const std::optional<UnitPlace> unit = ownUnit(*process, groups[at].root, view);
      if (!unit) {
        homeless.push_back(pid);
      } else if (std::find(found.own.begin(), found.own.end(), *unit) == found.own.end()) {
        found.own.push_back(*unit);
      }
    }
  }
  return found;
}

// Moves what has no unit of its app's own, and looks again: an app that has left a unit may have been all
// that another one shared it with. The scopes of the answer did not get all that they should hold.
std::vector<UnitPlace> UnitPass::adopt(std::span<const BandGroup> groups, const View& view, Found& found) {
  std::vector<UnitPlace> scopes;
  std::vector<UnitWeights::Adoption> adoptions;
  for (std::size_t at = 0; at < groups.size(); ++at) {
    const ProcessStat* root = view.scan.find(groups[at].root);
    if (found.homeless[at].empty() || !root) continue;
    const UnitPlace scope = scopeOf(m_units, *root);
    if (weighingUnit(m_units.managerPath(), m_frontPath, scope.path) != scope) continue;
    if (auto adoption = adoptionOf(m_units, m_kernel, *root, std::move(found.homeless[at]), view.everyApp)) {
      adoptions.push_back(std::move(*adoption));
      scopes.push_back(scope);
    }
  }
  if (adoptions.empty()) return {};
  m_units.adopt(adoptions, m_deadline);
  found = find(groups, view);
  std::vector<UnitPlace> incomplete;
  for (std::size_t at = 0; at < adoptions.size(); ++at) {
    if (!adoptions[at].succeeded) incomplete.push_back(scopes[at]);
  }
  return incomplete;
}

void UnitPass::raiseUnused(const std::vector<std::string>& enteredPaths) {
  for (const UnitPlace& unit : m_lowered) {
    const bool isUsed = std::any_of(enteredPaths.begin(), enteredPaths.end(),
                                    [&unit](const std::string& path) { return unit.holds(path); });
    if (!isUsed) m_units.raise(unit.path);
  }
}

std::optional<UnitPlace> UnitPass::ownUnit(const ProcessStat& process, Pid app, const View& view) {
  const std::string path = m_kernel.unifiedPath(process.pid);
  std::optional<UnitPlace> unit = weighingUnit(m_units.managerPath(), m_frontPath, path);
  if (!unit) return std::nullopt;
  const auto known = m_apps.find(unit->path);
  const Pid owner = known != m_apps.end() ? known->second : (m_apps[unit->path] = appIn(*unit, view));
  return owner == app ? unit : std::nullopt;
}

// The app that every process in a unit belongs to.
Pid UnitPass::appIn(const UnitPlace& place, const View& view) const {
  const std::optional<std::vector<Pid>> pids = m_units.processesIn(place.path);
  if (!pids) return 0;
  Pid owner = 0;
  for (const Pid pid : *pids) {
    const ProcessStat* known = view.scan.find(pid);
    const std::optional<ProcessStat> process = known ? *known : m_kernel.stat(pid);
    if (!process || !process->isAlive()) continue;
    const Pid app = view.owners.of(*process);
    if (app == 0 || (owner != 0 && app != owner) || !view.mayTouch(*process)) return 0;
    owner = app;
  }
  return owner;
}

} // namespace vantle
