// SPDX-License-Identifier: MIT
#pragma once

#include "platform/shared/EventLoop.h"

namespace vantle {

// The platform's view of Qt's main loop.
class QtEventLoop final : public EventLoop {
 public:
  std::unique_ptr<Handle> watch(int descriptor, Readiness readiness, std::function<void()> ready) override;
  std::unique_ptr<Handle> after(std::chrono::milliseconds delay, std::function<void()> due) override;
};

} // namespace vantle
