// SPDX-License-Identifier: MIT
#pragma once

#include "tests/simulation/darwin/SimulatedKernel.h"

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vantle {

// Has what is handed out of objects released at its end. One ends before the one that stands around it.
class ReleasePool {
 public:
  ReleasePool();
  ~ReleasePool();
  ReleasePool(const ReleasePool&) = delete;
  ReleasePool& operator=(const ReleasePool&) = delete;

 private:
  void* m_pool;
};

// What macOS's room calls in Objective-C, over the kernel's desktop: real objects, messages, notifications
// and counts of references. Where the documentation leaves it open they behave as badly as it allows.
class SimulatedCocoa {
 public:
  explicit SimulatedCocoa(SimulatedKernel& kernel);
  ~SimulatedCocoa();
  SimulatedCocoa(const SimulatedCocoa&) = delete;
  SimulatedCocoa& operator=(const SimulatedCocoa&) = delete;

  SimulatedKernel& kernel;

  std::set<Pid> withoutPid;                     // apps that have none
  bool endsAreTold = true;                      // of apps with a Dock icon; of the others never
  bool exitsAreFirst = true;                    // the process's end is told before the app's
  std::map<std::string, std::string> installed; // where the bundle of an identifier is

  // Of the question who keeps the machine awake: whoever holds it keeps that from being answered.
  std::mutex powerManagement;
  int powerStatus = 0;           // what it answers with; the dictionary is there all the same
  bool hasAssertions = true;     // the dictionary itself
  bool assertionsAreOdd = false; // other things stand beside what is documented

  std::map<const void*, std::uint64_t> activities; // that keep the program from napping, and their options

  bool hasWindowServer = true;

  // The program itself. While it is in front another app gets there only if it yields to that one before, and
  // its notices are not shown unless it says so when it is asked.
  bool isInFront = false;
  const void* yieldedTo = nullptr;

  // Of the notices, and of opening at login.
  std::optional<std::string> ownBundle = "com.halvo.vantle"; // the program's; absent for a bare executable
  bool bundleIsKnown = true;        // to the system, which may not have looked at a new one yet
  std::vector<std::string> notices; // every message to the notification centre
  long loginStatus = 3;             // never heard of
  bool loginIsRefused = false;

  static int objects(); // that were made here and not released by everybody

  AppRef frontmost() const; // one that has ended is that as long as it is listed

  // Notices as they should not be: without an app, and with something else in its place.
  void postActivationOfNobody();
  void postActivationOfSomethingElse();

 private:
  void tell(WorkspaceEvent event, const AppRef& app);

  std::vector<std::unique_ptr<Registration>> m_registrations;
  AppRef m_lastFront; // that was told of
};

} // namespace vantle
