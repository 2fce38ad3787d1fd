// SPDX-License-Identifier: MIT
#pragma once

#include "tests/simulation/Checker.h"
#include "tests/simulation/Random.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// What happened in one or many runs, so that a test can tell that they were worth running.
struct RunFigures {
  std::size_t events = 0;
  std::size_t boosts = 0;
  std::size_t slowed = 0; // apps
  std::size_t crashes = 0;
  std::size_t kills = 0;
  std::size_t reusedPids = 0;

  RunFigures& operator+=(const RunFigures& other);
};

std::ostream& operator<<(std::ostream& stream, const RunFigures& figures);

struct RunResult {
  std::optional<std::string> violation;
  RunFigures figures;
};

struct RunOptions {
  std::ostream* log = nullptr; // every event and every call, for reading a failure
  // Gives the engine a machine that breaks a rule on purpose.
  std::function<Machine(SimulatedMachine&)> tamper;
};

// One evening on one machine, wholly determined by the seed: apps and processes come and go, the person
// switches between them and changes settings, calls are refused, the program is killed at any step and
// started again. Ends at the first broken rule.
class RandomRun {
 public:
  RandomRun(std::uint64_t seed, RunOptions options) : RandomRun(seed, std::move(options), nullptr) {}
  virtual ~RandomRun() = default;
  RandomRun(const RandomRun&) = delete;
  RandomRun& operator=(const RandomRun&) = delete;

  RunResult run();

 protected:
  // For runs on the band of a particular system.
  RandomRun(std::uint64_t seed, RunOptions options, const BandTruth* truth);
  virtual void arrangeMachine() {} // before anything runs on it
  virtual Machine ports() { return m_machine.ports(); }
  virtual void programEnded() {}
  virtual void tellOfPressure(bool isCritical) { m_machine.pressure.raise(isCritical); }
  virtual std::string machineInWords() const { return {}; }
  // What somebody else than the program does to the band, where the band has to tell it from the program's.
  virtual bool mayBePutInByOthers(Pid /*pid*/) const { return true; }
  virtual void takenOutByOthers(Pid /*pid*/) {}
  virtual void writesAreRefused() {}
  virtual void callsAreRefused(Pid /*about*/) {}
  virtual void eventEnded() {} // and the checker has seen it
  virtual void runEnds() {}    // with no Boost running

  using Event = void (RandomRun::*)();
  struct Choice {
    std::size_t weight;
    const char* name;
    Event event;
  };
  virtual const std::vector<Choice>& choices() const;

  void arrange();
  void start(); // until one start was not hit by a crash
  void die();
  void perform(const char* name, Event event);
  void note(const std::string& text);

  // The machine's side.
  void launchApp();
  void activateApp();
  void activateNobody();
  void quitApp();
  void forkProcess();
  void openLateWindow();
  void exitProcess();
  void reusePid();
  void makeZombie();
  void reapZombies();
  void othersPutIn();
  void othersTakeOut();
  void changeAudio();
  void changeAssertions();
  void raisePressure();
  void refuseSomething();
  void grantEverything();
  void deliverOne();
  void passTime();
  // The person's side.
  void protectApp();
  void addBoostApp();
  void boostNow();
  void turnOff();
  void alwaysBoost();
  void toggleAutomatic();
  // The program's end.
  void armCrash();
  void kill();

  virtual AppSpec randomSpec();
  ProcessSpec randomFork();
  void forkBetweenCalls();
  Pid livingStarter() const;
  SimulatedAppRef randomApp();                // null when there is none
  Pid randomProcess();                        // neither the first one nor this program
  std::optional<Pid> randomOrdinaryProcess(); // no app's main process

  Random m_random;
  RunOptions m_options;
  SimulatedMachine m_machine;
  SimulatedBandTruth m_ownTruth{m_machine};
  Checker m_checker;
  std::optional<AppSettings> m_settings;
  std::optional<Engine> m_engine;
  RunFigures m_figures;
  bool m_isLazy = false;         // events wait in the queue
  bool m_hasFaults = false;      // calls are refused
  bool m_canBeHit = false;       // by a crash in the middle of a call
  bool m_forksMeanwhile = false; // processes are born between two calls
  Pid m_starter = 1;             // what the program is started from
};

} // namespace vantle
