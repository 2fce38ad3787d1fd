// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Pid.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vantle {

// Lowers and gives back the weight of whole sessions. The kernel lets an ordinary user make one such change
// in 100 ms, all users together, and answers EAGAIN to the others; those wait in a queue here, without
// holding up the main loop: first what gets faster, then the heaviest of what gets slower.
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

  SessionWeights(EventLoop& loop, Kernel& kernel) : m_loop(loop), m_kernel(kernel) {}

  // Called with the processes whose session came back late, so that their marks can go.
  void onRaised(std::function<void(const std::vector<Pid>&)> raised) { m_raised = std::move(raised); }

  // Puts a session into the queue; `apply` then does what can be done at once.
  void lower(const Autogroup& session, const std::vector<Pid>& members, const Load& load);
  // Gives a session its own weight back, at once or as soon as the kernel allows it.
  Outcome raise(const std::vector<Pid>& members);
  void apply();

  bool isRaising() const; // something waits for its own weight

  // Waits until the queue is empty, at most this long; true when it is.
  bool settle(std::chrono::milliseconds limit);

 private:
  struct Order {
    long autogroup = 0;
    int from = 0;
    int to = 0;
    Load load;
    std::vector<Pid> members;
  };

  Outcome write(const Order& order);
  std::vector<Order>::iterator find(long autogroup);

  EventLoop& m_loop;
  Kernel& m_kernel;
  std::function<void(const std::vector<Pid>&)> m_raised;
  std::vector<Order> m_queue;
  std::unique_ptr<EventLoop::Handle> m_timer;
};

} // namespace vantle
