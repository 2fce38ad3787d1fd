// SPDX-License-Identifier: MIT
// What can happen in a random run.
#include "tests/simulation/RandomRun.h"

#include <algorithm>
#include <chrono>

namespace vantle {

namespace {

constexpr std::size_t mostProcesses = 18;

} // namespace

const std::vector<RandomRun::Choice>& RandomRun::choices() const {
  static const std::vector<Choice> all{
      {12, "an app is launched", &RandomRun::launchApp},
      {20, "an app comes to the front", &RandomRun::activateApp},
      {2, "nobody is in front", &RandomRun::activateNobody},
      {8, "an app quits", &RandomRun::quitApp},
      {12, "a process forks", &RandomRun::forkProcess},
      {5, "a process opens its first window", &RandomRun::openLateWindow},
      {8, "a process exits", &RandomRun::exitProcess},
      {6, "a stranger takes over a pid", &RandomRun::reusePid},
      {2, "a process becomes a zombie", &RandomRun::makeZombie},
      {2, "zombies are reaped", &RandomRun::reapZombies},
      {3, "others put a process into the band", &RandomRun::othersPutIn},
      {3, "others take a process out of the band", &RandomRun::othersTakeOut},
      {3, "audio changes", &RandomRun::changeAudio},
      {2, "assertions change", &RandomRun::changeAssertions},
      {2, "memory runs low", &RandomRun::raisePressure},
      {4, "calls are refused", &RandomRun::refuseSomething},
      {2, "calls are granted again", &RandomRun::grantEverything},
      {6, "an event is delivered", &RandomRun::deliverOne},
      {6, "time passes", &RandomRun::passTime},
      {3, "an app is protected", &RandomRun::protectApp},
      {2, "an app is added to the Boost list", &RandomRun::addBoostApp},
      {3, "boost now", &RandomRun::boostNow},
      {3, "turn off", &RandomRun::turnOff},
      {2, "always boost", &RandomRun::alwaysBoost},
      {1, "the automatic switch is flipped", &RandomRun::toggleAutomatic},
      {8, "a crash is ahead", &RandomRun::armCrash},
      {3, "the program is killed", &RandomRun::kill},
  };
  return all;
}

AppSpec RandomRun::randomSpec() {
  static const std::vector<std::string> names{"Mail", "Notes", "Browser", "Chat", "Editor", "Music"};
  AppSpec spec;
  const std::string& name = m_random.pick(names);
  if (!m_random.oneIn(10)) spec.name = name;
  if (!m_random.oneIn(8)) spec.bundleID = "org.example." + name;
  if (m_random.oneIn(12)) spec.bundleID = "com.apple.finder";
  if (m_random.oneIn(8)) spec.policy = ActivationPolicy::accessory;
  if (m_random.oneIn(4)) {
    spec.bundlePath = "/games/" + name;
    spec.category = "public.app-category.games";
  }
  if (m_random.oneIn(5)) spec.quitReaction = QuitReaction::refuses;
  if (m_random.oneIn(3)) spec.parent = randomProcess();
  spec.leadsSession = m_random.oneIn(2);
  if (m_random.oneIn(4)) spec.place = "app-" + name + ".scope";
  if (m_random.oneIn(4)) spec.origin = "/opt/" + name;
  return spec;
}

SimulatedAppRef RandomRun::randomApp() {
  std::vector<SimulatedAppRef> running;
  for (const SimulatedAppRef& app : m_machine.workspace.apps()) {
    if (!app->isTerminated()) running.push_back(app);
  }
  return running.empty() ? nullptr : m_random.pick(running);
}

Pid RandomRun::randomProcess() {
  std::vector<Pid> pids;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    if (pid > 1 && pid != m_machine.host.self && !process.isZombie) pids.push_back(pid);
  }
  return pids.empty() ? 1 : m_random.pick(pids);
}

std::optional<Pid> RandomRun::randomOrdinaryProcess() {
  const Pid pid = randomProcess();
  const auto& apps = m_machine.workspace.apps();
  const bool isApp = std::any_of(apps.begin(), apps.end(), [pid](const SimulatedAppRef& app) {
    return !app->isTerminated() && app->processIdentifier() == pid;
  });
  return pid == 1 || isApp ? std::nullopt : std::optional(pid);
}

void RandomRun::launchApp() {
  if (m_machine.processes.all().size() >= mostProcesses) return;
  m_machine.launch(randomSpec(), m_random.oneIn(3) ? Opening::inFront : Opening::inBackground);
}

void RandomRun::activateApp() {
  if (const SimulatedAppRef app = randomApp()) m_machine.activate(app);
}

void RandomRun::activateNobody() { m_machine.activate(nullptr); }

void RandomRun::quitApp() {
  if (const SimulatedAppRef app = randomApp()) m_machine.quit(app);
}

void RandomRun::forkProcess() {
  if (m_machine.processes.all().size() >= mostProcesses) return;
  m_machine.processes.spawn(randomFork());
}

// By their names too, for the systems that know them by these.
ProcessSpec RandomRun::randomFork() {
  ProcessSpec spec{.parent = randomProcess(), .leadsSession = m_random.oneIn(4)};
  if (m_random.oneIn(8)) {
    spec.role = ProcessRole::starter;
    spec.executable = "/usr/bin/bash";
  } else if (m_random.oneIn(8)) {
    spec.role = ProcessRole::system;
    spec.executable = "/usr/bin/dbus-daemon";
  }
  if (m_random.oneIn(8)) spec.origin = m_random.oneIn(2) ? "/opt/Mail" : "/opt/Music";
  return spec;
}

// Not every process that will be an app is one from the start.
void RandomRun::openLateWindow() {
  if (const auto pid = randomOrdinaryProcess())
    m_machine.showWindow(*pid, randomSpec(), m_random.oneIn(3) ? Opening::inFront : Opening::inBackground);
}

void RandomRun::forkBetweenCalls() {
  if (!m_forksMeanwhile || !m_random.oneIn(20) || m_machine.processes.all().size() >= mostProcesses) return;
  const Pid born = m_machine.processes.spawn({.parent = randomProcess()});
  // What another one with this number was heard for is over.
  m_machine.audio.heard.erase(born);
  std::erase_if(m_machine.power.held, [born](const auto& assertion) { return assertion.pid == born; });
}

void RandomRun::exitProcess() {
  if (const auto pid = randomOrdinaryProcess()) m_machine.exit(*pid);
}

// What the identities are for: the process ends unnoticed, and another one has its number.
void RandomRun::reusePid() {
  const Pid pid = randomProcess();
  const auto& isReserved = m_machine.processes.isReserved;
  if (pid == 1 || m_machine.processes.namesSession(pid) || (isReserved && isReserved(pid))) return;
  m_machine.exit(pid);
  m_machine.clock.advance(std::chrono::microseconds(m_machine.clock.resolution()));
  m_machine.processes.spawn({.parent = randomProcess(), .pid = pid});
  if (m_random.oneIn(2) && mayBePutInByOthers(pid)) m_machine.band.putInByOthers(pid);
}

void RandomRun::makeZombie() {
  const auto pid = randomOrdinaryProcess();
  if (!pid) return;
  m_machine.processes.exitAsZombie(*pid);
  m_machine.audio.heard.erase(*pid);
  std::erase_if(m_machine.power.held, [&pid](const auto& assertion) { return assertion.pid == *pid; });
}

void RandomRun::reapZombies() {
  std::vector<Pid> zombies;
  for (const auto& [pid, process] : m_machine.processes.all()) {
    if (process.isZombie) zombies.push_back(pid);
  }
  for (const Pid pid : zombies) m_machine.processes.reap(pid);
}

void RandomRun::othersPutIn() {
  if (const Pid pid = randomProcess(); mayBePutInByOthers(pid)) m_machine.band.putInByOthers(pid);
}

void RandomRun::othersTakeOut() {
  const Pid pid = randomProcess();
  m_machine.band.takeOutByOthers(pid);
  takenOutByOthers(pid);
}

void RandomRun::changeAudio() {
  m_machine.audio.heard.clear();
  if (!m_random.oneIn(3)) m_machine.audio.heard.insert(randomProcess());
}

void RandomRun::changeAssertions() {
  m_machine.power.held.clear();
  if (!m_random.oneIn(3)) m_machine.power.held.push_back({randomProcess(), "PreventUserIdleSystemSleep"});
}

void RandomRun::raisePressure() {
  if (m_random.oneIn(2)) {
    m_settings->ramAction.set(RAMAction::quitMarked);
    if (const SimulatedAppRef app = randomApp(); app && app->spec.bundleID) {
      m_settings->quittableApps.set({*app->spec.bundleID});
    }
  }
  if (m_random.oneIn(2)) m_machine.clock.advance(std::chrono::seconds(301));
  tellOfPressure(m_random.oneIn(2));
}

void RandomRun::refuseSomething() {
  if (!m_hasFaults) return;
  if (m_random.oneIn(5)) {
    m_machine.calls.refuse(Operation::writeFile);
    m_checker.journalIsRefused();
    writesAreRefused();
    return;
  }
  static const std::vector<Operation> refusable{Operation::enterBand,          Operation::leaveBand,
                                                Operation::readRecord,         Operation::isInBand,
                                                Operation::readExecutablePath, Operation::readFootprint};
  const Pid pid = randomProcess();
  m_machine.calls.refuse(m_random.pick(refusable), pid);
  m_checker.excuse(pid);
  callsAreRefused(pid);
}

void RandomRun::grantEverything() { m_machine.calls.grantAll(); }

void RandomRun::deliverOne() { m_machine.workspace.deliverNext(); }

void RandomRun::passTime() { m_machine.clock.advance(std::chrono::microseconds(m_random.below(30'000))); }

void RandomRun::protectApp() {
  std::vector<std::string> list;
  if (const SimulatedAppRef app = randomApp(); app && app->spec.bundleID) list.push_back(*app->spec.bundleID);
  m_settings->protectedApps.set(list);
  m_engine->recheckManaged();
}

void RandomRun::addBoostApp() {
  std::vector<std::string> list;
  if (const SimulatedAppRef app = randomApp(); app && app->spec.bundleID && m_random.oneIn(2)) {
    list.push_back(*app->spec.bundleID);
  }
  m_settings->userGames.set(list);
  m_engine->recheckManaged();
}

// As the panel's button does it.
void RandomRun::boostNow() {
  const AppRef app = m_engine->lastFrontmost.get();
  if (m_engine->activeGame.get() || !app || app->isTerminated()) return;
  m_engine->dismissedPID.reset();
  m_engine->startBoost(app);
}

void RandomRun::turnOff() {
  if (const AppRef game = m_engine->activeGame.get()) m_engine->dismissedPID = game->processIdentifier();
  m_engine->stopBoost();
}

// As the panel's button does it, with the settings window open: another copy of the app may be slowed, and
// only the window has it looked at again.
void RandomRun::alwaysBoost() {
  const AppRef front = m_engine->lastFrontmost.get();
  const bool wouldNeverEnd = !m_engine->activeGame.get() && front && front->isTerminated();
  m_engine->alwaysBoost();
  if (wouldNeverEnd) m_checker.expectNoBoost("for an app that has ended");
  m_engine->recheckManaged();
}

void RandomRun::toggleAutomatic() { m_engine->setAutomatic(!m_engine->automatic.get()); }

void RandomRun::armCrash() {
  if (!m_canBeHit) return;
  const auto moment = m_random.oneIn(2) ? CrashMoment::beforeEffect : CrashMoment::afterEffect;
  m_machine.calls.crashAt(m_machine.calls.steps() + 1 + m_random.below(8), moment);
}

void RandomRun::kill() {
  ++m_figures.kills;
  note("(killed)");
  die();
  // The front may be nobody's when the program comes back.
  if (m_random.oneIn(2)) m_machine.workspace.setFrontmost(nullptr);
  start();
  m_checker.beforeEvent();
}

} // namespace vantle
