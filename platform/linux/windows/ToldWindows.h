// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/windows/DesktopWindows.h"
#include "platform/linux/windows/WindowReadings.h"

#include <map>
#include <utility>

namespace vantle {

// The windows of a desktop whose socket tells of changes by events, and of all windows when it is asked: what
// is known of them, for sources that only have to understand the socket.
class ToldWindows : public DesktopWindows {
 public:
  void start(Handlers handlers) override { m_handlers = std::move(handlers); }
  const std::map<WindowId, WindowFacts>& known() const override { return m_readings.known(); }
  WindowId active() const override { return m_readings.active(); }
  void forget(Pid pid) override {
    m_readings.forget(pid);
    endTurn();
  }

 protected:
  // The kernel outlives it.
  explicit ToldWindows(const Kernel& kernel) : m_readings(kernel, [this] { return askForReading(); }) {}

  // Asks for all windows, which come to `readings().take`; false when they cannot be asked for. Called by
  // `endTurn` only.
  virtual bool askForReading() = 0;

  WindowReadings& readings() { return m_readings; }
  // To be called after whatever the socket told, and once at the beginning.
  void endTurn() {
    if (m_readings.endTurn()) m_handlers.changed();
  }
  void lose() {
    m_readings.clear();
    m_handlers.lost();
  }

 private:
  Handlers m_handlers;
  WindowReadings m_readings;
};

} // namespace vantle
