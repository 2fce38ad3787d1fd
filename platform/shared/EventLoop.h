// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>
#include <memory>

namespace vantle {

// The main loop as a platform needs it, so that no platform part knows which toolkit runs it. Everything is
// called back on the one thread that runs the loop.
class EventLoop {
 public:
  // Ends the watch or the timer when it is destroyed; may be destroyed inside its own callback.
  class Handle {
   public:
    virtual ~Handle() = default;
  };

  enum class Readiness {
    readable,
    writable,
    priority // POLLPRI: what pressure triggers use
  };

  virtual ~EventLoop() = default;

  // Called as long as the descriptor is ready (level triggered); also on its errors and hang-up.
  [[nodiscard]] virtual std::unique_ptr<Handle> watch(int descriptor, Readiness readiness,
                                                      std::function<void()> ready) = 0;
  // Called once, after at least the given time.
  [[nodiscard]] virtual std::unique_ptr<Handle> after(std::chrono::milliseconds delay,
                                                      std::function<void()> due) = 0;
};

} // namespace vantle
