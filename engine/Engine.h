// SPDX-License-Identifier: MIT
#pragma once

#include "base/Published.h"
#include "engine/AppSettings.h"
#include "engine/AppUsage.h"
#include "engine/Backgrounder.h"
#include "engine/DeclaredGames.h"
#include "engine/MemoryWatch.h"
#include "engine/Profile.h"
#include "engine/Protection.h"
#include "engine/ports/Machine.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace vantle {

// A time without automatic Boosts. Kept nowhere: it ends with the program.
struct Pause {
  std::uint64_t endMicros = 0;               // as Clock::processMicros has it, which nobody sets back
  std::chrono::system_clock::time_point end; // the same for people, as their clock stood at its beginning

  bool operator==(const Pause&) const = default;
};

// An app that is left alone, and the rule that decided so.
struct SparedApp {
  std::string name;
  Verdict verdict = Verdict::noBoost;

  bool operator==(const SparedApp&) const = default;
};

// The Boost cycle. While a Boost app is in front, every other app that no rule protects is in the background
// band; when it ends, all of them come back. There is no timer and no polling: the engine reacts to the
// workspace's events, to memory pressure and to the person, all on the main loop.
//
// Idle: `activeGame` is null and `managed` is empty. Boosting: `activeGame` is set.
class Engine {
 public:
  // Puts back what an earlier run left in the band, and only then starts to watch; may start a Boost at once
  // when a Boost app is in front.
  Engine(Machine machine, AppSettings& settings);
  ~Engine();
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  Published<AppRef, Engine> activeGame;                     // the Boost app; null when no Boost is running
  Published<std::vector<std::string>, Engine> managedNames; // sorted by Unicode scalar values
  Published<AppRef, Engine> lastFrontmost;                  // the app last in front, other than this program
  Published<bool, Engine> automatic;                        // whether a Boost starts by itself; persisted
  Published<std::optional<Pause>, Engine> pause;            // no Boost starts by itself meanwhile

  const Profile profile;
  AppSettings& settings;

  const std::map<Pid, ManagedApp>& managed() const { return m_backgrounder.managed(); }
  // What the last look at each app during this Boost has decided, by the pid of its main process.
  const std::map<Pid, AppVerdict>& verdicts() const { return m_backgrounder.verdicts(); }
  const Journal& journal() const { return m_backgrounder.journal(); }
  Pid selfPID() const { return m_selfPID; }

  // A Boost app that the person turned off: it does not start a Boost by itself again until it quits.
  std::optional<Pid> dismissedPID;

  void setAutomatic(bool value);       // starts or stops nothing by itself
  void startBoost(const AppRef& game); // only while idle
  void stopBoost();
  // A Boost of that app because the person says so, also when another app is in front. Not of one that has
  // ended, and not while one runs.
  void boostNow(const AppRef& app);
  void turnOffBoost();                            // and that app starts none by itself until it quits
  void startPause(std::chrono::seconds duration); // a Boost that runs goes on
  // Whoever is in front then is treated as if it had just come there.
  void endPause();
  // Adds the app last in front to the person's Boost list, and starts a Boost if it still runs: nothing would
  // end one for an app that has ended.
  void alwaysBoost();
  void recheckManaged(); // after the Boost list or the protected list changed

  // The workspace's events. Public so that the order of things can be tested call by call.
  void frontmostChanged(const AppRef& app);
  void appLaunched(const AppRef& app);
  void appTerminated(const AppRef& app);

  // As MemoryWatch.
  void speak(NoticeWords words) { m_memory.speak(std::move(words)); }
  void handleMemoryPressure(bool isCritical) { m_memory.handleMemoryPressure(isCritical); }

  // Puts the app on the person's protected list, and gives it back its speed; nothing when it has no
  // identifier, by which alone that list knows apps.
  void neverSlowDown(const RunningApplication& app);

  // The person's protected apps that are running, by name, with a note on those that are heard.
  std::vector<std::string> protectedInUse();
  // The running apps that a rule keeps out of the background during this Boost, by name.
  std::vector<SparedApp> sparedApps() const;
  std::vector<AppUsage> usageList() const { return m_memory.usageList(); }
  MemoryPressure::Level currentPressureLevel() const { return m_memory.currentPressureLevel(); }
  std::uint64_t ownFootprint() const { return m_memory.ownFootprint(); }
  AppRef runningApplication(Pid pid) const; // null when there is none
  AppTrees look() const { return m_backgrounder.look(); }

 private:
  AppTrees manage(std::span<const AppRef> apps, const ShieldedPIDs& shielded);
  // An app that comes into the background, if any, and those that were given up, with fresh protection
  // probes.
  AppTrees manage(const AppRef& app);
  std::vector<AppRef> givenUpApps() const;
  // `clients`: of the Boost app in this look; filled in by whoever first needs them.
  Verdict shouldManage(const RunningApplication& app, const ShieldedPIDs& shielded, const AppTrees& trees,
                       std::optional<std::set<Pid>>& clients) const;
  bool isPartOfBoost(const RunningApplication& app) const;

  void startBoost(const AppRef& game, const AppRef& front); // which stays in front, at full speed
  bool startsByItself(const RunningApplication& app);
  void frontChangedWhileBoosting(const AppRef& app);
  void adoptBoostApp(const AppRef& game);
  void passBoostOn(Pid ended); // to the next Boost app; else the Boost is over
  void declaredGamesChanged();
  void manageFormerBoostApps(); // those that have been one for a while, and make room again
  Pid boostApp() const;         // its main process; 0 when no Boost is running
  void refreshManagedNames();
  // Plain, case-sensitive string order: by Unicode scalar values after canonical normalisation.
  std::vector<std::string> sortedByScalars(std::vector<std::string> names) const;

  Machine m_machine;
  DeclaredGames m_declared;
  Backgrounder m_backgrounder;
  MemoryWatch m_memory;
  std::set<Pid> m_gameAncestors; // the Boost app, its launcher and the chain above
  bool m_isForDeclared = false;  // the Boost began because the Boost app was registered as a game
  AppRef m_foregroundException;  // in front during the Boost, and so at full speed for now
  std::vector<std::unique_ptr<Registration>> m_observers;
  Pid m_selfPID;
};

} // namespace vantle
