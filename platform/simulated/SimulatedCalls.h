// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantle {

// Everything that can be asked of the simulated machine, by port.
enum class Operation {
  readRecord,
  scanProcesses,
  readExecutablePath,
  readFootprint,
  readCpuTime,
  readPriority,
  enterBand,
  leaveBand,
  isInBand,
  makeRoom,
  reclaimBand,
  settleBand,
  listApps,
  frontmostApp,
  findApp,
  observeEvents,
  terminateApp,
  bringToFront,
  probeAudio,
  probeAssertions,
  watchPressure,
  watchGames,
  readPressureLevel,
  requestAuthorization,
  postNotice,
  readDefault,
  writeDefault,
  removeDefault,
  copyDefault,
  openSuite,
  readFile,
  fileExists,
  writeFile,
  renameFile,
  createFolders,
  removeFolder,
  readClock,
  sleep,
  launchProgram,
  setIoPriority,
  setScheduling,
  setAffinity,
  weighSession,
  weighUnit,
  startScope,
  attachProcess,
  askManager,
};

// As it stands in the trace: "band.enter", "files.write", …
std::string_view name(Operation operation);
// Whether the call leaves something behind that outlives the program: only such a call is a step.
bool changesMachine(Operation operation);

// One call of a port, as traces and watchers see it. The texts live for the length of the call only.
struct SimulatedCall {
  Operation operation = Operation::readRecord;
  Pid pid = 0;               // of the process that it is about; 0 when it is about none
  std::string_view about{};  // a path, a key, a name
  std::string_view detail{}; // what was written
};

// The program died here. Not a std::exception, so that nobody catches it by accident.
struct SimulatedCrash {
  std::size_t step = 0;
};

enum class CrashMoment { beforeEffect, afterEffect };

// Sees every call of every port: refuses some on demand, writes them down, counts the steps, and lets the
// program die at one of them.
class SimulatedCalls {
 public:
  // Faults. A refused read yields nothing, a refused change changes nothing.
  void refuse(Operation operation);                          // every call from now on
  void refuse(Operation operation, Pid pid);                 // every call about this process
  void refuseNext(Operation operation, std::size_t nth = 1); // the nth call from now, the next one being 1
  void grant(Operation operation, Pid pid);                  // takes back the refusal for this process
  void grantAll();                                           // takes back every refusal

  bool isTracing() const { return m_tracing; }
  // The trace: one line a call, such as "band.enter 812" or "files.write /a/b []". Off until it is started.
  void startTrace();
  std::vector<std::string> takeTrace(); // what was written so far; the trace goes on, empty
  // Called for every change that is granted, before its effect.
  std::function<void(const SimulatedCall&)> watcher;

  // Steps are numbered from 1 in the order of the changes, refused ones included.
  std::size_t steps() const { return m_steps; }
  // Throws SimulatedCrash from the call that is that step, once.
  void crashAt(std::size_t step, CrashMoment moment);
  void cancelCrash() { m_crash.reset(); }

  // For the ports: whether the read may be answered.
  bool read(const SimulatedCall& call) { return admit(call); }
  // For the ports: makes the change unless it is refused, and says which.
  template <class Effect> bool change(const SimulatedCall& call, Effect effect) {
    ++m_steps;
    crashIfDue(CrashMoment::beforeEffect);
    const bool granted = admit(call);
    if (granted) {
      if (watcher) watcher(call);
      effect();
    }
    crashIfDue(CrashMoment::afterEffect);
    return granted;
  }

 private:
  struct Crash {
    std::size_t step = 0;
    CrashMoment moment = CrashMoment::beforeEffect;
  };

  bool admit(const SimulatedCall& call);
  void crashIfDue(CrashMoment moment);

  std::set<Operation> m_refused;
  std::set<std::pair<Operation, Pid>> m_refusedPids;
  std::map<Operation, std::set<std::size_t>> m_refusedNext; // how many calls from now
  bool m_tracing = false;
  std::vector<std::string> m_trace;
  std::size_t m_steps = 0;
  std::optional<Crash> m_crash;
};

} // namespace vantle
