// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "platform/linux/windows/DesktopWindows.h"
#include "platform/linux/windows/WindowProcesses.h"
#include "platform/linux/x11/X11Connection.h"
#include "platform/shared/EventLoop.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// The windows that the window manager manages and the one that is in front. Follows the root window's
// properties and the end of each window, whose number may go to a window of another process the moment it is
// free; nothing is asked while nothing changes. A few windows are asked about at a time, the one in front
// first, however many there are. Some say who they are only after they were shown, so each is listened to at
// first, and no longer than it takes to say that: others change their title all the time.
class X11Windows final : public DesktopWindows {
 public:
  // Who is asked to close a window: whoever manages it, or the client itself where nobody would hand it on.
  enum class Closing { byManager, byClient };

  static constexpr int mostNotices = 100; // of changed properties that a window is listened to for

  // Connects in the background. An empty display is the one in DISPLAY.
  X11Windows(EventLoop& loop, const std::string& display, Closing closing = Closing::byManager);

  void start(Handlers handlers) override { m_handlers = std::move(handlers); }
  const std::map<WindowId, WindowFacts>& known() const override { return m_known; }
  WindowId active() const override { return m_active; }
  bool requestClose(const WindowFacts& window) override;
  bool canBringToFront(const WindowFacts& /*window*/) const override {
    return m_closing == Closing::byManager; // which there is, then
  }
  bool requestFront(const WindowFacts& window) override;
  void forget(Pid pid) override;
  bool settle(std::chrono::milliseconds limit) override { return m_connection.settle(limit); }

 private:
  // All that is asked for by name. The window types come last and in order.
  enum Atom : std::size_t {
    clientList,
    activeWindow,
    closeWindow,
    currentDesktop,
    windowDesktop,
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
  void readAll();
  void handle(const xcb_generic_event_t& event);
  void readClientList();
  void takeClientList(const std::vector<std::uint32_t>& list);
  void forgetWindow(std::uint32_t window);
  void readActiveWindow();
  void reconcile();
  bool isWanted(WindowId window) const;
  void askMissing();
  void endTurn();
  void listenTo(std::uint32_t window);
  void hear(std::uint32_t window, xcb_atom_t property);
  void readOwner(std::uint32_t window);
  void readAgain(std::uint32_t window, xcb_atom_t name);
  void readFacts(const std::shared_ptr<Draft>& draft);
  void finish(const std::shared_ptr<Draft>& draft);
  void getProperty(std::uint32_t window, xcb_atom_t property, std::uint32_t longestBytes, OnProperty arrived);
  void askManager(xcb_window_t about, xcb_atom_t type, std::array<std::uint32_t, 2> data);
  void send(xcb_window_t about, xcb_atom_t type, std::array<std::uint32_t, 2> data, xcb_window_t to,
            std::uint32_t mask);
  void lose();

  Handlers m_handlers;
  std::array<xcb_atom_t, firstType + typeCount> m_atoms{};
  std::set<std::uint32_t> m_list;
  std::uint32_t m_active = 0;
  std::map<WindowId, WindowFacts> m_known;
  std::map<std::uint32_t, std::shared_ptr<Draft>> m_drafts;
  std::set<std::uint32_t> m_missing;      // to be asked about
  std::map<std::uint32_t, int> m_notices; // of changed properties, by window
  WindowProcesses m_processes;
  bool m_isChanged = false; // and not told yet
  bool m_isListAsked = false;
  bool m_isListStale = false;
  bool m_isActiveAsked = false;
  bool m_isActiveStale = false;
  Closing m_closing;
  X11Connection m_connection;
};

// Whose window it is: as the X server says, else as the window claims when that can be believed, that is when
// it says that it was opened on this machine and the process is one of this user's. 0 for nobody.
Pid ownerOf(Pid serverSays, Pid windowClaims, const std::string& windowMachine);

} // namespace vantle
