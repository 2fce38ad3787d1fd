// SPDX-License-Identifier: MIT
#include "engine/Engine.h"

#include "engine/GameDetection.h"
#include "engine/ProcessQueries.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

bool hasPid(const AppRef& app, Pid pid) { return app && app->processIdentifier() == pid; }

// Slowing down what this program was started from would slow down what it stands in.
bool ownsThisProgram(Pid app, const AppTrees& trees) {
  const std::vector<Pid>& owned = trees.processesOf(app);
  return std::any_of(owned.begin(), owned.end(), [&](Pid one) { return trees.isOwnChain(one); });
}

// That an app is left alone for as long as it is what it is, or does what it does.
bool isRule(Verdict verdict) {
  switch (verdict) {
  case Verdict::protectedByPerson:
  case Verdict::systemApp:
  case Verdict::launcher:
  case Verdict::heard:
  case Verdict::keepsAwake:
    return true;
  default:
    return false;
  }
}

} // namespace

Engine::Engine(Machine machine, AppSettings& appSettings)
    : profile(gamingProfile(appSettings, machine.processes, machine.text, m_declared)), settings(appSettings),
      m_machine(machine), m_declared(appSettings, machine.games, machine.processes, machine.workspace),
      m_backgrounder(machine),
      m_memory(machine, appSettings, m_backgrounder,
               {.isRunning = [this] { return activeGame.get() != nullptr; },
                .isPartOfIt = [this](const RunningApplication& app) { return isPartOfBoost(app); }}),
      m_selfPID(machine.host.selfPID()) {
  automatic.assign(storedBool(m_machine.defaults, defaultsKey::automatic, true));
  // Nothing may be slowed down before everything that an earlier run left has been put back.
  m_backgrounder.recover();
  m_machine.band.onLateBirths([this] {
    m_backgrounder.sweep(boostApp());
    refreshManagedNames();
  });

  Workspace& workspace = m_machine.workspace;
  m_observers.push_back(
      workspace.observe(WorkspaceEvent::activated, [this](const AppRef& app) { frontmostChanged(app); }));
  m_observers.push_back(
      workspace.observe(WorkspaceEvent::launched, [this](const AppRef& app) { appLaunched(app); }));
  m_observers.push_back(
      workspace.observe(WorkspaceEvent::terminated, [this](const AppRef& app) { appTerminated(app); }));
  m_memory.startPressureMonitor();
  m_declared.start([this] { declaredGamesChanged(); });
  m_machine.notifications.requestAuthorization();
  if (const AppRef front = workspace.frontmostApplication()) frontmostChanged(front);
}

Engine::~Engine() { m_machine.band.onLateBirths({}); }

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
  } else if (startsByItself(*app)) {
    startBoost(app);
  }
  // The Boost that slowed it may be over by now.
  if (m_machine.band.owed() > 0) m_machine.band.hasten(m_backgrounder.look().processesOf(pid));
}

bool Engine::startsByItself(const RunningApplication& app) {
  // Its timer may be late: it stands still while the machine sleeps.
  if (pause.get() && m_machine.clock.processMicros() >= pause.get()->endMicros) pause.assign(std::nullopt);
  return automatic.get() && !pause.get() && dismissedPID != app.processIdentifier() && profile.isTrigger(app);
}

void Engine::boostNow(const AppRef& app) {
  if (activeGame.get() || app->isTerminated()) return;
  dismissedPID.reset();
  const AppRef front = m_machine.workspace.frontmostApplication();
  const bool isOther = front && !hasPid(front, app->processIdentifier()) && !hasPid(front, m_selfPID);
  startBoost(app, isOther && !profile.isTrigger(*front) ? front : nullptr);
  m_isForDeclared = false;
}

void Engine::turnOffBoost() {
  const AppRef& game = activeGame.get();
  dismissedPID = game ? std::optional<Pid>(game->processIdentifier()) : std::nullopt;
  stopBoost();
}

void Engine::startPause(std::chrono::seconds duration) {
  const auto micros = std::chrono::duration_cast<std::chrono::microseconds>(duration).count();
  pause.assign(Pause{m_machine.clock.processMicros() + static_cast<std::uint64_t>(micros),
                     m_machine.clock.now() + duration});
}

void Engine::endPause() {
  pause.assign(std::nullopt);
  const AppRef front = m_machine.workspace.frontmostApplication();
  if (front && !activeGame.get()) frontmostChanged(front);
}

Pid Engine::boostApp() const { return activeGame.get() ? activeGame.get()->processIdentifier() : 0; }

void Engine::adoptBoostApp(const AppRef& game) {
  activeGame.assign(game);
  m_isForDeclared = m_declared.has(*game);
  m_gameAncestors = ancestorPIDs(m_machine.processes, boostApp());
  m_backgrounder.note(boostApp(), Verdict::boostApp);
  m_backgrounder.makeRoomFor(boostApp());
}

void Engine::startBoost(const AppRef& game) { startBoost(game, nullptr); }

void Engine::startBoost(const AppRef& game, const AppRef& front) {
  adoptBoostApp(game);
  m_foregroundException = front;
  // Probes and moves take their time: what is running is looked at after them.
  const ShieldedPIDs shielded = shieldedPIDs(m_machine.audio, m_machine.power);
  manage(m_machine.workspace.runningApplications(), shielded);
  refreshManagedNames();
}

Verdict Engine::shouldManage(const RunningApplication& app, const ShieldedPIDs& shielded,
                             const AppTrees& trees, std::optional<std::set<Pid>>& clients,
                             Backgrounder::Asking asking) const {
  const Pid pid = app.processIdentifier();
  const bool isFirst = asking == Backgrounder::Asking::first;
  AppFacts facts;
  const auto decides = [&facts](bool AppFacts::*fact, bool holds) {
    facts.*fact = holds;
    return holds;
  };
  std::optional<std::string> bundleID;
  if (decides(&AppFacts::noBoost, !activeGame.get()) ||
      decides(&AppFacts::isNotRegular, app.activationPolicy() != ActivationPolicy::regular) ||
      decides(&AppFacts::hasEnded, app.isTerminated()) ||
      decides(&AppFacts::isOwnProcess, ownsThisProgram(pid, trees)) ||
      decides(&AppFacts::isSlowed, isFirst && m_backgrounder.isManaged(pid)) ||
      decides(&AppFacts::isInFront,
              hasPid(m_foregroundException, pid) || (!isFirst && hasPid(m_comingToFront, pid))) ||
      decides(&AppFacts::isProtectedByPerson,
              isProtectedByPerson(settings, bundleID = app.bundleIdentifier())) ||
      decides(&AppFacts::isSystemApp, isSystemApp(bundleID)) ||
      decides(&AppFacts::isBoostApp, profile.isTrigger(app))) {
    return judge(facts);
  }
  // Any process of the app counts, an app that it started included: a launcher may be a child of its app, and
  // so may the one that is heard.
  std::vector<Pid> processes = processTree(trees, pid);
  const std::vector<Pid>& owned = trees.processesOf(pid);
  processes.insert(processes.end(), owned.begin(), owned.end());
  const auto anyIn = [&processes](const std::set<Pid>& pids) {
    return std::any_of(processes.begin(), processes.end(), [&](Pid one) { return pids.contains(one); });
  };
  if (!clients) clients = trees.clientsAmong(m_gameAncestors, boostApp());
  facts.isLauncher = anyIn(m_gameAncestors) || trees.isPartOf(pid, *clients);
  facts.isHeard = anyIn(shielded.heard);
  facts.keepsAwake = anyIn(shielded.keepsAwake);
  return judge(facts);
}

AppTrees Engine::manage(std::span<const AppRef> apps, const ShieldedPIDs& shielded) {
  std::optional<std::set<Pid>> clients; // the same for all apps: they are judged with one look
  return m_backgrounder.manage(
      apps, boostApp(),
      [&](const RunningApplication& app, const AppTrees& trees, Backgrounder::Asking asking) {
        return shouldManage(app, shielded, trees, clients, asking);
      });
}

AppTrees Engine::manage(const AppRef& app) {
  const ShieldedPIDs shielded = shieldedPIDs(m_machine.audio, m_machine.power);
  // Those that could not be slowed beside another one get another try together with it, and once more when
  // one has just left the place that it shared with them.
  std::vector<AppRef> apps = givenUpApps();
  if (app) apps.insert(apps.begin(), app);
  const std::set<Pid> before = m_backgrounder.givenUp();
  AppTrees trees = manage(apps, shielded);
  const std::set<Pid>& now = m_backgrounder.givenUp();
  return std::includes(before.begin(), before.end(), now.begin(), now.end())
             ? std::move(trees)
             : manage(givenUpApps(), shielded);
}

std::vector<AppRef> Engine::givenUpApps() const {
  std::vector<AppRef> apps;
  for (const Pid pid : m_backgrounder.givenUp()) {
    const AppRef app = m_machine.workspace.runningApplication(pid);
    if (app && !hasPid(lastFrontmost.get(), pid)) apps.push_back(app);
  }
  return apps;
}

bool Engine::isPartOfBoost(const RunningApplication& app) const {
  const Pid pid = app.processIdentifier();
  if (profile.isTrigger(app) || pid == boostApp() || m_gameAncestors.contains(pid)) return true;
  const AppTrees trees = m_backgrounder.look();
  return trees.isPartOf(pid, trees.clientsAmong(m_gameAncestors, boostApp()));
}

void Engine::frontChangedWhileBoosting(const AppRef& app) {
  m_comingToFront = app;
  // The app that leaves the front goes back first: what takes its place must not be slowed with it.
  std::optional<AppTrees> trees;
  if (m_foregroundException && !hasPid(m_foregroundException, app->processIdentifier())) {
    const AppRef previous = std::exchange(m_foregroundException, nullptr);
    if (!previous->isTerminated()) trees = manage(previous);
  }
  if (!trees && !m_backgrounder.givenUp().empty()) trees = manage(nullptr);
  m_comingToFront = nullptr;
  const bool isBoostApp = profile.isTrigger(*app);
  const bool areOthersComplete = trees.has_value();
  const std::optional<AppTrees> look =
      m_backgrounder.restore(app->processIdentifier(), boostApp(), std::move(trees));
  m_backgrounder.note(app->processIdentifier(), isBoostApp ? Verdict::boostApp : Verdict::inFront);
  m_foregroundException = isBoostApp ? nullptr : app;
  // Nobody waits for the rest, and the look has been made: only what it has found is worth asking around for.
  if (!areOthersComplete && look && m_backgrounder.isAnyIncomplete(*look)) manage(nullptr);
  refreshManagedNames();
}

void Engine::appLaunched(const AppRef& app) {
  if (!activeGame.get() || app->isActive()) return;
  // Of one that is slowed a launch is told again when more is known of it.
  const bool isKnownAnew = m_backgrounder.isManaged(app->processIdentifier());
  manage(app);
  if (!isKnownAnew) return refreshManagedNames();
  m_backgrounder.rename(*app);
  recheckManaged();
}

void Engine::appTerminated(const AppRef& app) {
  const Pid pid = app->processIdentifier();
  m_backgrounder.restore(pid, boostApp());
  m_backgrounder.forget(pid);
  if (dismissedPID == pid) dismissedPID.reset();
  if (hasPid(m_foregroundException, pid)) m_foregroundException = nullptr;
  if (hasPid(activeGame.get(), pid)) passBoostOn(pid);
  if (activeGame.get() && !m_backgrounder.givenUp().empty()) manage(nullptr);
  refreshManagedNames();
}

void Engine::passBoostOn(Pid ended) {
  const std::vector<AppRef> running = m_machine.workspace.runningApplications();
  const auto next = std::find_if(running.begin(), running.end(), [&](const AppRef& other) {
    return !hasPid(other, ended) && !other->isTerminated() && profile.isTrigger(*other);
  });
  if (next != running.end()) {
    // What is slowed stays so and is not examined again.
    adoptBoostApp(*next);
  } else {
    stopBoost();
  }
}

// A game that has withdrawn is over, though its app may live on: an emulator has other games.
void Engine::declaredGamesChanged() {
  recheckManaged();
  const AppRef game = activeGame.get();
  if (game && m_isForDeclared && !profile.isTrigger(*game)) passBoostOn(game->processIdentifier());
  if (const AppRef front = m_machine.workspace.frontmostApplication()) frontmostChanged(front);
  manageFormerBoostApps();
}

void Engine::manageFormerBoostApps() {
  if (!activeGame.get()) return;
  std::vector<AppRef> former;
  for (const AppRef& app : m_machine.workspace.runningApplications()) {
    const auto last = verdicts().find(app->processIdentifier());
    const bool wasBoostApp = last != verdicts().end() && last->second.verdict == Verdict::boostApp;
    if (wasBoostApp && !hasPid(app, boostApp()) && !profile.isTrigger(*app)) former.push_back(app);
  }
  if (former.empty()) return;
  manage(former, shieldedPIDs(m_machine.audio, m_machine.power));
  refreshManagedNames();
}

void Engine::stopBoost() {
  m_backgrounder.restoreAll();
  activeGame.assign(nullptr);
  m_gameAncestors.clear();
  m_foregroundException = nullptr;
  refreshManagedNames();
}

std::vector<std::string> Engine::protectedInUse() {
  const std::set<Pid> heard = audioPIDs(m_machine.audio);
  std::vector<std::string> names;
  for (const AppRef& app : m_machine.workspace.runningApplications()) {
    if (!isProtectedByPerson(settings, app->bundleIdentifier())) continue;
    std::optional<std::string> name = app->localizedName();
    if (!name) continue;
    if (heard.contains(app->processIdentifier())) *name += " \u00B7 playing audio";
    names.push_back(std::move(*name));
  }
  return sortedByScalars(std::move(names));
}

std::vector<SparedApp> Engine::sparedApps() const {
  std::vector<SparedApp> spared;
  if (!activeGame.get()) return spared;
  for (const AppRef& app : m_machine.workspace.runningApplications()) {
    const Pid pid = app->processIdentifier();
    const std::optional<std::string> name = app->localizedName();
    if (!name || pid == boostApp() || app->isTerminated() || m_backgrounder.isManaged(pid)) continue;
    const auto last = verdicts().find(pid);
    // The person's list may have changed since.
    if (isProtectedByPerson(settings, app->bundleIdentifier())) {
      spared.push_back({*name, Verdict::protectedByPerson});
    } else if (last != verdicts().end() && isRule(last->second.verdict)) {
      spared.push_back({*name, last->second.verdict});
    }
  }
  std::stable_sort(spared.begin(), spared.end(),
                   [](const SparedApp& left, const SparedApp& right) { return left.name < right.name; });
  return spared;
}

void Engine::neverSlowDown(const RunningApplication& app) {
  const std::optional<std::string> key = app.bundleIdentifier();
  if (!key || isProtectedByPerson(settings, key)) return;
  std::vector<std::string> keys = settings.protectedApps.get();
  keys.push_back(*key);
  settings.protectedApps.set(std::move(keys));
  recheckManaged();
}

void Engine::alwaysBoost() {
  const AppRef app = lastFrontmost.get();
  if (!app) return;
  const std::optional<std::string> key = appListKey(*app);
  if (!key) return;
  if (isSystemApp(app->bundleIdentifier())) return;

  std::vector<std::string> games = settings.userGames.get();
  if (std::find(games.begin(), games.end(), *key) == games.end()) {
    games.push_back(*key);
    settings.userGames.set(games);
    settings.defaults.set(defaultsKey::userGames, games);
  }
  dismissedPID.reset();
  if (!activeGame.get() && !app->isTerminated()) startBoost(app);
}

void Engine::recheckManaged() {
  std::vector<Pid> released;
  for (const auto& [pid, managedApp] : m_backgrounder.managed()) {
    const AppRef app = m_machine.workspace.runningApplication(pid);
    const bool isBoostApp = app && profile.isTrigger(*app);
    const bool isProtected = isProtectedByPerson(settings, managedApp.bundleID);
    if (!isProtected && !isBoostApp) continue;
    released.push_back(pid);
    m_backgrounder.note(pid, isProtected ? Verdict::protectedByPerson : Verdict::boostApp);
  }
  for (const Pid pid : released) m_backgrounder.restore(pid, boostApp());
  refreshManagedNames();
}

AppRef Engine::runningApplication(Pid pid) const { return m_machine.workspace.runningApplication(pid); }

void Engine::refreshManagedNames() {
  std::vector<std::string> names;
  names.reserve(managed().size());
  for (const auto& [pid, app] : managed()) names.push_back(app.name);
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
