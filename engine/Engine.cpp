// SPDX-License-Identifier: MIT
#include "engine/Engine.h"

#include "engine/GameDetection.h"
#include "engine/Protection.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

bool hasPid(const AppRef& app, Pid pid) { return app && app->processIdentifier() == pid; }

} // namespace

Engine::Engine(Machine machine, AppSettings& appSettings)
    : profile(gamingProfile(appSettings, machine.processes, machine.text)), settings(appSettings),
      m_machine(machine), m_journal(machine.files), m_selfPID(machine.host.selfPID()) {
  automatic.assign(storedBool(m_machine.defaults, defaultsKey::automatic, true));
  // Nothing may be slowed down before everything that an earlier run left has been put back.
  m_journal.restoreAllAndClear(m_machine.processes, m_machine.band);
  m_machine.band.reclaim();

  Workspace& workspace = m_machine.workspace;
  m_observers.push_back(
      workspace.observe(WorkspaceEvent::activated, [this](const AppRef& app) { frontmostChanged(app); }));
  m_observers.push_back(
      workspace.observe(WorkspaceEvent::launched, [this](const AppRef& app) { appLaunched(app); }));
  m_observers.push_back(
      workspace.observe(WorkspaceEvent::terminated, [this](const AppRef& app) { appTerminated(app); }));
  startPressureMonitor();
  m_machine.notifications.requestAuthorization();
  if (const AppRef front = workspace.frontmostApplication()) frontmostChanged(front);
}

void Engine::setAutomatic(bool value) {
  automatic.assign(value);
  m_machine.defaults.set(defaultsKey::automatic, value);
}

void Engine::frontmostChanged(const AppRef& app) {
  const Pid pid = app->processIdentifier();
  if (pid == m_selfPID) return;
  lastFrontmost.assign(app);
  if (activeGame.get()) {
    frontChangedWhileBoosting(app);
  } else if (automatic.get() && dismissedPID != pid && profile.isTrigger(*app)) {
    startBoost(app);
  }
}

void Engine::adoptBoostApp(const AppRef& game, const ProcessSnapshot& snapshot) {
  const Pid pid = game->processIdentifier();
  activeGame.assign(game);
  m_gameAncestors = ancestorPIDs(m_machine.processes, pid);
  const std::set<Pid> everyApp = this->everyApp();
  m_machine.band.prepareBoostApp(pid, snapshot.processTree(pid, everyApp), everyApp);
}

void Engine::startBoost(const AppRef& game) {
  const ProcessSnapshot snapshot(m_machine.processes);
  adoptBoostApp(game, snapshot);
  m_foregroundException = nullptr;
  const std::set<Pid> shielded = shieldedPIDs(m_machine.audio, m_machine.power);
  manage(m_machine.workspace.runningApplications(), shielded, snapshot);
  refreshManagedNames();
}

void Engine::frontChangedWhileBoosting(const AppRef& app) {
  // The app that leaves the front goes back first: what takes its place must not be slowed with it.
  if (m_foregroundException && !hasPid(m_foregroundException, app->processIdentifier())) {
    const AppRef previous = std::exchange(m_foregroundException, nullptr);
    if (!previous->isTerminated()) manage(previous);
  }
  const Pid pid = app->processIdentifier();
  if (!restoreIfManaged(pid)) m_machine.band.releaseInherited(pid, everyApp());
  m_foregroundException = profile.isTrigger(*app) ? nullptr : app;
  refreshManagedNames();
}

void Engine::appLaunched(const AppRef& app) {
  if (!activeGame.get() || app->isActive()) return;
  manage(app);
  refreshManagedNames();
}

void Engine::appTerminated(const AppRef& app) {
  const Pid pid = app->processIdentifier();
  restoreIfManaged(pid);
  if (dismissedPID == pid) dismissedPID.reset();
  if (hasPid(m_foregroundException, pid)) m_foregroundException = nullptr;
  if (hasPid(activeGame.get(), pid)) {
    const std::vector<AppRef> running = m_machine.workspace.runningApplications();
    const auto next = std::find_if(running.begin(), running.end(), [&](const AppRef& other) {
      return !hasPid(other, pid) && !other->isTerminated() && profile.isTrigger(*other);
    });
    if (next != running.end()) {
      // The Boost goes on for the next Boost app; what is slowed stays so and is not examined again.
      adoptBoostApp(*next, ProcessSnapshot(m_machine.processes));
    } else {
      stopBoost();
    }
  }
  refreshManagedNames();
}

void Engine::stopBoost() {
  std::vector<ManagedApp> apps;
  apps.reserve(m_managed.size());
  for (auto& [pid, app] : m_managed) apps.push_back(std::move(app));
  m_managed.clear();
  restore(apps);
  m_machine.band.reclaim();
  activeGame.assign(nullptr);
  m_gameAncestors.clear();
  m_foregroundException = nullptr;
  refreshManagedNames();
}

void Engine::alwaysBoost() {
  const AppRef app = lastFrontmost.get();
  if (!app) return;
  const std::optional<std::string> key = appListKey(*app);
  if (!key) return;
  const std::optional<std::string> bundleID = app->bundleIdentifier();
  if (bundleID && systemBundleIDs().contains(*bundleID)) return;

  std::vector<std::string> games = settings.userGames.get();
  if (std::find(games.begin(), games.end(), *key) == games.end()) {
    games.push_back(*key);
    settings.userGames.set(games);
    settings.defaults.set(defaultsKey::userGames, games);
  }
  dismissedPID.reset();
  if (!activeGame.get()) startBoost(app);
}

void Engine::recheckManaged() {
  const std::vector<std::string>& list = settings.protectedApps.get();
  const std::set<std::string> protectedKeys(list.begin(), list.end());
  std::vector<ManagedApp> released;
  for (auto entry = m_managed.begin(); entry != m_managed.end();) {
    const AppRef app = m_machine.workspace.runningApplication(entry->first);
    const std::optional<std::string>& bundleID = entry->second.bundleID;
    if ((bundleID && protectedKeys.contains(*bundleID)) || (app && profile.isTrigger(*app))) {
      released.push_back(std::move(entry->second));
      entry = m_managed.erase(entry);
    } else {
      ++entry;
    }
  }
  restore(released);
  refreshManagedNames();
}

AppRef Engine::runningApplication(Pid pid) const { return m_machine.workspace.runningApplication(pid); }

void Engine::refreshManagedNames() {
  std::vector<std::string> names;
  names.reserve(m_managed.size());
  for (const auto& [pid, app] : m_managed) names.push_back(app.name);
  managedNames.assign(sortedByScalars(std::move(names)));
}

std::vector<std::string> Engine::sortedByScalars(std::vector<std::string> names) const {
  std::vector<std::pair<std::u32string, std::string>> keyed;
  keyed.reserve(names.size());
  for (std::string& name : names) {
    std::u32string scalars = m_machine.text.canonicalScalars(name);
    keyed.emplace_back(std::move(scalars), std::move(name));
  }
  std::stable_sort(keyed.begin(), keyed.end(),
                   [](const auto& left, const auto& right) { return left.first < right.first; });
  names.clear();
  for (auto& [scalars, name] : keyed) names.push_back(std::move(name));
  return names;
}

} // namespace vantle
