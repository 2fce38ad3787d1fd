// SPDX-License-Identifier: MIT
#pragma once

#include "panel/ports/Activation.h"
#include "platform/shared/EventLoop.h"

namespace vantle {

// Whoever opens the program while it runs, from Finder, Launchpad or a search, wants to see it: the system
// starts no second copy but tells the one that there is. It asks for the end in a way that the toolkit hears.
class Reopening final : public Activation {
 public:
  explicit Reopening(EventLoop& loop) : m_loop(loop) {} // which outlives what is registered

  std::unique_ptr<Registration> answer(Actions actions) override;

 private:
  EventLoop& m_loop;
};

} // namespace vantle
