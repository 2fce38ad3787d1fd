// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/apps/DesktopEntries.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/linux/windows/DesktopWindows.h"
#include "platform/linux/windows/WindowProcesses.h"
#include "platform/linux/windows/toplevels/ClientSearch.h"
#include "platform/linux/windows/toplevels/ToplevelConnection.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace vantle {

// The windows of a compositor that tells everybody of them by zwlr_foreign_toplevel_manager_v1: what they are
// called and which one is in front, and no word of their processes. So a new window has the compositor's
// clients looked up (ClientSearch), and it belongs to
//
//   - the one client whom its app id fits, as desktop files, units, sandboxes and programs' names tell, else
//   - the one client that has come lately and has no window yet.
//
// Where two fit nobody is believed: the window has no owner then. One of which nobody can be the owner but an
// X client, or anybody but nobody knows who while there are X clients, counts as an X window, of which the X
// server knows more.
class ToplevelWindows final : public DesktopWindows {
 public:
  struct Options {
    std::shared_ptr<DesktopEntries> installed;
    std::string display = {}; // the X server's, e.g. ":1"; empty for none
  };

  // On a socket that is connected to the compositor and does not block. The kernel and the loop outlive it.
  ToplevelWindows(EventLoop& loop, const Kernel& kernel, Descriptor socket, Options options);

  // Waits until the compositor has said whether it tells of windows at all.
  void learnWhetherOffered(std::chrono::steady_clock::time_point end);
  bool isOffered() const { return m_connection.isOpen() && m_connection.offersToplevels(); }

  void start(Handlers handlers) override { m_handlers = std::move(handlers); }
  const std::map<WindowId, WindowFacts>& known() const override { return m_known; }
  WindowId active() const override { return m_connection.active(); }
  bool requestClose(const WindowFacts& window) override {
    return window.canBeClosed && m_connection.requestClose(window.id);
  }
  bool canBringToFront(const WindowFacts& /*window*/) const override {
    return m_connection.canBringToFront();
  }
  bool requestFront(const WindowFacts& window) override { return m_connection.requestFront(window.id); }
  void forget(Pid pid) override;
  bool settle(std::chrono::milliseconds limit) override;

 private:
  class Matching;
  using Clients = std::vector<const DesktopClient*>;

  void follow();
  void prepareSearch();
  void search();
  void takeClients(const std::vector<DesktopClient>& clients);
  std::vector<WindowFacts*> takeFitting(const std::vector<DesktopClient>& clients);
  void meet(const std::vector<DesktopClient>& clients);
  bool isNewcomer(const DesktopClient& client) const;
  Clients newcomersAmong(const std::vector<DesktopClient>& clients) const;
  void own(WindowFacts& window, const DesktopClient& client);
  void tell();
  void lose();

  EventLoop& m_loop;
  const Kernel& m_kernel;
  Options m_options;
  Handlers m_handlers;
  std::map<WindowId, WindowFacts> m_known; // those that were looked for
  std::set<WindowId> m_orphans;            // whose process has ended: they are nobody's any more
  WindowProcesses m_processes;
  WindowId m_active = 0; // as it was told last
  bool m_isChanged = false;

  bool m_isStale = true;       // there is a window that nobody has looked for
  std::set<WindowId> m_sought; // windows that were there when the search began
  // The connections of the last look, and until when each is that of a newcomer.
  std::map<SocketInode, std::chrono::steady_clock::time_point> m_met;
  bool m_hasLooked = false;
  std::chrono::steady_clock::time_point m_searchBegan;
  std::chrono::steady_clock::time_point m_searchEnded;
  std::unique_ptr<ClientSearch> m_search;    // null while none is under way
  std::unique_ptr<EventLoop::Handle> m_turn; // set while a search waits for its turn
  ToplevelConnection m_connection;
};

} // namespace vantle
