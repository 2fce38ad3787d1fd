// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"
#include "platform/OwnedMachine.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vantle {

// The main thread, for another one that watches over it.
class MainThread {
 public:
  virtual ~MainThread() = default;

  // Starts a thread that hears none of the signals that others are to hear.
  virtual void watchFrom(std::function<void()> watch) = 0;

  // On that thread: until there is news of what follows, somebody has woken it, or the time is over. Absent
  // is for ever.
  virtual void await(std::optional<std::chrono::milliseconds> limit) = 0;
  // Whether a signal has asked the program to end, and whether the main loop has begun to answer it.
  virtual bool isAskedToEnd() const = 0;
  virtual bool isAnswering() const = 0;

  // From any thread.
  virtual void wakeWatcher() = 0;

  // It runs none of the program's code any more. Waits for that, but a second at most: while it is in the
  // kernel in such a way that nothing reaches it, it changes nothing, and when it comes out it is stopped
  // first.
  virtual void freeze() = 0;
  // Runs this program once more in a process of its own, with this argument, until its end or for this time:
  // the main thread may have been stopped with any lock in its hands.
  virtual void runProgram(const char* argument, std::chrono::milliseconds limit) = 0;
  // On the standard error stream, past any lock of that kind too.
  virtual void say(std::string_view line) = 0;
};

// Where `app/` meets the system that the program was built for; it knows no other header of that.
class Platform {
 public:
  // A source of each system defines it; the build chooses.
  static std::unique_ptr<Platform> ofThisSystem();

  virtual ~Platform() = default;

  // Allows this process as many descriptors as it may have at all. Once, before any other thread runs.
  virtual void raiseDescriptorLimit() = 0;
  // What is written where nobody reads any more is lost, and no longer the end of this process: the toolkit
  // complains when its desktop is gone, and the reader of that may be gone with it.
  virtual void outliveReaders() = 0;
  // Whether this process was started by one of this same program (MainThread::runProgram).
  virtual bool isStartedByItself() const = 0;
  // To be asked for on the main thread, once. From here on the signals that ask the program to end wait until
  // somebody hears them.
  virtual std::unique_ptr<MainThread> mainThread() = 0;
  // Has them call this on the main loop, also when they have arrived already; ends with what is returned.
  virtual std::unique_ptr<Registration> onAskedToEnd(EventLoop& loop, std::function<void()> handler) = 0;

  // A library may end the program past everything that runs at an orderly exit; the toolkit does when its
  // Wayland compositor is gone. Calls this before, on the thread that ends it, once, and in no process that
  // this one has forked; then the program ends with the library's status. As long as the registration lives.
  [[nodiscard]] virtual std::unique_ptr<Registration> onAbruptEnd(std::function<void()> lastDeed) = 0;

  // False when another copy of this user's runs. Otherwise none can, as long as this object is there.
  virtual bool becomeOnlyCopy() = 0;
  // One of the program's folders in which nothing is kept, as it is, or could be, somebody else's.
  virtual std::optional<std::string> foreignFolder() const = 0;

  // Why there is no desktop session to live in, for a person to read; absent when one is named. What only
  // seems to name one, and would have the toolkit look for it, is taken out of the environment.
  virtual std::optional<std::string> whyNoDesktop() = 0;
  // The same for one that is named and lets nobody in.
  virtual std::string whyNotReached() const = 0;

  // All of a machine; what is not there answers as absent. `program` is the path of what is to be opened at
  // login; `onDesktopLost` is called on the main loop when the desktop is over. The loop outlives the
  // machine.
  virtual std::unique_ptr<OwnedMachine> desktopMachine(EventLoop& loop, std::string program,
                                                       std::function<void()> onDesktopLost) = 0;
  // What it takes to put back what an earlier run left, with or without a desktop: the journal's files, the
  // processes and the band. Everything else is absent.
  virtual std::unique_ptr<OwnedMachine> recoveryMachine() = 0;
};

} // namespace vantle
