// SPDX-License-Identifier: MIT
#include "tests/simulation/linux/LinuxRun.h"

#include <algorithm>
#include <chrono>
#include <sched.h>
#include <sstream>
#include <utility>

namespace vantle {

namespace {

using std::chrono::milliseconds;
using Mood = SimulatedServiceManager::Mood;

constexpr std::size_t mostProcesses = 18;
constexpr std::size_t mostForksInEvent = 2; // the engine looks four times at most
constexpr int idleIo = 3 << 13;

} // namespace

const std::vector<RandomRun::Choice>& LinuxRun::choices() const {
  static const std::vector<Choice> all = [this] {
    const auto of = [](LinuxEvent event) { return static_cast<Event>(event); };
    std::vector<Choice> choices;
    for (const Choice& choice : RandomRun::choices()) {
      const std::string name = choice.name;
      // Of the other band only; calls are refused in other ways here.
      if (name.find("others") == std::string::npos && name.find("calls are") == std::string::npos)
        choices.push_back(choice);
    }
    choices.insert(choices.end(), {
                                      {4, "a process starts a session", of(&LinuxRun::startSessionOf)},
                                      {4, "a thread starts or ends", of(&LinuxRun::startOrEndThread)},
                                      {4, "a fork begins", of(&LinuxRun::beginFork)},
                                      {4, "a fork ends", of(&LinuxRun::endFork)},
                                      {6, "an app starts another", of(&LinuxRun::launchBelow)},
                                      {2, "a service is launched", of(&LinuxRun::launchService)},
                                      {2, "a service restarts", of(&LinuxRun::restartService)},
                                      {2, "somebody changes a thread", of(&LinuxRun::othersChangeThread)},
                                      {1, "somebody weighs a session", of(&LinuxRun::othersWeighSession)},
                                      {1, "somebody weighs a unit", of(&LinuxRun::othersWeighUnit)},
                                      {3, "another user weighs a session", of(&LinuxRun::takeTurn)},
                                      {3, "the manager's mood changes", of(&LinuxRun::changeMood)},
                                      {2, "a disk fills up or has room again", of(&LinuxRun::fillDisk)},
                                      {8, "a while passes", of(&LinuxRun::waitAWhile)},
                                      {8, "everything settles", of(&LinuxRun::settle)},
                                  });
    return choices;
  }();
  return all;
}

void LinuxRun::arrangeMachine() {
  LinuxOptions options;
  options.user = m_random.oneIn(3) ? 0 : 1000;
  const bool hasManager = m_random.oneIn(2);
  options.delegatesCpu = hasManager;
  options.hasControlGroups = hasManager || m_random.oneIn(2);
  switch (m_random.below(hasManager ? 3 : 2)) {
  case 0:
    options.placement = LinuxPlacement::oneSession;
    break;
  case 1:
    options.placement = LinuxPlacement::ownSessions;
    break;
  default:
    options.placement = LinuxPlacement::ownUnits;
  }
  static const std::vector<unsigned> processors{1, 2, 4, 8};
  options.processors = m_random.pick(processors);
  options.hasAutogroups = !m_random.oneIn(5);
  options.tellsOfBirths = m_random.oneIn(2);
  options.keepsMarks = !m_random.oneIn(20);
  m_forksMeanwhile = options.tellsOfBirths && m_random.oneIn(2);
  m_machine.clock.setResolution(10'000);
  m_desktop.emplace(m_machine, options);
  m_desktop->hasManager = hasManager;
  SimulatedLinux& kernel = m_desktop->kernel;
  // Such a kernel is found out with the first mark, and dying right there is the one thing that cannot be
  // undone.
  if (!options.keepsMarks) m_canBeHit = m_forksMeanwhile = false;
  if (m_random.oneIn(4)) kernel.process(1).niceLimit = 20;
  // Somebody who is no app stands in the session of the login.
  if (options.placement == LinuxPlacement::oneSession) kernel.joinSession(1, m_machine.host.self);
  truth.follow(kernel);
  kernel.onTransition = [this](Pid pid, bool isSlow) { transition(pid, isSlow); };
  kernel.onMark = [this](Pid pid, bool isMarked) { marked(pid, isMarked); };
  kernel.beforeCall = [this] { betweenCalls(); };
  kernel.onPlace = [this](Pid pid, const std::string& before) { m_checker.moved(pid, before); };
  m_desktop->table.onScan = [this] {
    ++m_looks;
    noteAboveGame();
  };
}

Machine LinuxRun::ports() {
  LinuxBand& band = m_desktop->startBand();
  return tamperWith ? tamperWith(*this) : m_machine.ports(m_desktop->table, band);
}

void LinuxRun::programEnded() {
  if (!m_desktop) return;
  m_desktop->endBand();
  // Moves that it has ordered are made during the next run's pass.
  if (m_desktop->manager.hasOrders()) m_managerFailed = true;
}

std::string LinuxRun::machineInWords() const {
  const LinuxOptions& options = m_desktop->kernel.options;
  std::ostringstream text;
  text << "  user " << options.user << ", placement " << static_cast<int>(options.placement) << ", "
       << options.processors << " processors" << (options.hasAutogroups ? ", autogroups" : "")
       << (options.hasControlGroups ? ", control groups" : "") << (options.delegatesCpu ? " with cpu" : "")
       << (options.tellsOfBirths ? ", births told" : "") << (options.keepsMarks ? "" : ", loses marks")
       << (m_desktop->hasManager ? ", manager in mood " : "");
  if (m_desktop->hasManager) text << static_cast<int>(m_desktop->manager.mood);
  if (!m_desktop->manager.isReachable) text << ", away";
  text << ", disturbed:";
  for (const ProcessIdentity& one : m_disturbed) text << ' ' << one.pid;
  for (const std::string& path : m_disturbedUnits) text << ' ' << path.substr(path.rfind('/') + 1);
  text << "\n  verdicts:";
  if (m_engine) {
    for (const auto& [pid, verdict] : m_engine->verdicts()) {
      text << ' ' << pid << '=' << static_cast<int>(verdict.verdict);
      if (verdict.refusal) text << '/' << static_cast<int>(*verdict.refusal);
    }
  }
  text << '\n';
  for (const std::string& difference : m_desktop->kernel.differences()) text << "  " << difference << '\n';
  return text.str();
}

// What happens meanwhile is only what no event of the workspace tells of.
void LinuxRun::betweenCalls() {
  if (!m_forksMeanwhile || m_forksInEvent >= mostForksInEvent || !m_random.oneIn(150)) return;
  if (!m_engine || m_machine.processes.all().size() >= mostProcesses) return;
  if (!m_isSettling && m_random.oneIn(3)) return beginFork();
  ++m_forksInEvent;
  const std::vector<Pid> forking = m_desktop->kernel.forking();
  bear(forking.empty() || m_random.oneIn(2) ? randomProcess() : m_random.pick(forking));
}

void LinuxRun::bear(Pid parent) {
  if (m_random.oneIn(4) || m_machine.processes.all().size() >= mostProcesses) {
    m_desktop->kernel.startThread(parent);
  } else {
    m_machine.processes.spawn({.parent = parent, .leadsSession = m_random.oneIn(5)});
  }
}

void LinuxRun::beginFork() {
  const Pid pid = randomProcess();
  if (pid != 1) m_desktop->kernel.beginFork(pid);
}

void LinuxRun::endFork() {
  const std::vector<Pid> forking = m_desktop->kernel.forking();
  if (!forking.empty()) bear(m_random.pick(forking));
}

// One after the other, with time between them in which this program may look.
void LinuxRun::endForks() {
  for (const Pid parent : m_desktop->kernel.forking()) {
    if (m_random.oneIn(2)) m_desktop->loop.run(milliseconds(m_random.below(100)));
    if (m_desktop->kernel.find(parent) != nullptr) bear(parent);
  }
}

void LinuxRun::startSessionOf() {
  const auto pid = randomOrdinaryProcess();
  const SimulatedProcess* process = pid ? m_machine.processes.find(*pid) : nullptr;
  if (process == nullptr || process->session == *pid) return;
  if (truth.isOurs(*pid)) m_wandered.insert(process->identity());
  m_desktop->kernel.startSession(*pid);
}

void LinuxRun::startOrEndThread() {
  const Pid pid = randomProcess();
  if (pid == 1) return;
  SimulatedLinux& kernel = m_desktop->kernel;
  const auto& threads = kernel.process(pid).threads;
  if (threads.size() > 3 || (threads.size() > 1 && m_random.oneIn(3))) {
    kernel.endThread(threads.back().tid);
  } else {
    kernel.startThread(pid);
  }
}

void LinuxRun::launchBelow() {
  const SimulatedAppRef above = randomApp();
  const SimulatedProcess* parent = above ? m_machine.processes.find(above->processIdentifier()) : nullptr;
  if (parent == nullptr || parent->isZombie || m_machine.processes.all().size() >= mostProcesses) return;
  AppSpec spec = randomSpec();
  spec.parent = parent->pid;
  m_machine.launch(spec, m_random.oneIn(4) ? Opening::inFront : Opening::inBackground);
}

void LinuxRun::launchService() {
  if (!m_desktop->hasManager || m_machine.processes.all().size() >= mostProcesses) return;
  static const std::vector<std::string> names{"app-Sync.service", "chat.service", "dbus-:1.2-org.a.service"};
  const std::string path = m_desktop->kernel.units.appSlice() + "/" + m_random.pick(names);
  if (!m_desktop->kernel.units.processesBelow(path).empty()) return;
  AppSpec spec = randomSpec();
  spec.parent = 1;
  const SimulatedAppRef app = m_machine.launch(spec, Opening::inBackground);
  m_desktop->kernel.place(app->processIdentifier(), path);
}

void LinuxRun::restartService() {
  std::vector<std::string> services;
  for (const auto& [path, unit] : m_desktop->kernel.units.units()) {
    if (path.ends_with(".service") && !m_desktop->kernel.units.processesIn(path).empty())
      services.push_back(path.substr(path.rfind('/') + 1));
  }
  if (services.empty()) return;
  const auto pids =
      m_desktop->kernel.units.processesIn(*m_desktop->kernel.units.pathOfUnit(services.front()));
  if (std::find(pids.begin(), pids.end(), m_machine.host.self) != pids.end()) return;
  const std::string service = m_random.pick(services);
  // What the service starts anew is nobody's, and slow with its unit until the Boost ends.
  m_disturbedUnits.insert(*m_desktop->kernel.units.pathOfUnit(service));
  m_desktop->manager.restartService(service, "/usr/bin/program");
}

void LinuxRun::disturb(Pid pid) {
  if (const SimulatedProcess* process = m_machine.processes.find(pid))
    m_disturbed.insert(process->identity());
}

// It, or what it was born of.
bool LinuxRun::isDisturbed(Pid pid) const {
  for (const SimulatedProcess* at = m_machine.processes.find(pid); at != nullptr;
       at = m_machine.processes.find(at->parent)) {
    if (m_disturbed.contains(at->identity())) return true;
  }
  return false;
}

void LinuxRun::othersChangeThread() {
  const Pid pid = randomProcess();
  if (pid == 1) return;
  disturb(pid);
  const auto& threads = std::as_const(m_desktop->kernel).find(pid)->threads;
  const Pid tid = threads[m_random.below(threads.size())].tid;
  const std::size_t what = m_random.below(5);
  const bool isUp = m_random.oneIn(2);
  m_desktop->kernel.byOthers(tid, [&](ThreadState& state) {
    // Whoever overwrites a mark takes the memory with it; what it was cannot be told any more.
    if (what == 0 && !truth.isOurs(pid)) state.ioPriority = isUp ? (2 << 13) + 4 : idleIo;
    if (what == 1) state.policy = isUp ? SCHED_BATCH : SCHED_OTHER;
    if (what == 2) state.processors = isUp ? 1 : 3;
    if (what == 3) state.resetsOnFork = isUp;
    if (what == 4) state.policy = isUp ? SCHED_RR : SCHED_OTHER;
  });
}

void LinuxRun::othersWeighSession() {
  const Pid pid = randomProcess();
  if (pid == 1) return;
  static const std::vector<int> weights{0, 5, 10, -5};
  const long group = m_desktop->kernel.process(pid).autogroup;
  m_desktop->kernel.weighSessionByOthers(pid, m_random.pick(weights));
  for (const auto& [other, process] : m_machine.processes.all()) {
    const LinuxProcess* known = std::as_const(m_desktop->kernel).find(other);
    if (known != nullptr && known->autogroup == group) disturb(other);
  }
}

void LinuxRun::othersWeighUnit() {
  std::vector<std::string> units;
  for (const auto& [path, unit] : m_desktop->kernel.units.units()) units.push_back(path);
  // What is on its way when they choose is served after them.
  if (units.empty() || !m_desktop->hasManager || m_desktop->manager.hasOrders()) return;
  const std::string path = m_random.pick(units);
  // Never the weight that this program gives: it cannot be told from theirs when a ledger that no disk took
  // was not emptied.
  static const std::vector<std::uint64_t> weights{50, 100, 300};
  m_desktop->manager.setWeightByOthers(path.substr(path.rfind('/') + 1), m_random.pick(weights));
  m_disturbedUnits.insert(path);
}

void LinuxRun::takeTurn() { m_desktop->kernel.takeSessionTurn(); }

void LinuxRun::changeMood() {
  if (!m_desktop->hasManager) return;
  static const std::vector<Mood> moods{Mood::obedient, Mood::obedient, Mood::lying,
                                       Mood::refusing, Mood::silent,   Mood::late};
  m_desktop->manager.mood = m_random.pick(moods);
  m_desktop->manager.isReachable = !m_random.oneIn(8);
  if (!isQuietManager()) m_managerFailed = true;
}

bool LinuxRun::isQuietManager() const {
  return m_desktop->manager.mood == Mood::obedient && m_desktop->manager.isReachable;
}

// The one that the person's files are on.
void LinuxRun::fillDisk() {
  auto& full = m_machine.files.fullFolders;
  if (!full.empty()) {
    full.clear();
  } else if (m_random.oneIn(2)) {
    full.insert(m_machine.files.applicationSupport());
    m_checker.journalIsRefused();
  }
}

void LinuxRun::waitAWhile() { m_desktop->loop.run(milliseconds(m_random.below(400))); }

// The person is away for a moment, and the manager serves again.
void LinuxRun::settle() {
  m_desktop->manager.mood = Mood::obedient;
  m_desktop->manager.isReachable = true;
  m_machine.files.fullFolders.clear();
  m_isSettling = true; // forks end, and none begins that would not
  endForks();
  m_desktop->settle();
  m_isSettling = false;
  const bool managerFailed = std::exchange(m_managerFailed, false);
  if (m_machine.workspace.queuedEvents() > 0) return;
  checkTruth(managerFailed);
  if (!m_engine->activeGame.get()) checkExactness("after the queues are empty");
}

void LinuxRun::runEnds() {
  m_machine.workspace.dropEvents();
  m_forksMeanwhile = false;
  settle();
}

bool LinuxRun::isUntouchable(const SimulatedProcess& process) const {
  const LinuxProcess* known = std::as_const(m_desktop->kernel).find(process.pid);
  return process.pid <= 1 || process.role == ProcessRole::system ||
         m_checker.isAtOrAbove(process.pid, m_machine.host.self) ||
         (known != nullptr && known->user != m_desktop->kernel.options.user);
}

void LinuxRun::marked(Pid pid, bool isMarked) {
  const SimulatedProcess* process = m_machine.processes.find(pid);
  if (process == nullptr) return;
  if (!isMarked) return m_checker.left(*process);
  if (isUntouchable(*process)) m_checker.fail("marked although it must never be touched", pid);
  m_wandered.erase(process->identity());
  m_checker.entered(*process);
}

void LinuxRun::transition(Pid pid, bool isSlow) {
  const SimulatedProcess* process = m_machine.processes.find(pid);
  if (!isSlow || process == nullptr || process->isZombie) return;
  // An order of a program that has died, or of a pass that has given up waiting, is still served.
  if (!m_engine || m_managerFailed) return;
  // A part of the system that a slowed app has started is born slow.
  const bool isBornSo = process->role == ProcessRole::system && truth.isOurs(pid);
  if (isUntouchable(*process) && !isBornSo)
    return m_checker.fail("made slow although it must never be touched", pid);
  // What waited in a queue was decided earlier.
  if (m_machine.workspace.queuedEvents() > 0 || isListed(m_checker.ownerOf(*process))) return;
  if (!m_checker.mayBeSlowed(*process)) m_checker.fail("made slow although it is protected", pid);
}

void LinuxRun::eventEnded() {
  std::set<Pid> sharing = thoseThatShareAUnit();
  if (!m_engine || m_machine.workspace.queuedEvents() > 0) return m_shared.merge(sharing);
  checkLife();
  m_forksInEvent = 0;
  m_shared = std::move(sharing);
}

// With what belongs to somebody else.
std::set<Pid> LinuxRun::thoseThatShareAUnit() const {
  const SimulatedLinux& kernel = m_desktop->kernel;
  std::set<Pid> sharing;
  for (const SimulatedAppRef& app : m_machine.workspace.apps()) {
    const std::string* path = kernel.units.pathOf(app->processIdentifier());
    if (path == nullptr) continue;
    for (const auto& [pid, process] : m_machine.processes.all()) {
      const std::string* place = kernel.units.pathOf(pid);
      if (place == nullptr || *place != *path) continue;
      if (m_checker.ownerOf(process) != app->processIdentifier()) sharing.insert(app->processIdentifier());
    }
  }
  return sharing;
}

void LinuxRun::checkTruth(bool managerFailed) {
  const SimulatedLinux& kernel = m_desktop->kernel;
  const auto isExcused = [&](Pid pid) {
    const std::string* path = kernel.units.pathOf(pid);
    return m_checker.isExcused(pid) || isDisturbed(pid) ||
           (path != nullptr && std::any_of(m_disturbedUnits.begin(), m_disturbedUnits.end(),
                                           [&](const std::string& unit) { return path->starts_with(unit); }));
  };
  for (const auto& [root, app] : m_engine->managed()) {
    for (const ProcessIdentity& member : app.members) {
      if (!m_machine.processes.lives(member) || isExcused(member.pid) || m_wandered.contains(member))
        continue;
      if (!kernel.isMarkedIn(member.pid)) m_checker.fail("listed, but it carries no mark", member.pid);
      // A manager that serves an order when nobody waits for it any more moves an app out of a place that
      // was slowed.
      if (!kernel.isHeldBack(member.pid) && !managerFailed)
        m_checker.fail("listed, but at full speed", member.pid);
    }
  }
  std::unordered_map<ProcessIdentity, std::size_t> left;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    if (process.isZombie || pid <= 1 || isExcused(pid)) continue;
    if (!kernel.isSlow(pid) && !kernel.carriesMark(pid)) continue;
    if (isListed(m_checker.ownerOf(process))) continue;
    // A process that has lost its app since the engine looked is its parent's child until it looks again.
    const auto known = m_left.find(process.identity());
    const std::size_t since = known == m_left.end() ? m_looks : known->second;
    left.emplace(process.identity(), since);
    if (since != m_looks || !m_engine->activeGame.get())
      m_checker.fail("not listed, and slow or marked", pid);
  }
  m_left = std::move(left);
}

void LinuxRun::checkExactness(const char* when) {
  for (const std::string& difference : m_desktop->kernel.differences()) {
    m_checker.fail("not as it was " + std::string(when) + ": " + difference, 0);
  }
}

// Whether somebody who is no part of the app stands in a session with something of it.
bool LinuxRun::sharesASession(Pid app) const {
  const SimulatedLinux& kernel = m_desktop->kernel;
  std::set<long> own;
  std::set<long> others;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    const LinuxProcess* known = kernel.find(pid);
    if (known == nullptr) continue;
    const bool isIts = m_checker.ownerOf(process) == app && !isUntouchable(process) && !isDisturbed(pid);
    (isIts ? own : others).insert(known->autogroup);
  }
  return std::any_of(own.begin(), own.end(), [&others](long one) { return others.contains(one); });
}

// All that stand in its session are to be slowed, and it has a weight that nobody else has chosen.
bool LinuxRun::hasWeighedSession(Pid app) const {
  const SimulatedLinux& kernel = m_desktop->kernel;
  const LinuxProcess* root = kernel.find(app);
  if (!kernel.options.hasAutogroups || root->session >= 1'000'000 || kernel.isWeighed(app)) return false;
  if (kernel.sessionNice(app) != 0 || sharesASession(app)) return false;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    const LinuxProcess* known = kernel.find(pid);
    if (known == nullptr || known->autogroup != root->autogroup) continue;
    const Pid owner = m_checker.ownerOf(process);
    if (owner != app || isUntouchable(process) || isDisturbed(pid) || kernel.isWeighed(pid)) return false;
  }
  return true;
}

bool LinuxRun::hasMovableUnit(Pid app) const {
  const SimulatedLinux& kernel = m_desktop->kernel;
  // What it has not served yet was late.
  if (!m_desktop->hasManager || m_managerFailed || m_desktop->manager.hasOrders()) return false;
  const std::string* path = kernel.units.pathOf(app);
  const std::string* front = kernel.units.pathOf(m_checker.boostApp()->processIdentifier());
  const auto isPlain = [&](const std::string* one) {
    return one != nullptr && one->starts_with(kernel.units.appSlice() + "/") && one->ends_with(".scope");
  };
  if (!isPlain(front) || path == nullptr || *path == *front || m_disturbedUnits.contains(*path)) return false;
  if (!isPlain(path) && *path != kernel.loginScope()) return false;
  // What another app with this number has left in the scope that this one would get.
  for (const auto& [other, unit] : kernel.units.units()) {
    const bool isVantles = other.find("/app-vantle-") != std::string::npos;
    if (isVantles && other != *path && other.ends_with("-" + std::to_string(app) + ".scope")) return false;
  }
  const std::uint64_t start = m_machine.processes.find(app)->startMicros;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    const std::string* place = kernel.units.pathOf(pid);
    const bool isIts = m_checker.ownerOf(process) == app;
    // It may have been put there meanwhile, to what became its own by that.
    if (place != nullptr && *place == *path && process.startMicros < start) return false;
    if (isIts && (isUntouchable(process) || isDisturbed(pid))) return false;
    // With others in it, it has to move; that is not demanded where it may come back into a unit that is
    // full.
    if (!isIts && place != nullptr && isPlain(path) && *place == *path) return false;
  }
  return true;
}

bool LinuxRun::meetsTheBoostApp(Pid app) const {
  const SimulatedLinux& kernel = m_desktop->kernel;
  if (kernel.options.user != 0) return false;
  const Pid game = m_checker.boostApp()->processIdentifier();
  if (kernel.find(game) == nullptr || kernel.isWeighed(app) || kernel.isWeighed(game)) return false;
  if (!kernel.options.hasAutogroups) return true;
  // What has a session of its own may share that one with others, and the app is slowed as a whole or not.
  const Pid session = kernel.find(game)->session;
  return std::all_of(
      m_machine.processes.all().begin(), m_machine.processes.all().end(), [&](const auto& one) {
        const LinuxProcess* known = kernel.find(one.first);
        return known == nullptr || m_checker.ownerOf(one.second) != app || known->session == session;
      });
}

bool LinuxRun::canBeSlowed(const SimulatedApp& app) const {
  const Pid pid = app.processIdentifier();
  const SimulatedProcess* root = m_machine.processes.find(pid);
  const SimulatedLinux& kernel = m_desktop->kernel;
  if (root == nullptr || root->isZombie || kernel.find(pid) == nullptr || !kernel.options.keepsMarks)
    return false;
  if (isDisturbed(pid) || m_checker.isSpared(pid) || isUntouchable(*root)) return false;
  // A class that others have given, to it or to what it was born of, is never touched.
  for (const LinuxThread& thread : kernel.find(pid)->threads) {
    const int policy = thread.state.now.policy;
    if (policy != SCHED_OTHER && policy != SCHED_BATCH) return false;
  }
  // What was above the game when the Boost began is its launcher, by its number, as long as the Boost lasts.
  const Pid game = m_checker.boostApp()->processIdentifier();
  for (const auto& [other, process] : m_machine.processes.all()) {
    if (!m_aboveGame.contains(other) || m_checker.isAtOrAbove(other, game)) continue;
    if (m_checker.isAtOrAbove(other, pid) || m_checker.isAtOrAbove(pid, other)) return false;
  }
  return hasWeighedSession(pid) || hasMovableUnit(pid) || meetsTheBoostApp(pid);
}

void LinuxRun::noteAboveGame() {
  const RunningApplication* game = m_checker.boostApp();
  if (game == nullptr) return;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    if (m_checker.isAtOrAbove(pid, game->processIdentifier())) m_aboveGame.insert(pid);
  }
}

// Whoever nothing protects and who can be slowed is listed, from the Boost's begin on and however often it
// was in front meanwhile. What was protected when it was looked at may stay as it is.
void LinuxRun::checkLife() {
  const RunningApplication* game = m_checker.boostApp();
  if (game == nullptr || game->isTerminated()) {
    m_aboveGame.clear();
    return m_unclear.clear();
  }
  noteAboveGame();
  for (const SimulatedAppRef& app : m_machine.workspace.apps()) {
    if (app->isTerminated()) continue;
    if (isListed(app->processIdentifier())) {
      m_unclear.erase(app.get());
    } else if (m_forksInEvent > 0 || m_shared.contains(app->processIdentifier()) ||
               m_checker.isProtected(*app) || !canBeSlowed(*app)) {
      // A neighbour may have been moved out by the very pass that this one was refused in.
      m_unclear.insert(app.get());
    } else if (!m_unclear.contains(app.get())) {
      m_checker.fail("could be slowed, and is not", app->processIdentifier());
    }
  }
}

} // namespace vantle
