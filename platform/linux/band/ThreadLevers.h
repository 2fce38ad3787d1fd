// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/EfficiencySet.h"
#include "platform/linux/band/NarrowedSets.h"
#include "platform/linux/band/ThreadMark.h"
#include "platform/linux/kernel/Kernel.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

// What an earlier look has shown of a process: the birth mark of that moment, if it was told, and whether the
// main thread was the only one. It serves as long as nobody was born since.
struct ThreadsSeen {
  std::optional<Pid> birthMark = {};
  bool hasOneThread = false;
  bool isTrusted =
      false; // whoever asks will look himself whether anybody was born since, and call `complete`
};

// Everything of the band that belongs to single threads: the mark, the I/O class that carries it, the
// scheduling class and the affinity. Each thread is asked what it is, the mark that remembers this is set,
// and only then is the thread changed; undoing goes the other way round, the mark last. So a stop between any
// two of these calls leaves nothing that a later `leave` does not put back.
//
// A fork copies class and affinity at its very beginning and the I/O priority with the mark at its end; with
// much memory to copy in between, that is tens of milliseconds. A mark that is taken off meanwhile would
// leave a child that is slow and that nobody knows. So a thread that was put back keeps its mark, as leaving,
// until it was seen resting, or has used more processor time than any fork of its takes: from then on
// whatever it starts is born with what it has now.
class ThreadLevers {
 public:
  struct Plan {
    bool classIsTheEffect = false; // refuse the process unless its threads can be slowed by class
    bool sessionLowered = false;   // remember that the session's weight was ours to change
  };
  ThreadLevers(Kernel& kernel, BandLedger& ledger);

  // Looks for processors that were switched on or off since; once a pass.
  void refresh();

  // Marks and slows all threads of a process, those born meanwhile included. False when it was refused, and
  // then nothing is changed.
  bool enter(Pid pid, const Plan& plan, const ThreadsSeen& seen = {});

  // Does the same to threads that were born while the process entered, before the one that they were born of
  // had its mark.
  void complete(Pid pid, const Plan& plan);

  // Puts all marked threads back. With `keepSession` they stay marked as leaving, because the weight of their
  // session has still to be put back. False when the process is gone or may not be changed. A process that
  // may be in the middle of a fork is `departing` then, and has to leave again until it is not.
  bool leave(Pid pid, bool keepSession, const ThreadsSeen& seen = {});
  std::vector<Pid> departing() const;
  bool isDeparting() const { return !m_departing.empty(); }
  void leaveAgain(Pid pid);
  // The session of this process has its own weight again.
  void sessionRaised(Pid pid);

  // For a process that was slowed, or born of one that was, and has put an I/O priority of its own over the
  // mark: the class and the affinity that it still has of this program are given back. `leave` does the same
  // to single threads. Not certain that it was slowed: then an idle class that nothing else tells of is
  // somebody's choice.
  void releaseUnmarked(Pid pid, bool isCertain = true);
  // For one that is nobody's: it was born while this program ran, has an I/O priority of its own, and runs on
  // no other processors than what is slowed.
  bool isStray(Pid pid, std::uint64_t startTicks);

  // The mark of the process: of its main thread, or of any other when the main thread cannot carry one.
  // Absent for a process that has none or cannot be read.
  std::optional<ThreadMark> mark(Pid pid) const;
  // Whether the process is in the band; absent when it cannot be read.
  std::optional<bool> isIn(Pid pid) const;
  // The same as `mark` after a look at every thread: what a process shows that was cut off in the middle of a
  // change.
  std::optional<ThreadMark> anyMark(Pid pid) const;

 private:
  enum class Outcome {
    done,
    gone,
    untouchable, // real-time
    refused
  };
  struct Entered {
    Outcome outcome = Outcome::refused;
    bool slowedByClass = false;
  };
  // A thread at the moment at which it had been put back and may have been in the middle of a fork.
  struct Doubt {
    ThreadActivity then;
    std::chrono::steady_clock::time_point since; // it has used no processor time
    std::uint64_t cpuTicks = 0;                  // when it last had used some
  };
  struct Departure {
    bool keepSession = false;
    bool isSlowedAgain = false;   // or has been, in part, before it was refused
    std::map<Pid, Doubt> doubts;  // by thread
    std::uint64_t startTicks = 0; // of the process, whose number may be another one's later
  };

  Entered enterThread(Pid tid, const Plan& plan, bool isNew, bool isInDoubt);
  // True when the thread is out, or gone; absent when it has no mark.
  std::optional<bool> leaveThread(Pid tid, Departure& departure, bool isSlowedAgain);
  enum class GivenBack { something, nothing, refused, gone };
  GivenBack giveBack(Pid tid, const ThreadMark& mark);
  bool releaseThread(Pid tid, bool isCertain); // true when it had something of this program's
  bool isStray(Pid tid);
  bool wasBornClean(Pid tid) const;
  bool mayBeForking(Pid tid, std::map<Pid, Doubt>& doubts);
  bool isKnown(Pid tid, std::map<Pid, Doubt>& doubts) const;
  Change setMark(Pid tid, const ThreadMark& mark, int before);
  bool mayNarrow(Pid tid);
  bool isOurNarrowing(Pid tid); // where it may run is where this program has put it, now or earlier
  bool isBehindGroup(Pid tid) const;
  std::optional<ThreadMark> markBehindRealTime(Pid pid) const;

  std::optional<ThreadMark> threadMark(Pid tid) const;

  Kernel& m_kernel;
  std::string m_onlineText;
  EfficiencySet m_efficiency;
  NarrowedSets m_narrowed;
  bool m_mayRaise;            // CAP_SYS_NICE where it counts
  std::uint64_t m_beganTicks; // what was born later was never put back by anybody else
  bool m_keepsBits = false;   // this kernel was seen to keep all bits of a mark
  std::map<Pid, Departure> m_departing;
};

} // namespace vantle
