// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/BandLedger.h"
#include "platform/linux/band/ServiceManager.h"
#include "platform/linux/band/UnitPath.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// Lowers and gives back the weight of units of the user manager, and moves apps into units of their own.
//
// The manager answers "done" even where the kernel was never told, so whether a weight is in force is read
// from the unit's own folder. Giving back never waits: what cannot be done now (no bus, an error) stays in
// the ledger and is tried again later, and at the latest by the next start.
class UnitWeights {
 public:
  // An app that is to stand in a unit of its own.
  struct Adoption {
    std::string scope;
    // Those of its processes that do not stand there yet; asked again until there are none.
    std::function<std::vector<Pid>(const std::vector<ProcessStat>& now)> outside;
    bool isStarted = false; // the scope exists already
    bool succeeded = false;
  };

  using Deadline = ServiceManager::Deadline;

  // `controlGroups`: mount of the version 2 tree; empty for none.
  UnitWeights(EventLoop& loop, BandLedger& ledger, Kernel& kernel, std::unique_ptr<ServiceManager> manager,
              std::string controlGroups);

  // Whether there is a user manager with power over processor time.
  bool isUsable() const;
  const std::string& managerPath() const { return m_managerPath; }
  const std::string& appSlice() const { return m_appSlice; }

  // Which of them are in force now and were not before.
  std::vector<UnitPlace> lower(const std::vector<UnitPlace>& places, Deadline deadline);
  // Whether the unit that this path leads through was lowered by this program and still is.
  bool isLowered(std::string_view processPath) const;
  // The unit that this path leads through and that still owes its weight; absent when there is none.
  std::optional<UnitPlace> loweredUnitOf(std::string_view processPath) const;
  bool hasLowered() const { return !m_ledger.units().empty(); } // and not given back yet
  void raise(std::string_view processPath);                     // the units that it leads through
  void raiseAll();
  void adopt(std::vector<Adoption>& adoptions, Deadline deadline);

  // Waits until nothing is left to give back, at most this long; true when nothing is.
  bool settle(std::chrono::milliseconds limit);
  std::size_t owed() const; // units that it would wait for

  // Every process in a folder and below it; absent when it cannot be read.
  std::optional<std::vector<Pid>> processesIn(const std::string& path) const;

 private:
  // A unit whose weight was ordered back; nobody knows yet whether the manager has acted on it.
  struct Return {
    std::string unit;
    bool isServed = false;
  };

  void raiseUnit(const std::string& unit);
  void giveBack(const std::string& unit, std::uint64_t weight);
  void confirmReturns();
  void returned(const std::string& unit);
  void forget(const std::string& unit);
  void failed(const std::string& unit);
  void waitUntilIdle(const std::vector<BandLedger::Unit>& entries, Deadline deadline);
  void raiseDebts();
  bool hasDebts() const { return countDebts() > 0; }
  std::size_t countDebts() const;
  bool isIdle(const UnitPlace& place) const; // as the kernel has it

  EventLoop& m_loop;
  Kernel& m_kernel;
  std::string m_controlGroups;
  std::string m_managerPath;
  std::string m_appSlice;
  BandLedger& m_ledger;
  std::set<std::string> m_inForce;                // units of the ledger that stay lowered for now
  std::set<std::string> m_raising;                // units whose weight is on its way back
  std::vector<std::shared_ptr<Return>> m_returns; // those of them that were ordered, in order
  std::size_t m_confirming = 0;                   // how many of these the question covers that is under way
  std::chrono::milliseconds m_retryDelay;
  std::unique_ptr<EventLoop::Handle> m_retry;
  std::unique_ptr<ServiceManager> m_manager; // goes first: its answers come here
};

} // namespace vantle
