// SPDX-License-Identifier: MIT
#pragma once

#include "platform/shared/EventLoop.h"
#include "settings/ports/AppChooser.h"

namespace vantle {

// The system's dialog for opening files, of which only apps can be picked. It holds up whoever runs it,
// though not the main loop.
class OpenPanel final : public AppChooser {
 public:
  explicit OpenPanel(EventLoop& loop) : m_loop(loop) {} // which outlives every choice

  std::unique_ptr<Registration> choose(std::function<void(const std::string& path)> picked) override;

 private:
  EventLoop& m_loop;
};

} // namespace vantle
