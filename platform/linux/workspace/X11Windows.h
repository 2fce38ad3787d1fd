// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/workspace/WindowKind.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/posix/Descriptor.h"
#include "platform/shared/EventLoop.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <span>
#include <string>
#include <vector>

namespace vantle {

// What is known of one managed window. Its texts are bytes as the window has them.
struct WindowFacts {
  std::uint32_t id = 0;
  Pid pid = 0; // of the process that opened it; 0 when it cannot be told or is not of this machine
  // A pidfd, opened while the window was there: never of a later process. One for all windows of a process;
  // null without a process, or when there are too few descriptors left.
  std::shared_ptr<Descriptor> process;
  WindowKind kind = WindowKind::ordinary;
  std::string instance;      // WM_CLASS
  std::string className;     // WM_CLASS
  std::string applicationId; // _GTK_APPLICATION_ID
  bool canBeClosed = false;  // takes part in WM_DELETE_WINDOW
};

// The windows that the window manager manages and the one that is in front. Follows the root window's
// properties and the end of each window, whose number may go to a window of another process the moment it is
// free; nothing is asked while nothing changes. A few windows are asked about at a time, the one in front
// first, however many there are.
class X11Windows {
 public:
  struct Handlers {
    std::function<void()> changed; // any of what the functions below answer
    std::function<void()> lost;    // the X server went away, or there was none
  };

  X11Windows(EventLoop& loop, const std::string& display, Handlers handlers);

  // Those whose facts have all arrived, oldest first as far as the ids tell.
  const std::map<std::uint32_t, WindowFacts>& known() const { return m_known; }
  std::uint32_t active() const { return m_active; } // 0 for none
  bool isActiveKnown() const { return m_active == 0 || m_known.contains(m_active); }

  // Asks the window manager to close it politely; false when that cannot be asked.
  bool requestClose(const WindowFacts& window);
  // The process has ended: what is known of its windows counts no more.
  void forget(Pid pid);
  bool settle(std::chrono::milliseconds limit) { return m_connection.settle(limit); }

 private:
  // All that is asked for by name. The window types come last and in order.
  enum Atom : std::size_t {
    clientList,
    activeWindow,
    closeWindow,
    wmPid,
    windowType,
    gtkApplicationId,
    protocols,
    deleteWindow,
    firstType
  };
  static constexpr std::size_t typeCount = 14;
  struct Draft;
  using OnProperty = std::function<void(const void* bytes, std::size_t size)>;

  void internAtoms();
  void start();
  void handle(const xcb_generic_event_t& event);
  void readClientList();
  void takeClientList(const std::vector<std::uint32_t>& list);
  void forgetWindow(std::uint32_t window);
  void readActiveWindow();
  void reconcile();
  bool isWanted(std::uint32_t window) const;
  void askMissing();
  void endTurn();
  std::shared_ptr<Descriptor> processOf(Pid pid, bool isInFront);
  void readOwner(std::uint32_t window);
  void readFacts(const std::shared_ptr<Draft>& draft);
  void finish(const std::shared_ptr<Draft>& draft);
  void getProperty(std::uint32_t window, xcb_atom_t property, std::uint32_t longestBytes, OnProperty arrived);
  void lose();

  Handlers m_handlers;
  std::array<xcb_atom_t, firstType + typeCount> m_atoms{};
  std::set<std::uint32_t> m_list;
  std::uint32_t m_active = 0;
  std::map<std::uint32_t, WindowFacts> m_known;
  std::map<std::uint32_t, std::shared_ptr<Draft>> m_drafts;
  std::set<std::uint32_t> m_missing; // to be asked about
  std::map<Pid, std::weak_ptr<Descriptor>> m_processes;
  bool m_isChanged = false; // and not told yet
  bool m_isListAsked = false;
  bool m_isListStale = false;
  bool m_isActiveAsked = false;
  bool m_isActiveStale = false;
  X11Connection m_connection;
};

// Whose window it is: as the X server says, else as the window claims when that can be believed, that is when
// it says that it was opened on this machine and the process is one of this user's. 0 for nobody.
Pid ownerOf(Pid serverSays, Pid windowClaims, const std::string& windowMachine);

} // namespace vantle
