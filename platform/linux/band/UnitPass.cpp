// SPDX-License-Identifier: MIT
#include "platform/linux/band/UnitPass.h"

#include "platform/linux/programs/DesktopPrograms.h"

#include <algorithm>
#include <cctype>
#include <set>
#include <string>
#include <unordered_map>
#include <utility>

namespace vantle {

namespace {

bool isLoginSession(const std::string& path, const UnitWeights& units) {
  // "/user.slice/user-UID.slice/session-N.scope", beside the manager's own folder
  const std::string userSlice = units.managerPath().substr(0, units.managerPath().rfind('/'));
  return path.starts_with(userSlice + "/session-") && path.ends_with(".scope");
}

// The manager takes in whom a service has left behind, as the session's bus does with the apps it starts. It
// makes what it starts itself the first of a session, so where such a process of its lives, that is the main
// one.
bool isOrphanIn(const UnitPlace& service, const ProcessStat& root, const Kernel& kernel,
                const ProcessView& view) {
  if (root.session == root.pid) return false;
  return std::any_of(view.all().begin(), view.all().end(), [&](const ProcessRecord& other) {
    return other.parent == root.parent && other.session == other.pid &&
           service.holds(kernel.unifiedPath(other.pid));
  });
}

// Whose the processes of a later look are: as the view has it, and what was born since is its parent's.
class OwnersNow {
 public:
  OwnersNow(const ProcessView& view, const std::vector<ProcessStat>& now) : m_view(view) {
    for (const ProcessStat& process : now) m_now.emplace(process.pid, &process);
  }

  Pid of(Pid pid) const {
    // A circle, which reused numbers can make, is longer than everybody there is.
    std::size_t steps = 0;
    for (auto at = m_now.find(pid); at != m_now.end() && steps <= m_now.size(); ++steps) {
      const ProcessRecord* known = m_view.find(at->first);
      if (known != nullptr && known->startTicks == at->second->startTicks) return m_view.appOf(at->first);
      at = m_now.find(at->second->parent);
    }
    return 0;
  }

 private:
  const ProcessView& m_view;
  std::unordered_map<Pid, const ProcessStat*> m_now;
};

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
                                                          const ProcessView& view, Pid app,
                                                          const std::vector<Pid>& processes) {
  const std::optional<ProcessStat> root = kernel.stat(app);
  if (!root) return std::nullopt;
  const std::string path = kernel.unifiedPath(app);
  const UnitPlace scope = scopeOf(units, *root);
  const std::optional<UnitPlace> unit = unitOf(units.managerPath(), path);
  if (!unit && !isLoginSession(path, units)) return std::nullopt;
  // A service's own main process stays: the manager watches it there.
  if (unit && unit->isService() && !unit->holds(kernel.unifiedPath(root->parent)) &&
      !isOrphanIn(*unit, *root, kernel, view)) {
    return std::nullopt;
  }

  std::set<std::string> sources; // what stands elsewhere has a place of its own
  for (const Pid pid : processes) sources.insert(kernel.unifiedPath(pid));
  sources.erase(scope.path); // where somebody who is no part of the app may stand as well
  UnitWeights::Adoption adoption;
  adoption.scope = scope.name;
  adoption.isStarted = unit && unit->path == scope.path;
  adoption.outside = [&kernel, &view, app,
                      sources = std::move(sources)](const std::vector<ProcessStat>& now) {
    const OwnersNow owners(view, now);
    std::vector<Pid> outside;
    for (const ProcessStat& process : now) {
      if (!process.isAlive() || owners.of(process.pid) != app || isSystemPart(process.shortName())) continue;
      if (sources.contains(kernel.unifiedPath(process.pid)) && kernel.isOwn(process.pid))
        outside.push_back(process.pid);
    }
    return outside;
  };
  return adoption;
}

void UnitPass::run(const BandPass& pass, const MayTouch& mayTouch) {
  Found found = find(pass, mayTouch);
  const std::vector<UnitPlace> incomplete = adopt(pass, mayTouch, found);
  std::erase_if(found.own, [&](const UnitPlace& place) {
    return std::find(incomplete.begin(), incomplete.end(), place) != incomplete.end();
  });
  if (found.own.empty()) return;
  const std::vector<UnitPlace> lowered = m_units.lower(found.own, m_deadline);
  m_lowered.insert(m_lowered.end(), lowered.begin(), lowered.end());
}

const std::string& UnitPass::pathOf(Pid pid) {
  const auto known = m_paths.find(pid);
  return known != m_paths.end() ? known->second
                                : m_paths.emplace(pid, m_kernel.unifiedPath(pid)).first->second;
}

UnitPass::Found UnitPass::find(const BandPass& pass, const MayTouch& mayTouch) {
  Found found;
  m_apps.clear();
  m_paths.clear();
  found.homeless.resize(pass.apps.size());
  std::unordered_map<Pid, std::size_t> places;
  for (std::size_t at = 0; at < pass.apps.size(); ++at) places.emplace(pass.apps[at].root, at);
  for (const ProcessRecord& process : pass.view.all()) {
    const auto place = places.find(pass.view.appOf(process.pid));
    if (place == places.end() || !mayTouch(process)) continue;
    const std::optional<UnitPlace> unit = ownUnit(process.pid, place->first, pass, mayTouch);
    if (!unit) {
      found.homeless[place->second].push_back(process.pid);
    } else if (std::find(found.own.begin(), found.own.end(), *unit) == found.own.end()) {
      found.own.push_back(*unit);
    }
  }
  return found;
}

// Moves what has no unit of its app's own, and looks again: an app that has left a unit may have been all
// that another one shared it with. The scopes of the answer did not get all that they should hold.
std::vector<UnitPlace> UnitPass::adopt(const BandPass& pass, const MayTouch& mayTouch, Found& found) {
  std::vector<UnitPlace> scopes;
  std::vector<UnitWeights::Adoption> adoptions;
  for (std::size_t at = 0; at < pass.apps.size(); ++at) {
    const Pid app = pass.apps[at].root;
    const std::optional<ProcessStat> root = found.homeless[at].empty() ? std::nullopt : m_kernel.stat(app);
    if (!root) continue;
    const UnitPlace scope = scopeOf(m_units, *root);
    if (weighingUnit(m_units.managerPath(), m_frontPath, scope.path) != scope) continue;
    if (auto adoption = adoptionOf(m_units, m_kernel, pass.view, app, found.homeless[at])) {
      adoptions.push_back(std::move(*adoption));
      scopes.push_back(scope);
    }
  }
  if (adoptions.empty()) return {};
  m_units.adopt(adoptions, m_deadline);
  found = find(pass, mayTouch);
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

std::optional<UnitPlace> UnitPass::ownUnit(Pid pid, Pid app, const BandPass& pass, const MayTouch& mayTouch) {
  std::optional<UnitPlace> unit = weighingUnit(m_units.managerPath(), m_frontPath, pathOf(pid));
  if (!unit) return std::nullopt;
  const auto known = m_apps.find(unit->path);
  const Pid owner =
      known != m_apps.end() ? known->second : (m_apps[unit->path] = appIn(*unit, pass, mayTouch));
  return owner == app ? unit : std::nullopt;
}

// The app that every process in a unit belongs to.
Pid UnitPass::appIn(const UnitPlace& place, const BandPass& pass, const MayTouch& mayTouch) const {
  const std::optional<std::vector<Pid>> pids = m_units.processesIn(place.path);
  if (!pids) return 0;
  Pid owner = 0;
  for (const Pid pid : *pids) {
    const ProcessRecord* process = pass.view.find(pid);
    if (process == nullptr) {
      // Born since the look: whose it is will be known at the next one.
      const std::optional<ProcessStat> now = m_kernel.stat(pid);
      const ProcessRecord* parent = now && now->isAlive() ? pass.view.find(now->parent) : nullptr;
      if (!now || !now->isAlive()) continue;
      if (parent == nullptr) return 0;
      process = parent;
    }
    const Pid app = pass.view.appOf(process->pid);
    if (app == 0 || (owner != 0 && app != owner) || !mayTouch(*process)) return 0;
    owner = app;
  }
  return owner;
}

} // namespace vantle
