// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <memory>
#include <optional>

namespace vantle {

// The system's own judgement of how short memory is.
class MemoryPressureEvents {
 public:
  class Source {
   public:
    virtual ~Source() = default;
  };

  virtual ~MemoryPressureEvents() = default;

  // Calls the handler on the main loop at each warning (false) and each critical (true) event, until the
  // source is destroyed. There is no event for the return to normal. Null when the system has no such events.
  virtual std::unique_ptr<Source> watch(std::function<void(bool isCritical)> handler) = 0;

  // The level in the kernel's numbers: 1 normal, 2 warning, 4 critical; absent when it cannot be read.
  virtual std::optional<int> level() const = 0;
};

} // namespace vantle
