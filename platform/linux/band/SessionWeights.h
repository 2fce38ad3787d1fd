// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Pid.h"
#include "platform/linux/band/ProcessScan.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace vantle {

// One session's automatic task group, as /proc/PID/autogroup shows it.
struct Autogroup {
  long id = 0; // never used again for another session
  int nice = 0;

  static std::optional<Autogroup> parse(std::string_view text); // "/autogroup-16 nice 0"
};

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

  SessionWeights(EventLoop& loop, const ProcessFiles& files) : m_loop(loop), m_files(files) {}

  // Called with the processes whose session came back late, so that their marks can go.
  void onRaised(std::function<void(const std::vector<Pid>&)> raised) { m_raised = std::move(raised); }

  std::optional<Autogroup> read(Pid pid) const;
  // The session of a process that this user may weigh, now or after a wait; absent otherwise. Changes
  // nothing.
  std::optional<Autogroup> readWritable(Pid pid) const;

  // Puts a session into the queue; `apply` then does what can be done at once.
  void lower(const Autogroup& session, const std::vector<Pid>& members, const Load& load);
  // Gives a session its own weight back, at once or as soon as the kernel allows it.
  Outcome raise(const std::vector<Pid>& members);
  void apply();

  // Waits until the queue is empty, at most this long; true when it is.
  bool settle(std::chrono::milliseconds limit);

 private:
  struct Change {
    long autogroup = 0;
    int from = 0;
    int to = 0;
    Load load;
    std::vector<Pid> members;
  };

  Outcome write(const Change& change) const;
  std::vector<Change>::iterator find(long autogroup);

  EventLoop& m_loop;
  const ProcessFiles& m_files;
  std::function<void(const std::vector<Pid>&)> m_raised;
  std::vector<Change> m_queue;
  std::unique_ptr<EventLoop::Handle> m_timer;
};

} // namespace vantle
