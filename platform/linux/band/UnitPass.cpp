// SPDX-License-Identifier: MIT
#include "platform/linux/band/UnitPass.h"

#include "platform/linux/band/SystemParts.h"
#include "platform/linux/band/TaskGroups.h"

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

std::optional<UnitWeights::Adoption> UnitPass::adoptionOf(const UnitWeights& units, const ProcessFiles& files,
                                                          const ProcessStat& root,
                                                          std::vector<Pid> processes) {
  const std::string path = files.unifiedPath(root.pid);
  const UnitPlace scope = scopeOf(units, root);
  const std::optional<UnitPlace> unit = unitOf(units.managerPath(), path);
  if (!unit && !isLoginSession(path, units)) return std::nullopt;
  // A service's own main process stays: the manager watches it there.
  if (unit && unit->isService() && !unit->holds(files.unifiedPath(root.parent))) return std::nullopt;

  std::set<std::string> sources; // what stands elsewhere has a place of its own
  for (const Pid pid : processes) sources.insert(files.unifiedPath(pid));
  UnitWeights::Adoption adoption;
  adoption.scope = scope.name;
  adoption.isStarted = unit && unit->path == scope.path;
  adoption.outside = [&files, sources = std::move(sources),
                      processes = std::move(processes)](const auto& now) {
    std::vector<Pid> outside;
    for (const Pid pid : now.withDescendants(processes)) {
      const ProcessStat* process = now.find(pid);
      if (!process || !process->isAlive() || isSystemPart(process->shortName())) continue;
      if (sources.contains(files.unifiedPath(pid)) && files.isOwn(pid)) outside.push_back(pid);
    }
    return outside;
  };
  return adoption;
}

void UnitPass::run(std::span<const BandGroup> groups, const View& view) {
  std::vector<UnitPlace> places;
  std::vector<UnitPlace> scopes;
  std::vector<UnitWeights::Adoption> adoptions;
  const auto add = [&places](const UnitPlace& place) {
    if (std::find(places.begin(), places.end(), place) == places.end()) places.push_back(place);
  };
  for (std::size_t at = 0; at < groups.size(); ++at) {
    std::vector<Pid> homeless;
    for (const Pid pid : view.trees[at]) {
      const ProcessStat* process = view.scan.find(pid);
      if (!process || !view.mayTouch(*process)) continue;
      if (const std::optional<UnitPlace> unit = ownUnit(*process, view)) {
        add(*unit);
      } else {
        homeless.push_back(pid);
      }
    }
    const ProcessStat* root = view.scan.find(groups[at].root);
    if (homeless.empty() || !root) continue;
    const UnitPlace scope = scopeOf(m_units, *root);
    if (weighingUnit(m_units.managerPath(), m_frontPath, scope.path) != scope) continue;
    if (auto adoption = adoptionOf(m_units, m_files, *root, std::move(homeless))) {
      adoptions.push_back(std::move(*adoption));
      scopes.push_back(scope);
    }
  }
  if (!adoptions.empty()) m_units.adopt(adoptions, m_files, m_deadline);
  for (std::size_t at = 0; at < adoptions.size(); ++at) {
    if (adoptions[at].succeeded) add(scopes[at]);
  }
  if (places.empty()) return;
  const std::vector<UnitPlace> lowered = m_units.lower(places, m_deadline);
  m_lowered.insert(m_lowered.end(), lowered.begin(), lowered.end());
}

void UnitPass::raiseUnused(const std::vector<std::string>& enteredPaths) {
  for (const UnitPlace& unit : m_lowered) {
    const bool isUsed = std::any_of(enteredPaths.begin(), enteredPaths.end(),
                                    [&unit](const std::string& path) { return unit.holds(path); });
    if (!isUsed) m_units.raise(unit.path);
  }
}

std::optional<UnitPlace> UnitPass::ownUnit(const ProcessStat& process, const View& view) {
  const std::string path = m_files.unifiedPath(process.pid);
  std::optional<UnitPlace> unit = weighingUnit(m_units.managerPath(), m_frontPath, path);
  if (!unit) return std::nullopt;
  const auto known = m_isOwn.find(unit->path);
  const bool own = known != m_isOwn.end() ? known->second : (m_isOwn[unit->path] = isOwn(*unit, view));
  return own ? unit : std::nullopt;
}

// A unit is the apps' own when every process in it is one of theirs.
bool UnitPass::isOwn(const UnitPlace& place, const View& view) {
  const std::optional<std::vector<Pid>> pids = m_units.processesIn(place.path);
  if (!pids) return false;
  const std::unordered_set<Pid> inside(pids->begin(), pids->end());
  return std::all_of(pids->begin(), pids->end(), [&](Pid pid) {
    if (const ProcessStat* process = view.scan.find(pid)) return belongs(*process, inside, view);
    const std::optional<ProcessStat> newborn = m_files.stat(pid);
    return !newborn || belongs(*newborn, inside, view);
  });
}

bool UnitPass::belongs(const ProcessStat& process, const std::unordered_set<Pid>& inside,
                       const View& view) const {
  if (!process.isAlive()) return true;
  if (!view.mayTouch(process)) return false;
  if (view.everyTree.contains(process.pid) || view.everyTree.contains(process.parent)) return true;
  // An orphan, such as a crash handler: whatever a session holds was started in it by its leader, so in a
  // session that the app's main process leads it is the app's. Another app may be an orphan in a shared unit
  // just as well, but it has a session of its own.
  const ProcessStat* leader = inside.contains(process.session) ? view.scan.find(process.session) : nullptr;
  return leader && view.roots.contains(leader->pid) && leader->startTicks <= process.startTicks;
}

} // namespace vantle
