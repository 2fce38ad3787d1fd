// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/process/ClaimSearch.h"

#include <chrono>
#include <optional>
#include <poll.h>
#include <vector>

namespace vantle {

// Who plays something, as a sound server knows it: the process at the other end of its socket, or else what
// the client says of itself.
struct Player {
  Pid pid = 0; // 0: only the claim tells
  ProcessClaim claim;
};

// A question to one sound server, which many can be waiting for at the same time. A server that let a
// question's time pass is not waited for again until it has said something: then it works again, and the next
// question gets all of its time.
class SoundQuestion {
 public:
  virtual ~SoundQuestion() = default;

  virtual void ask() = 0;                  // anew; never waits
  virtual bool isAsking() const = 0;       // an answer is worth waiting for
  virtual std::vector<pollfd> watch() = 0; // what it waits for
  virtual void advance() = 0;              // takes in what has arrived
  virtual void giveUp() = 0;               // the time is over
  // Everybody who is heard; absent when there is no server, or no whole answer.
  virtual std::optional<std::vector<Player>> players() const = 0;
};

// Asks all of them at once and waits for them together.
void askTogether(const std::vector<SoundQuestion*>& questions,
                 std::chrono::steady_clock::time_point deadline);

} // namespace vantle
