// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ProcessIdentity.h"

#include <functional>
#include <memory>
#include <vector>

namespace vantle {

// Processes that have told the system that they are games, or that somebody has told it of.
class RegisteredGames {
 public:
  // Follows the registrations as long as it lives.
  class Source {
   public:
    virtual ~Source() = default;

    // Those that are known by now and not withdrawn, a bounded number, in no order. Each was a process of
    // this user's when it was told of; it may have ended since. Never waits.
    virtual std::vector<ProcessIdentity> processes() const = 0;
  };

  virtual ~RegisteredGames() = default;

  // Calls the handler on the main loop, never within this call, after `processes` has changed: once a second
  // at most, however often it does. Nobody is asked for anything without a source. Null when the system has
  // no such registrations.
  virtual std::unique_ptr<Source> watch(std::function<void()> changed) = 0;
};

} // namespace vantle
