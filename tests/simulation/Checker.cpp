// SPDX-License-Identifier: MIT
#include "tests/simulation/Checker.h"

#include "engine/Protection.h"

#include <algorithm>
#include <sstream>

namespace vantle {

namespace {

bool contains(const std::vector<std::string>& list, const std::optional<std::string>& text) {
  return text && std::find(list.begin(), list.end(), *text) != list.end();
}

} // namespace

Checker::Checker(SimulatedMachine& machine, const BandTruth& truth)
    : m_machine(machine), m_truth(truth),
      m_journalPath(machine.files.applicationSupport() + "/Vantle/journal.json") {
  machine.calls.watcher = [this](const SimulatedCall& call) {
    watch(call);
    if (betweenCalls) betweenCalls();
  };
}

Checker::~Checker() { m_machine.calls.watcher = nullptr; }

void Checker::fail(const std::string& what, Pid pid) {
  if (m_violation) return;
  m_violation = what + " (pid " + std::to_string(pid) + ")";
  m_scene = describe();
}

std::string Checker::describe() const {
  std::ostringstream text;
  const RunningApplication* game = m_settings != nullptr ? boostApp() : nullptr;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    text << "  " << pid << " below " << process.parent << ", session " << process.session << ", owner "
         << ownerOf(process);
    if (!process.place.empty()) text << ", in " << process.place;
    if (!process.origin.empty()) text << ", of " << process.origin;
    if (process.role == ProcessRole::system) text << ", system";
    if (process.role == ProcessRole::starter) text << ", starter";
    if (const std::string effect = m_truth.effectOf(pid); !effect.empty()) text << ", " << effect;
    if (process.isZombie) text << ", zombie";
    if (m_excused.contains(pid)) text << ", refused";
    if (pid == m_machine.host.self) text << ", this program";
    if (game != nullptr && game->processIdentifier() == pid) text << ", the Boost app";
    for (const SimulatedAppRef& app : m_machine.workspace.apps()) {
      if (app->processIdentifier() != pid) continue;
      text << ", app " << app->spec.name.value_or("?") << (app->isTerminated() ? " (ended)" : "");
      if (m_settings != nullptr && game != nullptr && isProtected(*app)) text << " (protected)";
    }
    if (m_engine != nullptr && m_engine->managed().contains(pid)) text << ", listed";
    if (m_machine.audio.heard.contains(pid)) text << ", heard";
    text << '\n';
  }
  return text.str();
}

void Checker::expectStart(const AppSettings& settings) {
  m_settings = &settings;
  m_managedBefore.clear();
  m_wasBoosting = false;
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
    const bool isSlow = m_machine.processes.lives(identity) && m_truth.isOurs(process->pid);
    if (isSlow && !m_journalIsStale && !m_excused.contains(identity.pid) && !m_onDisk.contains(identity)) {
      fail("the program died and its journal does not name a process that it slowed", identity.pid);
    }
  }
  // What could not be written down is lost with the program.
  if (m_journalIsStale) std::erase_if(m_entered, [this](const auto& one) { return !m_onDisk.contains(one); });
}

void Checker::expectNoBoost(const char* when) {
  if (m_engine->activeGame.get()) fail(std::string("a Boost ") + when, 0);
}

void Checker::beforeEvent() {
  m_placesBefore.clear();
  m_wrappersSeen.clear();
  m_wasBoosting = m_engine->activeGame.get() != nullptr;
  m_managedBefore = m_engine->managed();
  m_journalBefore = m_engine->journal().entries();
}

void Checker::afterEvent() {
  if (!m_engine->activeGame.get()) checkPutBack(m_journalBefore, "after the end of a Boost");
  checkJournal();
  checkBand();
  checkFront();
  checkLife();
  checkPublished();
}

void Checker::watch(const SimulatedCall& call) {
  noteWrappers(); // whoever is born next is born since the look that the call follows from
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
  const bool carriesOwnMark = m_truth.knowsTraces() && m_truth.isOurs(process.pid);
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

// A child born while its app was slowed: found by its age among what belongs to the same root.
bool Checker::isSweepable(const SimulatedProcess& process) const {
  return std::any_of(m_managedBefore.begin(), m_managedBefore.end(), [&](const auto& entry) {
    const ManagedApp& app = entry.second;
    return m_machine.processes.lives(app.root) && process.startMicros >= app.changedAtMicros &&
           (isAtOrAbove(app.root.pid, process.pid) || ownerOf(process) == app.root.pid);
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
  const SimulatedProcess* process = m_machine.processes.find(pid);
  return process != nullptr &&
         (isAtOrAbove(app.processIdentifier(), pid) || ownerOf(*process) == app.processIdentifier());
}

bool Checker::isAppRoot(Pid pid) const {
  const auto& apps = m_machine.workspace.apps();
  const bool runs = std::any_of(apps.begin(), apps.end(), [pid](const SimulatedAppRef& app) {
    return !app->isTerminated() && app->processIdentifier() == pid;
  });
  return runs || pid == m_machine.host.self;
}

Pid Checker::appAbove(const SimulatedProcess& process) const {
  for (const SimulatedProcess* at = &process; at != nullptr; at = m_machine.processes.find(at->parent)) {
    if (isAppRoot(at->pid)) return at->pid;
  }
  return 0;
}

// In a session that was made for the app, or that has outlived what made it, from the app upwards: who has
// started that at once, and nothing else that has left the session.
std::set<Pid> Checker::wrappersOf(const SimulatedProcess& app) const {
  std::set<Pid> wrappers;
  bool isSystems = false;
  for (const auto& [pid, other] : m_machine.processes.all()) {
    const Pid owner = appAbove(other);
    if (other.session != app.session || !isListed(other)) continue;
    if (owner != 0 && owner != app.pid) return {};
    isSystems = isSystems || other.role == ProcessRole::system;
  }
  for (const SimulatedProcess* at = m_machine.processes.find(app.parent); at != nullptr && at->pid > 1;
       at = m_machine.processes.find(at->parent)) {
    const bool isAnotherKind = at->role != ProcessRole::program || at->session != app.session;
    const bool isOld = app.startMicros / 1'000'000 > at->startMicros / 1'000'000 + 10;
    if (isAnotherKind || isOld || appAbove(*at) != 0 || isAtOrAbove(at->pid, m_machine.host.self)) break;
    const auto& all = m_machine.processes.all();
    if (std::any_of(all.begin(), all.end(), [&](const auto& entry) {
          const SimulatedProcess& child = entry.second;
          const bool isItsOwn = appAbove(child) == app.pid || wrappers.contains(child.pid);
          return child.parent == at->pid && isListed(child) && !isItsOwn &&
                 (isSystems || child.session != app.session);
        })) {
      break;
    }
    wrappers.insert(at->pid);
  }
  const bool isLeft = !isSystems && isGone(app.session);
  return isLeft || wrappers.contains(app.session) ? wrappers : std::set<Pid>{};
}

Pid Checker::appAtOrInside(const SimulatedProcess& process) const {
  if (const Pid app = appAbove(process); app != 0) return app;
  for (const auto& [pid, app] : m_machine.processes.all()) {
    if (isAppRoot(pid) && isAtOrAbove(process.pid, pid) && wrappersOf(app).contains(process.pid)) return pid;
  }
  const auto seen = m_wrappersSeen.find(process.identity());
  return seen != m_wrappersSeen.end() && isAppRoot(seen->second) ? seen->second : 0;
}

void Checker::noteWrappers() {
  for (const auto& [pid, app] : m_machine.processes.all()) {
    if (!isAppRoot(pid)) continue;
    for (const Pid wrapper : wrappersOf(app))
      m_wrappersSeen[m_machine.processes.find(wrapper)->identity()] = pid;
  }
}

Pid Checker::ownerOf(const SimulatedProcess& process) const {
  if (const Pid app = appAtOrInside(process); app != 0) return app;
  // A part of the system that nobody's app has above it serves all of them, and so does what it has started.
  // Of the others each belongs to whom its parent belongs.
  std::vector<const SimulatedProcess*> chain;
  for (const SimulatedProcess* at = &process; at != nullptr && at->role != ProcessRole::system;
       at = m_machine.processes.find(at->parent)) {
    if (const Pid app = appAtOrInside(*at); app != 0) return app;
    chain.push_back(at);
  }
  std::reverse(chain.begin(), chain.end());
  for (const SimulatedProcess* one : chain) {
    if (const Pid app = ownerOfOrphan(*one); app != 0) return app;
  }
  return 0;
}

Pid Checker::ownerOfOrphan(const SimulatedProcess& process) const {
  if (process.pid <= 1 || process.role == ProcessRole::system) return 0;
  const auto slowedWithIn = [&process](const std::map<Pid, ManagedApp>& managed) -> const ManagedApp* {
    for (const auto& [pid, app] : managed) {
      const auto& members = app.members;
      if (std::find(members.begin(), members.end(), process.identity()) != members.end()) return &app;
    }
    return nullptr;
  };
  if (m_engine != nullptr) {
    if (const ManagedApp* app = slowedWithIn(m_engine->managed())) return app->root.pid;
    const ManagedApp* before = slowedWithIn(m_managedBefore);
    if (before != nullptr && m_machine.processes.lives(before->root)) return before->root.pid;
  }
  const SimulatedProcess* parent = m_machine.processes.find(process.parent);
  const bool isLeftBehind = process.parent <= 1 || (parent != nullptr && parent->role == ProcessRole::system);
  if (isLeftBehind && !process.origin.empty()) {
    const Pid app = onlyApp([&](const SimulatedProcess& root) { return root.origin == process.origin; });
    if (app != 0 && standsWith(app, process)) return app;
  }
  const SimulatedProcess* leader = m_machine.processes.find(process.session);
  if (leader != nullptr && isListed(*leader) && leader->pid > 1 && leader->pid != process.pid) {
    if (const Pid app = appAtOrInside(*leader); app != 0) return app;
  }
  if (!isLeftBehind) return 0;
  if (const Pid app = appLeftIn(process.session); app != 0) {
    if (m_machine.processes.find(app)->startMicros <= process.startMicros && standsWith(app, process))
      return app;
  }
  const std::string& place = placeOf(process);
  if (place.empty()) return 0;
  return onlyApp([&](const SimulatedProcess& root) { return placeOf(root) == place; });
}

Pid Checker::onlyApp(const std::function<bool(const SimulatedProcess& root)>& fits) const {
  std::set<Pid> fitting;
  for (const SimulatedAppRef& app : m_machine.workspace.apps()) {
    const SimulatedProcess* root = m_machine.processes.find(app->processIdentifier());
    if (!app->isTerminated() && root != nullptr && fits(*root)) fitting.insert(root->pid);
  }
  return fitting.size() == 1 ? *fitting.begin() : 0;
}

bool Checker::standsWith(Pid app, const SimulatedProcess& process) const {
  const SimulatedProcess* root = m_machine.processes.find(app);
  return root != nullptr && placeOf(*root) == placeOf(process);
}

bool Checker::isListed(const SimulatedProcess& process) const {
  return !process.isZombie || m_truth.listsZombies();
}

bool Checker::isGone(Pid session) const {
  const SimulatedProcess* leader = m_machine.processes.find(session);
  return session > 1 && (leader == nullptr || !isListed(*leader));
}

// The only app in a session whose first process has gone.
Pid Checker::appLeftIn(Pid session) const {
  if (!isGone(session)) return 0;
  std::set<Pid> apps;
  for (const auto& [pid, other] : m_machine.processes.all()) {
    if (other.session != session || !isListed(other)) continue;
    if (other.role == ProcessRole::system) return 0;
    if (const Pid app = appAtOrInside(other); app != 0) apps.insert(app);
  }
  return apps.size() == 1 && *apps.begin() != m_machine.host.self ? *apps.begin() : 0;
}

const std::string& Checker::placeOf(const SimulatedProcess& process) const {
  const auto before = m_placesBefore.find(process.pid);
  return m_judgesByPlacesBefore && before != m_placesBefore.end() ? before->second : process.place;
}

std::vector<const SimulatedProcess*> Checker::ownedBy(Pid app) const {
  std::vector<const SimulatedProcess*> owned;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    if (!process.isZombie && ownerOf(process) == app) owned.push_back(&process);
  }
  return owned;
}

bool Checker::isSpared(Pid app) const {
  const auto owned = ownedBy(app);
  return m_excused.contains(app) || std::any_of(owned.begin(), owned.end(), [this](const auto* process) {
           return m_excused.contains(process->pid);
         });
}

const RunningApplication* Checker::boostApp() const {
  // While the engine is being built, only the app in front can start a Boost.
  return m_engine != nullptr ? m_engine->activeGame.get().get() : m_machine.workspace.front().get();
}

bool Checker::mayBeSlowed(const SimulatedProcess& process) const {
  if (boostApp() == nullptr) return false;
  if (!m_placesBefore.empty() && !m_judgesByPlacesBefore) {
    m_judgesByPlacesBefore = true;
    const bool couldBe = mayBeSlowed(process);
    m_judgesByPlacesBefore = false;
    if (couldBe) return true;
  }
  const Pid owner = ownerOf(process);
  const auto& apps = m_machine.workspace.apps();
  const auto app = std::find_if(apps.begin(), apps.end(), [owner](const SimulatedAppRef& one) {
    return !one->isTerminated() && one->processIdentifier() == owner;
  });
  return app != apps.end() && !isProtected(**app);
}

bool Checker::isAboveThisProgram(const SimulatedApp& app) const {
  for (const SimulatedProcess* at = m_machine.processes.find(m_machine.host.self);
       at != nullptr && at->pid > 1; at = m_machine.processes.find(at->parent)) {
    if (ownerOf(*at) == app.processIdentifier()) return true;
  }
  return false;
}

bool Checker::isAboveTheDesktop(Pid pid, Pid game) const {
  return std::any_of(m_machine.processes.all().begin(), m_machine.processes.all().end(),
                     [&](const auto& entry) {
                       const SimulatedProcess& process = entry.second;
                       return process.role == ProcessRole::system && ownerOf(process) == 0 &&
                              isAtOrAbove(pid, process.pid) && !isAtOrAbove(process.pid, game);
                     });
}

// Above the game, or below a process of nobody's that is: as the window of a store whose client has none.
bool Checker::isLauncher(const SimulatedApp& app, const RunningApplication& game) const {
  if (holds(app, game.processIdentifier())) return true;
  const SimulatedProcess* root = m_machine.processes.find(app.processIdentifier());
  for (const SimulatedProcess* at = m_machine.processes.find(game.processIdentifier());
       at != nullptr && at->pid > 1; at = m_machine.processes.find(at->parent)) {
    if (ownerOf(*at) == app.processIdentifier()) return true;
    if (m_excused.contains(at->pid)) break; // nobody can see what is above it
    const bool isClient = at->pid != game.processIdentifier() && ownerOf(*at) == 0 &&
                          at->role == ProcessRole::program && !isAtOrAbove(at->pid, m_machine.host.self) &&
                          !isAboveTheDesktop(at->pid, game.processIdentifier());
    if (!isClient || root == nullptr || root->pid == at->pid || !isAtOrAbove(at->pid, root->pid)) continue;
    const bool isTogether = (root->session == at->session && root->session != 0) ||
                            (!placeOf(*root).empty() && placeOf(*root) == placeOf(*at));
    if (isTogether) return true;
  }
  return false;
}

// Calls about nobody above the app are refused: what is found out about its launcher is what is true.
bool Checker::canSeeAbove(const RunningApplication& app) const {
  for (const SimulatedProcess* at = m_machine.processes.find(app.processIdentifier()); at != nullptr;
       at = m_machine.processes.find(at->parent)) {
    if (m_excused.contains(at->pid)) return false;
  }
  return true;
}

bool Checker::isProtected(const SimulatedApp& app) const {
  const AppSpec& spec = app.spec;
  if (spec.policy != ActivationPolicy::regular || app.isTerminated()) return true;
  if (app.processIdentifier() == m_machine.host.self || isAboveThisProgram(app)) return true;
  if (spec.bundleID && systemBundleIDs().contains(*spec.bundleID)) return true;
  if (contains(m_settings->protectedApps.get(), spec.bundleID)) return true;
  if (spec.category || contains(m_settings->userGames.get(), spec.bundleID ? spec.bundleID : spec.name)) {
    return true; // a Boost app: nothing but a game has a category here
  }
  const RunningApplication* front = m_engine != nullptr ? m_engine->lastFrontmost.get().get() : nullptr;
  if (front != nullptr && !front->isTerminated() && front->processIdentifier() == app.processIdentifier())
    return true;
  const RunningApplication* game = boostApp();
  if (!game->isTerminated() && isLauncher(app, *game)) return true;
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
    if (m_truth.isIn(identity.pid) && !isSlowAgain) {
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
  const bool nobodyMayBeSlow = !m_engine->activeGame.get() && m_truth.knowsTraces();
  for (const auto& [pid, process] : m_machine.processes.all()) {
    if (process.isZombie || !m_truth.isOurs(pid) || m_excused.contains(pid)) continue;
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
  if (!front || !m_engine->activeGame.get() || !m_truth.knowsTraces()) return;
  if (m_machine.workspace.queuedEvents() > 0) return; // the engine has not been told yet
  const SimulatedProcess* process = m_machine.processes.find(front->processIdentifier());
  if (front->isTerminated() || process == nullptr || m_excused.contains(process->pid)) return;
  if (m_truth.isOurs(process->pid)) fail("slow although it is in front", process->pid);
}

// Safe is also what does nothing: whoever may be slowed is slowed when a Boost begins, and who is listed is
// slowed whole.
void Checker::checkLife() {
  if (!m_engine->activeGame.get()) return;
  const auto isOut = [this](const SimulatedProcess* process) { return !m_truth.isIn(process->pid); };
  if (m_truth.canSlowAll() && !m_wasBoosting && !m_engine->activeGame.get()->isTerminated() &&
      canSeeAbove(*m_engine->activeGame.get())) {
    for (const SimulatedAppRef& app : m_machine.workspace.apps()) {
      const Pid pid = app->processIdentifier();
      if (isProtected(*app) || isSpared(pid)) continue;
      const auto owned = ownedBy(pid);
      if (std::any_of(owned.begin(), owned.end(), isOut))
        fail("not slowed although nothing protects it", pid);
    }
  }
  for (const auto& [pid, app] : m_engine->managed()) {
    if (!m_truth.canSlowAll()) break;
    if (m_managedBefore.contains(pid) || isSpared(pid) || !m_machine.processes.lives(app.root)) continue;
    const auto owned = ownedBy(pid);
    if (std::any_of(owned.begin(), owned.end(), isOut)) fail("listed, but not slowed whole", pid);
  }
  // The engine has not been told of everybody yet, or cannot tell whom it has slowed.
  if (m_machine.workspace.queuedEvents() > 0 || !m_truth.knowsTraces()) return;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    const bool isOwn = ownerOf(process) == m_machine.host.self || isAtOrAbove(pid, m_machine.host.self);
    if (isOwn && pid > 1 && m_truth.isOurs(pid) && !m_excused.contains(pid))
      fail("slow although it is this program or above it", pid);
  }
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
