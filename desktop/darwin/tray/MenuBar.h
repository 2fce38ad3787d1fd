// SPDX-License-Identifier: MIT
#pragma once

#include "panel/ports/Tray.h"
#include "platform/shared/EventLoop.h"

namespace vantle {

// The right half of the menu bar. A click is for the panel; the menu opens by the other button, or with the
// control key.
class MenuBar final : public Tray {
 public:
  explicit MenuBar(EventLoop& loop) : m_loop(loop) {} // which outlives every item

  std::unique_ptr<TrayIcon> add(TrayActions actions) override;

 private:
  EventLoop& m_loop;
};

} // namespace vantle
