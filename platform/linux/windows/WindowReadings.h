// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/Kernel.h"
#include "platform/linux/windows/DesktopWindows.h"
#include "platform/linux/windows/WindowProcesses.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <vector>

namespace vantle {

// A window as a desktop tells of it: facts without a process, and the process it names.
struct ToldWindow {
  WindowFacts facts;
  std::int64_t toldPid = 0; // whatever number it says, 0 for none
};

// The windows of a desktop that tells of changes by events, and of all its windows when it is asked: what it
// has said so far, one reading at a time, and nothing asked while nothing changes. A window is known once its
// process was named again in a reading that was asked for after the process had its descriptor.
class WindowReadings {
 public:
  // `ask` asks for a reading, which comes to `take`; false when it cannot be asked. The kernel outlives it.
  WindowReadings(const Kernel& kernel, std::function<bool()> ask) : m_kernel(kernel), m_ask(std::move(ask)) {}

  const std::map<WindowId, WindowFacts>& known() const { return m_known; }
  WindowId active() const { return m_active; }

  // What an event tells.
  void setActive(WindowId window);
  void tell(const ToldWindow& told) { consider(told, 0); }
  void remove(WindowId window);
  void expire() { m_isStale = true; } // something has happened that only a reading tells

  // The reading that was asked for; absent when nobody understands it, which takes nothing away. Of two
  // windows of the same number the first counts.
  void take(const std::optional<std::vector<ToldWindow>>& windows);
  // Asks if there is something to ask; true when anything has changed since the last time.
  bool endTurn();

  void forget(Pid pid); // see DesktopWindows
  void clear();         // the desktop is over

 private:
  // A window whose process the desktop has to name once more.
  struct Draft {
    WindowOwner owner;
    std::uint64_t reading = 0; // the first that counts
  };

  void consider(const ToldWindow& told, std::uint64_t reading);
  void meet(const ToldWindow& told);
  void keep(const ToldWindow& told, Pid pid, std::shared_ptr<Descriptor> process);

  const Kernel& m_kernel;
  std::function<bool()> m_ask;
  std::map<WindowId, WindowFacts> m_known;
  std::map<WindowId, Draft> m_drafts;
  // What was opened by a process that has ended, and is still there: that number is somebody else's by now.
  std::map<WindowId, std::int64_t> m_orphans;
  WindowId m_active = 0;
  WindowProcesses m_processes;
  std::uint64_t m_reading = 0; // the last that was asked for
  bool m_isReading = false;    // and not answered yet
  bool m_isStale = true;
  bool m_isChanged = false; // and not told yet
};

} // namespace vantle
