// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/linux/windows/DesktopWindows.h"
#include "platform/linux/windows/WindowProcesses.h"
#include "platform/linux/windows/fed/FeedCaller.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>

namespace vantle {

// The windows of a desktop whose shell lets a script or an extension in, and nobody else ask: that one calls
// an object of this program's on the session bus. Object /com/halvo/vantle/desktop, interface
// com.halvo.vantle.DesktopFeed, of which all methods answer with nothing:
//
//   Ready(s edition)   It is there, and tells of all windows next. What was known before stays so until then.
//   Window(s id, i pid, s class, s instance, s appId, s kind, b isX11)
//                      A window that is new, or has changed. Its kind is "ordinary", "shell" or "passing".
//   Front(s id)        The window in front, perhaps one that is told of later; empty for none. The first one
//                      after `Ready` says that all windows have been told.
//   Gone(s id)
//   Stopped()          Nothing is told until the next `Ready`, as while the screen is locked: what is known
//                      stays so.
//   Left()             It was taken out. What is known stays so for a moment, in which it may be put in
//   again;
//                      then nothing is known until the next `Ready`.
//
// Everything on the bus could call it. Only the present owner of the shell's name is heard; who else calls is
// refused, and counted. The object's bus name says which copy of the program is fed: one at a time.
class FedWindows final : public DesktopWindows {
 public:
  struct Options {
    std::string shell;   // the name whose owner is heard, e.g. "org.kde.KWin"
    std::string ownName; // that this program takes
    // For which the shell may be away before the desktop counts as over, and its caller before it counts as
    // gone. A shell that crashes was seen back after 0.3 to 0.7 s, and within a second nothing may be slowed
    // any more.
    std::chrono::milliseconds longestAbsence{800};
    // For its own name, as long as somebody else has it: the caller comes by itself when it hears of it.
    // Otherwise the desktop counts as over then.
    bool waitsForName = false;
  };
  static constexpr const char* path = "/com/halvo/vantle/desktop";
  static constexpr const char* interface = "com.halvo.vantle.DesktopFeed";

  // All that is handed in outlives it.
  FedWindows(EventLoop& loop, const Kernel& kernel, BusConnection& sessionBus, Options options,
             std::unique_ptr<FeedCaller> caller);
  ~FedWindows() override;
  FedWindows(const FedWindows&) = delete;
  FedWindows& operator=(const FedWindows&) = delete;

  void start(Handlers handlers) override { m_handlers = std::move(handlers); }
  const std::map<WindowId, WindowFacts>& known() const override { return m_known; }
  WindowId active() const override { return m_active; }
  bool requestClose(const WindowFacts& window) override;
  bool canBringToFront(const WindowFacts& /*window*/) const override { return m_isFed; }
  bool requestFront(const WindowFacts& window) override;
  void forget(Pid pid) override;
  bool settle(std::chrono::milliseconds limit) override;

  // Whether all windows were told of, and are known with their processes, by a caller that has not gone
  // since.
  bool isComplete() const { return m_isComplete; }
  std::uint64_t refusedCalls() const { return m_refused; } // of strangers, and of no known form

 private:
  // A window as it was told of.
  struct Told {
    std::string name;  // the shell's
    WindowFacts facts; // without a process
    std::int64_t pid = 0;
    std::uint64_t listing = 0; // in which it was told of last
    bool isOrphan = false;     // that process has ended: its number is somebody else's by now
  };
  // A window whose process the shell has to stand by: with an answer to a question that was asked after the
  // descriptor was there, and before which it did not say that the window is gone.
  struct Draft {
    WindowOwner owner;
    std::uint64_t question = 0; // the first that counts
  };

  bool ask(BusMessage question, BusConnection::Reply answered); // of the bus itself
  void watchShell();
  void takeFirstOwner(sd_bus_message* reply);
  void watchOwnName();
  void takeOwnName(sd_bus_message* reply);
  void haveOwnName();
  void takeOwner(const std::string& owner);
  void meetShell();
  const char* take(sd_bus_message* call);
  void takeReady();
  bool takeWindow(sd_bus_message* call);
  bool takeFront(sd_bus_message* call);
  bool takeGone(sd_bus_message* call);
  bool takeKnownMethod(sd_bus_message* call);
  void takeLeft();
  void endListing();
  WindowId numberOf(const std::string& name);
  void setActive(const std::string& name);
  void remove(WindowId window);
  void meet(const Told& told);
  void keep(const Told& told, WindowOwner owner);
  void askAgain();
  void takeAnswer(bool isAnswered);
  void tell();
  void tellNow();
  void forgetAll();
  void lose();

  EventLoop& m_loop;
  const Kernel& m_kernel;
  BusConnection& m_bus;
  Options m_options;
  Handlers m_handlers;
  std::string m_owner;     // of the shell's name; empty for nobody
  bool m_hasName = false;  // its own
  bool m_isFed = false;    // the caller has said so, and not that it stops
  bool m_isListed = false; // and has told of all windows since
  bool m_isComplete = false;
  bool m_isLost = false;
  std::uint64_t m_listing = 0;
  std::uint64_t m_refused = 0;

  std::map<std::string, WindowId> m_numbers; // of all that were told of, and of the one in front
  WindowId m_lastNumber = 0;
  std::map<WindowId, Told> m_told;
  std::map<WindowId, Draft> m_drafts;
  std::map<WindowId, WindowFacts> m_known;
  std::string m_front; // the one in front by the shell's name; empty for none
  WindowId m_active = 0;
  WindowProcesses m_processes;
  std::uint64_t m_question = 0; // the last that was asked
  bool m_isAsking = false;      // and not answered yet

  std::unique_ptr<FeedCaller> m_caller;
  std::shared_ptr<const bool> m_life = std::make_shared<const bool>();
  std::unique_ptr<Registration> m_busLost;
  BusSlot m_object;
  BusSlot m_ownerChanges;
  BusSlot m_ownNameComes;
  std::unique_ptr<EventLoop::Handle> m_telling; // set while something has changed and was not told yet
  std::unique_ptr<EventLoop::Handle> m_absence; // set while the shell is away, or its caller
};

} // namespace vantle
