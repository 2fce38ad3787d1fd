// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/apps/DesktopEntries.h"
#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/kernel/Kernel.h"
#include "platform/linux/sockets/LocalSocket.h"
#include "platform/linux/windows/DesktopWindows.h"
#include "platform/linux/windows/x11/X11Windows.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace vantle {

// Where a session's parts say that they are; empty where they say nothing.
struct SessionNames {
  std::string display = {};        // DISPLAY
  std::string waylandDisplay = {}; // WAYLAND_DISPLAY: a path, or a name in the runtime folder
  std::string swaySocket = {};     // SWAYSOCK
  std::string hyprland = {};       // HYPRLAND_INSTANCE_SIGNATURE: the name of its folder
  std::string niriSocket = {};     // NIRI_SOCKET
  std::string runtimeFolder = {};  // XDG_RUNTIME_DIR

  static SessionNames fromEnvironment();
};

// Where the windows of this desktop are seen.
struct DesktopSource {
  // For a person to read. It changes when another source takes the place of the one that was found.
  std::shared_ptr<const std::string> name;
  std::unique_ptr<DesktopWindows> windows;
  FrontRule front = FrontRule::asTold;
  std::chrono::milliseconds longestStart{200}; // that is left of it for the windows that are there already
};

// Chooses the source of windows by trying: what the environment names may be stale, and what a desktop is
// called says nothing of what it can tell.
class DesktopProbe {
 public:
  // What is handed in outlives what is found. Two programs at a time need feeds of different names.
  DesktopProbe(EventLoop& loop, const Kernel& kernel, BusConnection& sessionBus, SessionNames names,
               std::string feed, std::shared_ptr<DesktopEntries> installed);

  // Always a source, even if it shows nothing. Waits for an answer 100 ms at most.
  DesktopSource find() const;

 private:
  using Time = std::chrono::steady_clock::time_point;

  std::unique_ptr<DesktopWindows> sway(const LocalPeer& compositor) const;
  std::unique_ptr<DesktopWindows> hyprland(const LocalPeer& compositor) const;
  std::unique_ptr<DesktopWindows> niri(const LocalPeer& compositor) const;
  std::unique_ptr<DesktopWindows> toplevels(LocalPeer compositor, Time end) const;
  // Which of them somebody on the session bus has; none when it gives no answer.
  std::set<std::string> ownedOf(const std::vector<std::string>& names, Time end) const;
  DesktopSource plasma() const;
  DesktopSource gnome(bool hasExtension) const;
  std::unique_ptr<DesktopWindows> withXClients(std::unique_ptr<DesktopWindows> windows) const;
  std::function<std::unique_ptr<DesktopWindows>()> xServer(X11Windows::Closing closing) const;

  EventLoop& m_loop;
  const Kernel& m_kernel;
  BusConnection& m_bus;
  SessionNames m_names;
  std::string m_feed;
  std::shared_ptr<DesktopEntries> m_installed;
};

} // namespace vantle
