// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/band/BandLedger.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <unordered_map>
#include <vector>

namespace vantle {

// Lowers and gives back the weight of whole sessions. The kernel lets an ordinary user make one such change
// in 100 ms, all users together, and answers EAGAIN to the others; those wait in a queue here, without
// holding up the main loop: first what gets faster, of that first what the person waits for, and the heaviest
// first in both directions.
//
// A turn goes to whoever asks first when it comes. Others who ask as well are met at irregular moments, so
// that nobody is always the second; and where turns keep being lost and something is to be given back, this
// program asks without a pause for a while, as somebody who wants to keep an app slowed may do the same.
class SessionWeights {
 public:
  static constexpr int own = 0;      // the only weight that is ever changed: another was chosen by somebody
  static constexpr int lowered = 19; // the smallest
  enum class Outcome { done, queued, impossible };
  struct Load {
    int running = 0; // processes that are on a processor or wait for one
    std::uint64_t cpuTicks = 0;
    // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 reads the comparison's 0 as a pointer
    friend auto operator<=>(const Load&, const Load&) = default;
  };

  SessionWeights(EventLoop& loop, BandLedger& ledger, Kernel& kernel)
      : m_loop(loop), m_ledger(ledger), m_kernel(kernel),
        m_random(static_cast<std::minstd_rand::result_type>(kernel.self())) {}

  // Called with the processes whose session came back late, so that their marks can go.
  void onRaised(std::function<void(const std::vector<Pid>&)> raised) { m_raised = std::move(raised); }

  // Puts a session into the queue; `apply` then does what can be done at once.
  void lower(const Autogroup& session, const std::vector<Pid>& members, const Load& load);
  // Gives a session its own weight back, at once or as soon as the kernel allows it.
  Outcome raise(const std::vector<Pid>& members);
  // The person waits for this process: its session goes before all others, if it is on its way back.
  void hasten(Pid pid);
  void apply();
  // The same with every session that this program, or one before it, has lowered and not given back, whatever
  // its processes remember.
  void raiseAll();

  // Whether the process stands in a session that was lowered and not given back.
  bool owes(Pid pid) const;
  bool isRaising() const { return owed() > 0; } // something waits for its own weight
  std::size_t owed() const;                     // how many sessions

  // Waits until the queue is empty, at most this long; true when it is.
  bool settle(std::chrono::milliseconds limit);

 private:
  struct Order {
    long autogroup = 0;
    int from = 0;
    int to = 0;
    Load load;
    std::vector<Pid> members;
    int wish = 0; // the latest is the highest; 0: nobody waits for it
  };

  using Duration = std::chrono::steady_clock::duration;

  Outcome write(const Order& order, std::chrono::milliseconds insisting);
  // Does what can be done now; how long to wait before the next try, absent when nothing is left.
  std::optional<Duration> advance();
  Duration waitAfterRefusal(bool hasInsisted);
  void wakeAfter(Duration wait);
  std::vector<Order>::iterator find(long autogroup);
  std::unordered_map<long, std::vector<Pid>> membersOfLedger() const;

  EventLoop& m_loop;
  BandLedger& m_ledger;
  Kernel& m_kernel;
  std::function<void(const std::vector<Pid>&)> m_raised;
  std::vector<Order> m_queue;
  std::map<long, Load> m_loads; // of the sessions that were lowered
  int m_wishes = 0;
  std::minstd_rand m_random;
  std::chrono::steady_clock::time_point m_nextTurn{}; // not before, after this program's own last one
  int m_rivalry = 0;                                  // grows with every turn that somebody else took
  std::unique_ptr<EventLoop::Handle> m_timer;
};

} // namespace vantle
