// SPDX-License-Identifier: MIT
#include "engine/AppTrees.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vantle {

namespace {

// Of several apps it is none of them.
template <class Items, class AppOf> Pid onlyApp(const Items& items, const AppOf& appOf) {
  Pid only = 0;
  for (const auto& item : items) {
    const Pid app = appOf(item);
    if (app == 0 || app == only) continue;
    if (only != 0) return 0;
    only = app;
  }
  return only;
}

} // namespace

AppTrees::AppTrees(const ProcessTable& table, const Known& known)
    : AppTrees(table, known, table.birthMark(), table.hold()) {}

AppTrees::AppTrees(const ProcessTable& table, const Known& known, std::optional<std::uint64_t> birthMark,
                   std::shared_ptr<const void> hold)
    : ProcessView(table.scan(), birthMark), m_table(&table), m_hold(std::move(hold)) {
  std::set<Pid> apps = known.apps;
  if (known.self != 0) apps.insert(known.self);
  for (const ProcessIdentity& root : known.roots) {
    const ProcessRecord* record = find(root.pid);
    if (record != nullptr && identityOf(*record) == root) apps.insert(root.pid);
  }
  if (const ProcessRecord* self = find(known.self)) m_ownUser = self->user;
  for (const ProcessRecord* at = find(known.self); at != nullptr && at->pid >= firstAppPid;
       at = find(at->parent)) {
    if (!m_ownChain.insert(at->pid).second) break; // a circle, which reused numbers can make
  }
  for (const Pid app : apps) m_processes[app] = assignTree(app, apps);
  adoptWrappers();
  adoptOrphans(known);
}

const std::vector<Pid>& AppTrees::processesOf(Pid app) const {
  static const std::vector<Pid> none;
  const auto found = m_processes.find(app);
  return found == m_processes.end() ? none : found->second;
}

Pid AppTrees::ownerOf(const ProcessIdentity& identity) const {
  const ProcessRecord* record = find(identity.pid);
  return record != nullptr && identityOf(*record) == identity ? appOf(identity.pid) : 0;
}

void AppTrees::adoptWrappers() {
  for (auto& [pid, processes] : m_processes) {
    const ProcessRecord* const app = find(pid);
    if (app == nullptr || app->session == 0) continue;
    std::vector<Pid> wrappers;
    Pid below = pid;
    for (const ProcessRecord* at = find(app->parent); at != nullptr && isWrapperOf(*at, *app, below);
         at = find(at->parent)) {
      below = at->pid;
      wrappers.push_back(below);
    }
    // Otherwise the session was made for something else. What made it may have gone, as launchers do.
    const bool isMadeForIt = std::find(wrappers.begin(), wrappers.end(), app->session) != wrappers.end();
    const bool isLeft = find(app->session) == nullptr && isSessionWithoutSystem(app->session);
    if (!isMadeForIt && !isLeft) continue;
    for (const Pid wrapper : wrappers) assign(wrapper, pid);
    processes.insert(processes.end(), wrappers.begin(), wrappers.end());
  }
}

// A shell is somebody's who types. And what starts apps for the person, as a desktop does, has started
// others.
bool AppTrees::isWrapperOf(const ProcessRecord& record, const ProcessRecord& app, Pid below) const {
  if (record.pid < firstAppPid || record.isKernelThread || record.role != ProcessRole::program) return false;
  if (record.session != app.session || record.user != m_ownUser) return false;
  if (appOf(record.pid) != 0 || isOwnChain(record.pid)) return false;
  if (app.startSec > record.startSec + longestWrapping) return false;
  const auto sharers = session(app.session);
  const bool isOthersToo = std::any_of(sharers.begin(), sharers.end(), [&](std::size_t place) {
    const Pid owner = appOf(all()[place].pid);
    return owner != 0 && owner != app.pid;
  });
  if (isOthersToo) return false;
  const std::vector<Pid>& children = childPIDs(record.pid);
  const auto isBeside = [&](Pid child) { return child != below && appOf(child) != app.pid; };
  if (std::none_of(children.begin(), children.end(), isBeside)) return true;
  // It serves the app in another way as well, or starts a second one that has no window yet.
  return isSessionWithoutSystem(app.session) && std::all_of(children.begin(), children.end(), [&](Pid child) {
           return !isBeside(child) || find(child)->session == app.session;
         });
}

// A session with parts of the desktop in it is the desktop's.
bool AppTrees::isSessionWithoutSystem(Pid session) const {
  const auto sharers = this->session(session);
  return std::none_of(sharers.begin(), sharers.end(),
                      [this](std::size_t place) { return all()[place].role == ProcessRole::system; });
}

void AppTrees::adoptOrphans(const Known& known) {
  const auto mayBeAdopted = [this](const ProcessRecord& record) {
    return record.pid >= firstAppPid && !record.isKernelThread && record.role != ProcessRole::system &&
           appOf(record.pid) == 0;
  };
  std::unordered_map<Pid, Pid> owners; // 0: nobody's
  for (const ProcessRecord& record : all()) {
    if (!mayBeAdopted(record) || owners.contains(record.pid)) continue;
    // Up to the first whose owner is known, then down again: each belongs to whom its parent belongs.
    std::vector<const ProcessRecord*> chain;
    const ProcessRecord* at = &record;
    for (; at != nullptr && mayBeAdopted(*at) && owners.emplace(at->pid, 0).second; at = find(at->parent)) {
      chain.push_back(at);
    }
    const auto above = at == nullptr ? owners.end() : owners.find(at->pid);
    Pid owner = at == nullptr ? 0 : above == owners.end() ? appOf(at->pid) : above->second;
    std::reverse(chain.begin(), chain.end());
    for (const ProcessRecord* one : chain) {
      if (owner == 0) owner = orphanOwner(*one, known);
      owners[one->pid] = owner;
    }
  }
  for (const ProcessRecord& record : all()) {
    const auto found = owners.find(record.pid);
    if (found == owners.end() || found->second == 0) continue;
    assign(record.pid, found->second);
    m_processes[found->second].push_back(record.pid);
  }
}

// The surest evidence first.
Pid AppTrees::orphanOwner(const ProcessRecord& orphan, const Known& known) const {
  constexpr std::array rules{&AppTrees::appSlowedWith, &AppTrees::appOfOrigin, &AppTrees::appOfSession,
                             &AppTrees::appLeftInSession, &AppTrees::appOfPlace};
  for (const auto rule : rules) {
    if (const Pid app = (this->*rule)(orphan, known); app != 0) return app;
  }
  return 0;
}

// Nobody who could be asked stands above it.
bool AppTrees::isLeftBehind(const ProcessRecord& process) const {
  const ProcessRecord* parent = find(process.parent);
  const bool isOrphan = parent == nullptr || parent->pid < firstAppPid || parent->role == ProcessRole::system;
  return isOrphan && process.user == m_ownUser;
}

Pid AppTrees::appSlowedWith(const ProcessRecord& orphan, const Known& known) const {
  const ProcessIdentity identity = identityOf(orphan);
  const auto seen = std::find_if(known.members.begin(), known.members.end(),
                                 [&identity](const auto& member) { return member.first == identity; });
  return seen == known.members.end() ? 0 : seen->second;
}

// What stands in a place of its own, as a service does, is somebody's by that.
Pid AppTrees::inSamePlace(Pid app, const ProcessRecord& orphan) const {
  return app != 0 && placeOf(app) == placeOf(orphan.pid) ? app : 0;
}

// A program's own helpers are of no use to anybody else. Of two copies nobody knows whose it is.
Pid AppTrees::appOfOrigin(const ProcessRecord& orphan, const Known& known) const {
  if (!isLeftBehind(orphan)) return 0;
  const std::string origin = m_table->origin(orphan.pid);
  if (origin.empty()) return 0;
  if (!m_origins) {
    m_origins.emplace();
    for (const Pid app : known.apps) {
      if (find(app) == nullptr) continue;
      const auto add = [this, app](const std::string& one) {
        const auto [place, isNew] = m_origins->emplace(one, app);
        if (!isNew && place->second != app) place->second = 0;
      };
      add(m_table->origin(app));
      for (const std::string& further : m_table->furtherOrigins(app)) add(further);
    }
  }
  const auto found = m_origins->find(origin);
  return found == m_origins->end() ? 0 : inSamePlace(found->second, orphan);
}

// Whatever a session holds was started in it by its first process.
Pid AppTrees::appOfSession(const ProcessRecord& orphan, const Known& /*known*/) const {
  const bool isIn = orphan.session != orphan.pid && orphan.session >= firstAppPid;
  return isIn && find(orphan.session) != nullptr ? appOf(orphan.session) : 0;
}

// The first process has gone, as a launcher does once it has launched: what came after the app came with it.
Pid AppTrees::appLeftInSession(const ProcessRecord& orphan, const Known& known) const {
  if (orphan.session < firstAppPid || find(orphan.session) != nullptr || !isLeftBehind(orphan)) return 0;
  if (!isSessionWithoutSystem(orphan.session)) return 0;
  const Pid only =
      onlyApp(session(orphan.session), [this](std::size_t place) { return appOf(all()[place].pid); });
  const ProcessRecord* app = known.apps.contains(only) ? find(only) : nullptr;
  const bool isOlder = app != nullptr && startMicros(identityOf(*app)) <= startMicros(identityOf(orphan));
  return isOlder ? inSamePlace(only, orphan) : 0;
}

// Nobody who could be asked stands above it there: a launcher that lives on has a place of its own.
Pid AppTrees::appOfPlace(const ProcessRecord& orphan, const Known& known) const {
  const std::string& place = placeOf(orphan.pid);
  if (place.empty() || orphan.user != m_ownUser) return 0;
  if (!isLeftBehind(orphan) && placeOf(orphan.parent) == place) return 0;
  return onlyApp(known.apps,
                 [&](Pid app) { return find(app) != nullptr && placeOf(app) == place ? app : 0; });
}

const std::string& AppTrees::placeOf(Pid pid) const {
  const auto known = m_places.find(pid);
  return known != m_places.end() ? known->second : m_places.emplace(pid, m_table->place(pid)).first->second;
}

std::set<Pid> AppTrees::clientsAmong(const std::set<Pid>& gameAncestors, Pid game) const {
  std::set<Pid> clients;
  for (const Pid pid : gameAncestors) {
    const ProcessRecord* ancestor = find(pid);
    if (pid == game || ancestor == nullptr || ancestor->role != ProcessRole::program) continue;
    if (ancestor->user != m_ownUser || appOf(pid) != 0 || isOwnChain(pid)) continue;
    if (!standsAboveTheDesktop(pid, gameAncestors)) clients.insert(pid);
  }
  return clients;
}

// What has started a part of the desktop is no store but a session. A store may put a part of its own
// between itself and the game.
bool AppTrees::standsAboveTheDesktop(Pid pid, const std::set<Pid>& gameAncestors) const {
  std::vector<Pid> toVisit{pid};
  std::set<Pid> visited;
  while (!toVisit.empty()) {
    const Pid at = toVisit.back();
    toVisit.pop_back();
    // What an app has started for itself is not the desktop.
    if (!visited.insert(at).second || appOf(at) != 0) continue;
    const ProcessRecord* record = find(at);
    if (record != nullptr && record->role == ProcessRole::system && !gameAncestors.contains(at)) return true;
    const std::vector<Pid>& children = childPIDs(at);
    toVisit.insert(toVisit.end(), children.begin(), children.end());
  }
  return false;
}

bool AppTrees::isPartOf(Pid app, const std::set<Pid>& clients) const {
  const ProcessRecord* root = find(app);
  std::set<Pid> visited;
  for (const ProcessRecord* at = root; at != nullptr && visited.insert(at->pid).second;
       at = find(at->parent)) {
    if (at->pid == app || !clients.contains(at->pid)) continue;
    // An app that it only started, as a desktop does, has a session and a place of its own.
    const bool sharesSession = root->session == at->session && root->session != 0;
    const std::string& place = placeOf(app);
    if (sharesSession || (!place.empty() && place == placeOf(at->pid))) return true;
  }
  return false;
}

} // namespace vantle
