// SPDX-License-Identifier: MIT
#include "tests/simulation/RandomRun.h"

#include <utility>

namespace vantle {

namespace {

constexpr std::size_t longestRun = 60; // events
constexpr Pid highestPid = 24;         // small, so that pids are soon used again

} // namespace

RunFigures& RunFigures::operator+=(const RunFigures& other) {
  events += other.events;
  boosts += other.boosts;
  slowed += other.slowed;
  crashes += other.crashes;
  kills += other.kills;
  reusedPids += other.reusedPids;
  return *this;
}

std::ostream& operator<<(std::ostream& stream, const RunFigures& figures) {
  return stream << figures.events << " events, " << figures.boosts << " Boosts, " << figures.slowed
                << " apps slowed, " << figures.crashes << " crashes, " << figures.kills << " kills, "
                << figures.reusedPids << " reused pids";
}

RandomRun::RandomRun(std::uint64_t seed, RunOptions options, const BandTruth* truth)
    : m_random(seed), m_options(std::move(options)),
      m_checker(m_machine, truth != nullptr ? *truth : m_ownTruth) {}

RunResult RandomRun::run() {
  arrange();
  start();
  eventEnded();
  const std::size_t length = longestRun / 2 + m_random.below(longestRun / 2);
  std::size_t weights = 0;
  for (const Choice& choice : choices()) weights += choice.weight;
  while (m_figures.events < length && !m_checker.violation()) {
    std::size_t drawn = m_random.below(weights);
    for (const Choice& choice : choices()) {
      if (drawn < choice.weight) {
        perform(choice.name, choice.event);
        break;
      }
      drawn -= choice.weight;
    }
  }
  m_machine.calls.cancelCrash();
  if (!m_checker.violation()) perform("turn off at the end", &RandomRun::turnOff);
  if (!m_checker.violation()) runEnds();
  if (m_options.log != nullptr && m_checker.violation())
    *m_options.log << m_checker.scene() << machineInWords();
  m_figures.reusedPids = m_machine.processes.reusedPids();
  return {m_checker.violation(), m_figures};
}

void RandomRun::arrange() {
  m_isLazy = m_random.oneIn(3);
  m_hasFaults = m_random.oneIn(4);
  m_canBeHit = m_random.oneIn(2);
  m_machine.processes.tellsOfBirths = m_random.oneIn(2);
  m_forksMeanwhile = m_machine.processes.tellsOfBirths && m_random.oneIn(2);
  m_machine.delivery = EventDelivery::onDemand;
  m_machine.band.knowsItsOwnTraces = m_random.oneIn(2);
  m_machine.clock.setResolution(m_random.oneIn(2) ? 1 : 10'000);
  m_machine.processes.setHighestPid(highestPid);
  if (m_options.log != nullptr) m_machine.calls.startTrace();
  arrangeMachine();
  for (std::size_t count = 2 + m_random.below(4); count > 0; --count) launchApp();
  m_checker.betweenCalls = [this] { forkBetweenCalls(); };
  if (m_random.oneIn(3)) { // the program is started from a terminal
    m_starter = m_machine.processes.spawn(
        {.parent = randomProcess(), .executable = "/usr/bin/bash", .role = ProcessRole::starter});
    m_machine.restartProgram(m_starter);
  }
  m_machine.workspace.dropEvents();
}

void RandomRun::note(const std::string& text) {
  if (m_options.log == nullptr) return;
  *m_options.log << text << '\n';
  for (const std::string& line : m_machine.calls.takeTrace()) *m_options.log << "    " << line << '\n';
}

void RandomRun::start() {
  for (;;) {
    if (m_canBeHit && m_random.oneIn(4)) armCrash();
    try {
      m_settings.emplace(m_machine.defaults);
      m_checker.expectStart(*m_settings);
      m_engine.emplace(m_options.tamper ? m_options.tamper(m_machine) : ports(), *m_settings);
      m_checker.begin(*m_engine);
      note("the program starts");
      return;
    } catch (const SimulatedCrash& crash) {
      ++m_figures.crashes;
      note("the program starts and dies at step " + std::to_string(crash.step));
      die();
    }
  }
}

void RandomRun::die() {
  m_checker.programDied();
  m_engine.reset();
  m_settings.reset();
  programEnded();
  m_machine.restartProgram(livingStarter());
}

Pid RandomRun::livingStarter() const {
  const SimulatedProcess* starter = m_machine.processes.find(m_starter);
  const bool isThere = starter != nullptr && !starter->isZombie && m_starter != m_machine.host.self;
  return isThere ? m_starter : 1;
}

void RandomRun::perform(const char* name, Event event) {
  ++m_figures.events;
  m_checker.beforeEvent();
  const bool wasIdle = m_engine->activeGame.get() == nullptr;
  const std::size_t managedBefore = m_engine->managed().size();
  try {
    (this->*event)();
    if (!m_isLazy && m_engine) {
      while (m_machine.workspace.queuedEvents() > 0) {
        m_checker.afterEvent();
        eventEnded();
        m_checker.beforeEvent();
        m_machine.workspace.deliverNext();
      }
    }
    note(name);
    m_checker.afterEvent();
    eventEnded();
  } catch (const SimulatedCrash& crash) {
    ++m_figures.crashes;
    note(std::string(name) + ", and the program dies at step " + std::to_string(crash.step));
    die();
    start();
    eventEnded();
    return;
  }
  if (wasIdle && m_engine->activeGame.get()) ++m_figures.boosts;
  if (m_engine->managed().size() > managedBefore) {
    m_figures.slowed += m_engine->managed().size() - managedBefore;
  }
}

} // namespace vantle
