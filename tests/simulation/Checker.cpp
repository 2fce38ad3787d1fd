// SPDX-License-Identifier: MIT
#include "tests/simulation/Checker.h"

#include "engine/Protection.h"

#include <algorithm>

namespace vantle {

namespace {

bool contains(const std::vector<std::string>& list, const std::optional<std::string>& text) {
  return text && std::find(list.begin(), list.end(), *text) != list.end();
}

} // namespace

Checker::Checker(SimulatedMachine& machine)
    : m_machine(machine), m_journalPath(machine.files.applicationSupport() + "/Vantle/journal.json") {
  machine.calls.watcher = [this](const SimulatedCall& call) { watch(call); };
}

Checker::~Checker() { m_machine.calls.watcher = nullptr; }

void Checker::fail(const std::string& what, Pid pid) {
  if (!m_violation) m_violation = what + " (pid " + std::to_string(pid) + ")";
}

void Checker::expectStart(const AppSettings& settings) {
  m_settings = &settings;
  m_managedBefore.clear();
  m_journalBefore = m_onDisk;
}

void Checker::begin(const Engine& engine) {
  m_engine = &engine;
  checkPutBack(m_journalBefore, "after a start");
  m_journalBefore.clear(); // and not again by the check after the event
  afterEvent();
}

void Checker::programDied() {
  m_engine = nullptr;
  for (const ProcessIdentity& identity : m_entered) {
    const SimulatedProcess* process = m_machine.processes.find(identity.pid);
    const bool isSlow = m_machine.processes.lives(identity) && process->band == BandState::byVantle;
    if (isSlow && !m_journalIsStale && !m_excused.contains(identity.pid) && !m_onDisk.contains(identity)) {
      fail("the program died and its journal does not name a process that it slowed", identity.pid);
    }
  }
  // What could not be written down is lost with the program.
  if (m_journalIsStale) std::erase_if(m_entered, [this](const auto& one) { return !m_onDisk.contains(one); });
}

void Checker::beforeEvent() {
  m_managedBefore = m_engine->managed();
  m_journalBefore = m_engine->journal().entries();
}

void Checker::afterEvent() {
  if (!m_engine->activeGame.get()) checkPutBack(m_journalBefore, "after the end of a Boost");
  checkJournal();
  checkBand();
  checkFront();
  checkPublished();
}

void Checker::watch(const SimulatedCall& call) {
  if (call.operation == Operation::writeFile && call.about == m_journalPath) {
    auto identities = decodeJournal(std::string(call.detail));
    if (!identities) return fail("the journal is no array of identities", 0);
    m_onDisk = std::move(*identities);
    m_journalIsStale = false;
  }
  const SimulatedProcess* process = m_machine.processes.find(call.pid);
  if (process == nullptr || process->isZombie) return;
  if (call.operation == Operation::enterBand) checkEnter(*process);
  if (call.operation == Operation::leaveBand) checkLeave(*process);
}

void Checker::checkEnter(const SimulatedProcess& process) {
  if (!m_journalIsStale && !m_onDisk.contains(process.identity())) {
    fail("slowed before the journal names it", process.pid);
  }
  if (!mayBeSlowed(process)) fail("slowed although it is protected", process.pid);
  m_entered.insert(process.identity());
}

void Checker::checkLeave(const SimulatedProcess& process) {
  const bool carriesOwnMark = m_machine.band.knowsItsOwnTraces && process.band == BandState::byVantle;
  const bool isOurs = m_journalIsStale || carriesOwnMark || m_onDisk.contains(process.identity());
  if (!isOurs && !isMember(process) && !isSweepable(process))
    fail("a foreign process was touched", process.pid);
  m_entered.erase(process.identity());
}

// Others may have taken it out, so that a second app of this program put it in again: then two have it.
bool Checker::isMember(const SimulatedProcess& process) const {
  return std::any_of(m_managedBefore.begin(), m_managedBefore.end(), [&](const auto& entry) {
    const auto& members = entry.second.members;
    return std::find(members.begin(), members.end(), process.identity()) != members.end();
  });
}

// A child born while its app was slowed: found by its age below the same root, or below what the root has
// left behind.
bool Checker::isSweepable(const SimulatedProcess& process) const {
  return std::any_of(m_managedBefore.begin(), m_managedBefore.end(), [&](const auto& entry) {
    const ManagedApp& app = entry.second;
    const auto isAbove = [&](const ProcessIdentity& one) {
      return m_machine.processes.lives(one) && isAtOrAbove(one.pid, process.pid);
    };
    return m_machine.processes.lives(app.root) && process.startMicros >= app.changedAtMicros &&
           (isAbove(app.root) || std::any_of(app.members.begin(), app.members.end(), isAbove));
  });
}

bool Checker::isAtOrAbove(Pid ancestor, Pid pid) const {
  for (const SimulatedProcess* process = m_machine.processes.find(pid); process != nullptr;
       process = m_machine.processes.find(process->parent)) {
    if (process->pid == ancestor) return true;
  }
  return false;
}

bool Checker::holds(const SimulatedApp& app, Pid pid) const {
  return isAtOrAbove(app.processIdentifier(), pid);
}

const RunningApplication* Checker::boostApp() const {
  // While the engine is being built, only the app in front can start a Boost.
  return m_engine != nullptr ? m_engine->activeGame.get().get() : m_machine.workspace.front().get();
}

bool Checker::mayBeSlowed(const SimulatedProcess& process) const {
  if (boostApp() == nullptr) return false;
  const auto& apps = m_machine.workspace.apps();
  for (const SimulatedProcess* above = &process; above != nullptr;
       above = m_machine.processes.find(above->parent)) {
    const auto owner = std::find_if(apps.begin(), apps.end(), [above](const SimulatedAppRef& app) {
      return !app->isTerminated() && app->processIdentifier() == above->pid;
    });
    if (owner != apps.end()) return !isProtected(**owner);
  }
  return false;
}

bool Checker::isProtected(const SimulatedApp& app) const {
  const AppSpec& spec = app.spec;
  if (spec.policy != ActivationPolicy::regular || app.isTerminated()) return true;
  if (app.processIdentifier() == m_machine.host.self) return true;
  if (spec.bundleID && systemBundleIDs().contains(*spec.bundleID)) return true;
  if (contains(m_settings->protectedApps.get(), spec.bundleID)) return true;
  if (spec.category || contains(m_settings->userGames.get(), spec.bundleID ? spec.bundleID : spec.name)) {
    return true; // a Boost app: nothing but a game has a category here
  }
  const RunningApplication* front = m_engine != nullptr ? m_engine->lastFrontmost.get().get() : nullptr;
  if (front == &app) return true;
  const RunningApplication* game = boostApp();
  if (!game->isTerminated() && holds(app, game->processIdentifier())) return true;
  const auto isHeld = [&](Pid pid) { return holds(app, pid); };
  const auto& heard = m_machine.audio.heard;
  const auto& held = m_machine.power.held;
  return std::any_of(heard.begin(), heard.end(), isHeld) ||
         std::any_of(held.begin(), held.end(), [&](const auto& assertion) { return isHeld(assertion.pid); });
}

void Checker::checkPutBack(const Identities& journalled, const char* when) {
  for (const ProcessIdentity& identity : journalled) {
    if (!m_machine.processes.lives(identity) || m_excused.contains(identity.pid)) continue;
    const bool isSlowAgain = m_engine->journal().entries().contains(identity);
    if (m_machine.band.isIn(identity.pid) && !isSlowAgain) {
      fail(std::string("still slowed ") + when, identity.pid);
    }
  }
}

void Checker::checkJournal() {
  if (!m_journalIsStale && m_engine->journal().entries() != m_onDisk) fail("the journal was not saved", 0);
  if (!m_engine->activeGame.get() && !m_engine->journal().entries().empty()) {
    fail("the journal names processes while no Boost is running", 0);
  }
}

void Checker::checkBand() {
  const bool nobodyMayBeSlow = !m_engine->activeGame.get() && m_machine.band.knowsItsOwnTraces;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    if (process.isZombie || process.band != BandState::byVantle || m_excused.contains(pid)) continue;
    if (nobodyMayBeSlow) fail("slow while no Boost is running", pid);
    const ProcessIdentity identity = process.identity();
    // A child that inherited the band is in no journal.
    if (m_entered.contains(identity) && !m_engine->journal().entries().contains(identity)) {
      fail("slow and in no journal", pid);
    }
  }
}

// However an app came into being, the person who looks at it has it at full speed.
void Checker::checkFront() {
  const AppRef front = m_machine.workspace.front();
  if (!front || !m_engine->activeGame.get() || !m_machine.band.knowsItsOwnTraces) return;
  if (m_machine.workspace.queuedEvents() > 0) return; // the engine has not been told yet
  const SimulatedProcess* process = m_machine.processes.find(front->processIdentifier());
  if (front->isTerminated() || process == nullptr || m_excused.contains(process->pid)) return;
  if (process->band == BandState::byVantle) fail("slow although it is in front", process->pid);
}

void Checker::checkPublished() {
  const auto& managed = m_engine->managed();
  if (!m_engine->activeGame.get() && !managed.empty()) fail("managed while no Boost is running", 0);
  std::vector<std::string> names;
  for (const auto& [pid, app] : managed) {
    names.push_back(app.name);
    if (app.members.empty() || app.root.pid != pid) fail("a malformed entry is managed", pid);
    for (const AppRef& spared : {m_engine->activeGame.get(), m_engine->lastFrontmost.get()}) {
      const bool isItself = spared && !spared->isTerminated() && spared->processIdentifier() == pid;
      if (isItself && m_machine.processes.lives(app.root)) fail("managed although it is in front", pid);
    }
  }
  std::sort(names.begin(), names.end());
  if (names != m_engine->managedNames.get()) fail("the published names are not those of the managed apps", 0);
}

} // namespace vantle
