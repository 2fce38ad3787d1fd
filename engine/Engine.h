// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "engine/AppUsage.h"
#include "engine/Journal.h"
#include "engine/ManagedApp.h"
#include "engine/MemoryPressure.h"
#include "engine/ProcessQueries.h"
#include "engine/Profile.h"
#include "engine/Published.h"
#include "engine/ports/Machine.h"

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace vantle {

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
  Engine(const Engine&) = delete;
  Engine& operator=(const Engine&) = delete;

  Published<AppRef, Engine> activeGame;                     // the Boost app; null when no Boost is running
  Published<std::vector<std::string>, Engine> managedNames; // sorted by Unicode scalar values
  Published<AppRef, Engine> lastFrontmost;                  // the app last in front, other than this program
  Published<bool, Engine> automatic;                        // whether a Boost starts by itself; persisted

  const Profile profile;
  AppSettings& settings;

  const std::map<Pid, ManagedApp>& managed() const { return m_managed; }
  const Journal& journal() const { return m_journal; }
  Pid selfPID() const { return m_selfPID; }

  // A Boost app that the person turned off: it does not start a Boost by itself again until it quits.
  std::optional<Pid> dismissedPID;

  void setAutomatic(bool value);       // starts or stops nothing by itself
  void startBoost(const AppRef& game); // only while idle
  void stopBoost();
  void alwaysBoost();    // adds the app last in front to the person's Boost list
  void recheckManaged(); // after the Boost list or the protected list changed

  // The workspace's events. Public so that the order of things can be tested call by call.
  void frontmostChanged(const AppRef& app);
  void appLaunched(const AppRef& app);
  void appTerminated(const AppRef& app);

  // Acts on one memory-pressure event: tells the person which apps in the background use most, or asks the
  // apps to quit that the person marked. At most once in 300 seconds, only during a Boost.
  void handleMemoryPressure(bool isCritical);

  // The person's protected apps that are running, by name, with a note on those that are heard.
  std::vector<std::string> protectedInUse();
  std::vector<AppUsage> usageList() const;
  MemoryPressure::Level currentPressureLevel() const;
  std::uint64_t ownFootprint() const;
  AppRef runningApplication(Pid pid) const; // null when there is none

 private:
  // Puts apps into the band: every app's processes are journalled before the first of them is changed. One
  // snapshot and two writes of the journal serve all of them.
  std::set<Pid> everyApp() const; // main processes of all running apps
  void manage(std::span<const AppRef> apps, const std::set<Pid>& shielded, const ProcessSnapshot& snapshot);
  void manage(const AppRef& app); // with fresh protection probes
  // Takes apps out again, children born meanwhile included. The caller has taken them out of `m_managed`.
  void restore(std::span<const ManagedApp> apps);
  bool restoreIfManaged(Pid pid);
  bool shouldManage(const RunningApplication& app, const std::set<Pid>& shielded,
                    const ProcessSnapshot& snapshot) const;

  void frontChangedWhileBoosting(const AppRef& app);
  void adoptBoostApp(const AppRef& game, const ProcessSnapshot& snapshot);
  void refreshManagedNames();
  // Plain, case-sensitive string order: by Unicode scalar values after canonical normalisation.
  std::vector<std::string> sortedByScalars(std::vector<std::string> names) const;
  void startPressureMonitor();
  bool quitIfAllowed(RunningApplication& app, const std::set<std::string>& quittable,
                     const std::set<std::string>& protectedKeys) const;
  void postMemoryNotice(const std::string& title, const std::string& body);

  Machine m_machine;
  Journal m_journal;
  std::map<Pid, ManagedApp> m_managed; // by the pid of the main process
  std::set<Pid> m_gameAncestors;       // the Boost app, its launcher and the chain above
  AppRef m_foregroundException;        // in front during the Boost, and so at full speed for now
  std::vector<std::unique_ptr<Registration>> m_observers;
  std::unique_ptr<MemoryPressureEvents::Source> m_pressureSource;
  std::optional<std::uint64_t> m_lastPressureNotice; // processMicros; absent until the first notice
  Pid m_selfPID;
};

} // namespace vantle
