// SPDX-License-Identifier: MIT
#include "platform/linux/windows/DesktopProbe.h"

#include "platform/linux/windows/sway/SwayWindows.h"
#include "platform/linux/windows/x11/X11Windows.h"

#include <cstdlib>
#include <optional>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestStart{200}; // of the program, with all that it asks the desktop
constexpr std::chrono::milliseconds longestTry{100};   // of that, for finding out which desktop it is

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::string socketOf(const SessionNames& names) {
  const bool isPath = names.waylandDisplay.starts_with('/');
  return isPath || names.waylandDisplay.empty() ? names.waylandDisplay
                                                : names.runtimeFolder + "/" + names.waylandDisplay;
}

} // namespace

SessionNames SessionNames::fromEnvironment() {
  return {variable("DISPLAY"), variable("WAYLAND_DISPLAY"), variable("SWAYSOCK"),
          variable("XDG_RUNTIME_DIR")};
}

DesktopProbe::DesktopProbe(EventLoop& loop, const Kernel& kernel, SessionNames names)
    : m_loop(loop), m_kernel(kernel), m_names(std::move(names)) {}

DesktopSource DesktopProbe::find() const {
  const std::optional<LocalPeer> compositor = connectToOwn(socketOf(m_names));
  if (compositor) {
    if (auto windows = sway(*compositor))
      return {"sway (native apps and X11 apps)", std::move(windows), FrontRule::settled,
              longestStart - longestTry};
  }
  std::string name = "no desktop (nothing is seen)";
  if (!m_names.display.empty()) name = compositor ? "Xwayland (X11 apps only)" : "X11";
  return {std::move(name), std::make_unique<X11Windows>(m_loop, m_names.display),
          compositor ? FrontRule::settled : FrontRule::asTold, longestStart};
}

// Where a program was started by the bus, the environment may lack the name; sway makes it from its process.
std::unique_ptr<DesktopWindows> DesktopProbe::sway(const LocalPeer& compositor) const {
  const std::string usual = m_names.runtimeFolder + "/sway-ipc." + std::to_string(::geteuid()) + "." +
                            std::to_string(compositor.pid) + ".sock";
  for (const std::string& path : {m_names.swaySocket, usual}) {
    if (auto windows = swayAt(path, compositor)) return windows;
  }
  return nullptr;
}

// Of another desktop's sway, say one that this desktop's own is a window of, nothing is wanted: the person
// sees this one.
std::unique_ptr<DesktopWindows> DesktopProbe::swayAt(const std::string& path,
                                                     const LocalPeer& compositor) const {
  std::optional<LocalPeer> peer = connectToOwn(path);
  if (!peer || peer->pid != compositor.pid) return nullptr;
  auto windows = std::make_unique<SwayWindows>(m_loop, m_kernel, std::move(peer->socket));
  windows->settle(longestTry);
  return windows->isPlausible() ? std::move(windows) : nullptr;
}

} // namespace vantle
