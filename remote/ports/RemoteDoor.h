// SPDX-License-Identifier: MIT
#pragma once

#include "status/Status.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

// Where other programs of this user ask the running copy. Nobody else gets anything: no other user, and no
// program in a sandbox.
class RemoteDoor {
 public:
  // A sentence for a person says why not.
  using Refusal = std::optional<std::string>;
  // What is asked for, called on the main loop.
  struct Answers {
    std::function<Status()> status;
    std::function<Refusal(const std::string& target, std::vector<AppStatus>& apps)> why;
    std::function<Refusal(const std::string& target)> boost;
    std::function<void()> off;
    std::function<Refusal(std::chrono::seconds)> pause;
    std::function<std::string(bool withNames)> report;
  };

  // Open as long as it lives.
  class Open {
   public:
    virtual ~Open() = default;
    // Something may have changed: whoever follows is told what did, if anything.
    virtual void tell() = 0;
  };

  virtual ~RemoteDoor() = default;

  // One at a time.
  [[nodiscard]] virtual std::unique_ptr<Open> open(Answers answers) = 0;
};

} // namespace vantle
