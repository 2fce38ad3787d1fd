// SPDX-License-Identifier: MIT
#pragma once

#include "platform/simulated/SimulatedMachine.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <unordered_set>
#include <vector>

namespace vantle {

// The system calls of macOS's room, answered by a desktop in memory. The program that links it has these
// calls instead of its own system's as long as one of them lives; refusals, steps and crashes are the
// desktop's. It answers as the worst system that the documentation allows.
class SimulatedKernel {
 public:
  explicit SimulatedKernel(SimulatedMachine& desktop);
  ~SimulatedKernel();
  SimulatedKernel(const SimulatedKernel&) = delete;
  SimulatedKernel& operator=(const SimulatedKernel&) = delete;

  SimulatedMachine& desktop;
  std::set<Pid> foreign;      // another user's: in the list and in the short record, and no further
  std::map<Pid, Pid> tracers; // of those that are traced
  int bornWhileListed = 0;    // between the question how many there are and the list
  int recordBytesOff = 0;     // what another version's records are longer or shorter by
  bool makesSources = true;   // of events
  // How many descriptors the program may have open, how many it may ask for, and how many it is given.
  std::uint64_t descriptors = 256;
  std::uint64_t descriptorsToAskFor = std::numeric_limits<std::int64_t>::max(); // without a limit
  std::uint64_t mostDescriptors = 12'288;
  std::unordered_set<ProcessIdentity> slowed; // ever, by the program
  std::map<std::string, int> numbers{{"hw.activecpu", 8}};
  std::map<std::string, std::string> texts{{"kern.osproductversion", "14.5"},
                                           {"kern.bootsessionuuid", "4F-1"}};

  // Besides those that are heard: who plays nothing, and the objects that are no more when they are asked,
  // without a process, or of another size.
  std::set<Pid> silent;
  std::set<Pid> audioGone;
  std::set<Pid> audioWithoutProcess;
  std::set<Pid> audioOdd;
  std::mutex audioServer; // which whoever holds it keeps from answering
  std::atomic<int> audioAnswers{0};

  // Every call in the system's own words, from `startTrace` on, with the files that the desktop has written.
  void startTrace();
  std::vector<std::string> takeTrace();

  // An event of memory pressure, for all sources that want it and run.
  void raisePressure(unsigned long event);
  // Tells of each process that has ended, once and whether it is waited for or not, whoever watches that.
  void tellOfExits();
  // Tells of the time to whoever asked for a moment that is over by now.
  void tellOfTime();
  std::size_t timers() const;  // that wait for their moment
  std::size_t sources() const; // that were made and not released

  // What the system would end the program for, or what it would do to the wrong process.
  std::optional<std::string> fault;

  // For the calls.
  void note(const std::string& line);
  SimulatedProcess* living(Pid pid) const; // null for one that has ended, waited for or not
  bool wantsTrace() const { return m_isTracing; }

 private:
  bool m_isTracing = false;
  std::vector<std::string> m_trace;
};

} // namespace vantle
