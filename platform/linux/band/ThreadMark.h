// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>

namespace vantle {

// What one thread was before it entered the band, kept by the kernel itself in the thread's I/O priority.
//
// The I/O class "idle" has 13 data bits to which Linux gives no meaning: it stores them, hands them out and
// passes them on to children. So a mark needs no file, dies with its thread, and any later process can read
// it. Layout of the 16 bits, highest first:
//
//   15..13  3, the class "idle" itself
//   12.. 9  1011 in the band, 1101 out of it again but not done with: patterns that tell our mark from
//   somebody
//           else's `ionice -c3`, which leaves them 0
//    8.. 7  the thread's own I/O class: 0 none, 1 real-time, 2 best effort, 3 idle
//    6.. 4  the thread's own I/O level, 0 to 7
//    3.. 2  scheduling class, see below
//        1  its affinity was narrowed from all processors to the efficiency set
//        0  the weight of its session (autogroup) was lowered from 0 to 19
struct ThreadMark {
  enum class SchedulingClass : std::uint8_t { unchanged = 0, wasOther = 1, wasBatch = 2 };

  std::uint8_t ioClass = 0;
  std::uint8_t ioLevel = 0;
  SchedulingClass schedulingClass = SchedulingClass::unchanged;
  bool affinityNarrowed = false;
  bool sessionLowered = false;
  // Out of the band. What the mark remembers may still have to be put back: the weight of the session whose
  // turn has not come, or what a fork that was under way hands out together with this mark.
  bool isLeaving = false;

  // What an I/O priority says; absent when it is not a mark of ours.
  static std::optional<ThreadMark> decode(int ioPriority);
  // A mark that remembers this I/O priority; absent when the value cannot be remembered exactly (it carries
  // hints, which only storage benchmarks use).
  static std::optional<ThreadMark> remembering(int ioPriority);

  int encode() const;
  int originalIoPriority() const;

  friend bool operator==(const ThreadMark&, const ThreadMark&) = default;
};

} // namespace vantle
