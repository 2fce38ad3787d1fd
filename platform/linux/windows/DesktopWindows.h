// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/windows/WindowKind.h"
#include "platform/posix/Descriptor.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>

namespace vantle {

// The source's own number for a window, never 0. A source whose desktop names windows by text numbers them
// itself.
using WindowId = std::uint64_t;

// What is known of one window that the desktop manages. Its texts are bytes as the window has them.
struct WindowFacts {
  WindowId id = 0;
  Pid pid = 0; // of the process that opened it; 0 when it cannot be told or is not of this machine
  // A pidfd, opened while the window was there: never of a later process. One for all windows of a process;
  // null without a process, or when there are too few descriptors left.
  std::shared_ptr<Descriptor> process = {};
  WindowKind kind = WindowKind::ordinary;
  std::string instance = {};      // first part of WM_CLASS, of X windows
  std::string className = {};     // second part of it
  std::string applicationId = {}; // _GTK_APPLICATION_ID of X windows, the app id of others
  bool canBeClosed = false;       // by asking it
  bool isX11 = false;             // an X client's on a Wayland desktop, as far as the source says so
  bool operator==(const WindowFacts&) const = default;
};

// What a desktop's word on the front is worth.
enum class FrontRule {
  asTold, // an X11 desktop's: it counts at once, also for this program's own windows
  // A Wayland desktop's. Between two windows it says that nothing is in front (seen for 11 ms at most), so
  // that counts only when it has lasted. And this program's open panel is an ordinary window to it: what was
  // in front before stays so.
  settled
};

// What a desktop says of its windows: which there are, and which one is in front. It knows nothing of apps.
//
// A window whose process cannot be told for certain has none. A process is told only when a descriptor for it
// was opened first and the desktop has named it for that window once more since: a number that has gone to
// another process meanwhile is not believed.
//
// All calls, and those to the handlers, are made on the main loop; nothing here waits for the desktop, but
// for `settle`.
class DesktopWindows {
 public:
  struct Handlers {
    std::function<void()> changed = [] {}; // any of what the functions below answer
    // What was known is known no more, though it may all run on; what follows is as at the start.
    std::function<void()> startedOver = [] {};
    // The desktop is over, or there was none: nothing is known any more, and nothing more will be.
    std::function<void()> lost = [] {};
  };

  virtual ~DesktopWindows() = default;

  // To be called once, before the main loop's next turn.
  virtual void start(Handlers handlers) = 0;

  // Those whose facts are all there, by their ids; the order says nothing else.
  virtual const std::map<WindowId, WindowFacts>& known() const = 0;
  // The one in front, 0 for none. It may be told of before it is known, or never become known.
  virtual WindowId active() const = 0;
  bool isActiveKnown() const { return active() == 0 || known().contains(active()); }

  // Asks the desktop to close it politely; false when that cannot be asked.
  virtual bool requestClose(const WindowFacts& window) = 0;
  // Whether the desktop can be asked to bring it to the front, which not every one can, and asking so; false
  // when that cannot be asked.
  virtual bool canBringToFront(const WindowFacts& /*window*/) const { return false; }
  virtual bool requestFront(const WindowFacts& /*window*/) { return false; }
  // The process has ended: what is known of its windows counts no more.
  virtual void forget(Pid pid) = 0;
  // Handles what the desktop answers until nothing more is asked or the time is up; true for the former. Only
  // for the start, when there is nobody yet who could be called at a bad moment.
  virtual bool settle(std::chrono::milliseconds limit) = 0;
};

} // namespace vantle
