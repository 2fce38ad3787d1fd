// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/process/ClaimSearch.h"
#include "platform/posix/process/Question.h"

#include <optional>
#include <vector>

namespace vantle {

// Who plays something, as a sound server knows it: the process at the other end of its socket, or else what
// the client says of itself.
struct Player {
  Pid pid = 0; // 0: only the claim tells
  ProcessClaim claim;
};

// A question to one sound server. A server that let a question's time pass is not waited for again until it
// has said something: then it works again, and the next question gets all of its time.
class SoundQuestion : public Question {
 public:
  // Everybody who is heard; absent when there is no server, or no whole answer.
  virtual std::optional<std::vector<Player>> players() const = 0;
};

} // namespace vantle
