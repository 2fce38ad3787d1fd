// SPDX-License-Identifier: MIT
#include "platform/linux/windows/DesktopProbe.h"

#include "base/Names.h"
#include "platform/linux/bus/BusBatch.h"
#include "platform/linux/windows/FallbackWindows.h"
#include "platform/linux/windows/StandInWindows.h"
#include "platform/linux/windows/fed/FedWindows.h"
#include "platform/linux/windows/gnome/GnomeExtension.h"
#include "platform/linux/windows/hyprland/HyprlandWindows.h"
#include "platform/linux/windows/joined/JoinedWindows.h"
#include "platform/linux/windows/kwin/KWinScript.h"
#include "platform/linux/windows/niri/NiriWindows.h"
#include "platform/linux/windows/sway/SwayWindows.h"
#include "platform/linux/windows/toplevels/ToplevelWindows.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <system_error>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds longestStart{200}; // of the program, with all that it asks the desktop
constexpr std::chrono::milliseconds longestTry{100};   // of that, for finding out which desktop it is

constexpr const char* xwaylandOnly = "Xwayland (X11 apps only)";
constexpr const char* gnomeApps = "GNOME (native apps and X11 apps)";
constexpr const char* kwin = "org.kde.KWin"; // on the bus
constexpr const char* gnomeShell = "org.gnome.Shell";

std::string variable(const char* name) {
  const char* const value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::shared_ptr<std::string> named(std::string name) {
  return std::make_shared<std::string>(std::move(name));
}

// What finding out has taken is taken off the time for the windows.
DesktopSource onWayland(std::shared_ptr<const std::string> name, std::unique_ptr<DesktopWindows> windows) {
  return {std::move(name), std::move(windows), FrontRule::settled, longestStart - longestTry};
}

// The first at these sockets of the compositor's that may be what it is taken for. Of another desktop's, say
// one that this desktop's own is a window of, nothing is wanted: the person sees this one.
template <class Make> auto tried(const std::vector<std::string>& sockets, const LocalPeer& compositor,
                                 Make make) -> decltype(make(Descriptor(), std::string())) {
  for (const std::string& path : sockets) {
    std::optional<LocalPeer> peer = connectToOwn(path);
    if (!peer || peer->pid != compositor.pid) continue;
    auto windows = make(std::move(peer->socket), path);
    windows->settle(longestTry);
    if (windows->isPlausible()) return windows;
  }
  return nullptr;
}

// What is in a folder, some of it: the likely one first, if there is a name for it.
std::vector<std::string> firstNamesIn(const std::string& folder, const std::string& likely) {
  constexpr std::size_t most = 32;
  std::vector<std::string> names;
  if (!likely.empty()) names.push_back(likely);
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder, error), end;
       !error && entry != end && names.size() < most; entry.increment(error)) {
    names.push_back(entry->path().filename().string());
  }
  return names;
}

} // namespace

SessionNames SessionNames::fromEnvironment() {
  return {.display = variable("DISPLAY"),
          .waylandDisplay = variable("WAYLAND_DISPLAY"),
          .swaySocket = variable("SWAYSOCK"),
          .hyprland = variable("HYPRLAND_INSTANCE_SIGNATURE"),
          .niriSocket = variable("NIRI_SOCKET"),
          .runtimeFolder = variable("XDG_RUNTIME_DIR")};
}

DesktopProbe::DesktopProbe(EventLoop& loop, const Kernel& kernel, BusConnection& sessionBus,
                           SessionNames names, std::string feed, std::shared_ptr<DesktopEntries> installed)
    : m_loop(loop), m_kernel(kernel), m_bus(sessionBus), m_names(std::move(names)), m_feed(std::move(feed)),
      m_installed(std::move(installed)) {}

// Compositors answer at once. The bus is asked last, as it may hang, and no desktop that is found there tells
// of its windows itself.
DesktopSource DesktopProbe::find() const {
  const Time end = std::chrono::steady_clock::now() + longestTry;
  std::optional<LocalPeer> compositor =
      connectToOwn(waylandSocket(m_names.waylandDisplay, m_names.runtimeFolder));
  const bool isWayland = compositor.has_value();
  if (compositor) {
    if (auto windows = sway(*compositor))
      return onWayland(named("sway (native apps and X11 apps)"), std::move(windows));
    if (auto windows = hyprland(*compositor))
      return onWayland(named("Hyprland (native apps and X11 apps)"), std::move(windows));
    if (auto windows = niri(*compositor))
      return onWayland(named("niri (native apps and X11 apps)"), std::move(windows));
    if (auto windows = toplevels(std::move(*compositor), end - longestTry / 2))
      return onWayland(named("wlroots (X11 apps, and native apps where it is certain which they are)"),
                       std::move(windows));
    const std::set<std::string> shells = ownedOf({kwin, gnomeShell, names::gnomeExtension}, end);
    if (shells.contains(kwin)) return plasma();
    if (shells.contains(gnomeShell)) return gnome(shells.contains(names::gnomeExtension));
  }
  std::string name = "no desktop (nothing is seen)";
  if (!m_names.display.empty()) name = isWayland ? xwaylandOnly : "X11";
  return {named(std::move(name)), std::make_unique<X11Windows>(m_loop, m_names.display),
          isWayland ? FrontRule::settled : FrontRule::asTold, longestStart};
}

// Where a program was started by the bus, the environment may lack the name; sway makes it from its process.
std::unique_ptr<DesktopWindows> DesktopProbe::sway(const LocalPeer& compositor) const {
  const std::string usual = m_names.runtimeFolder + "/sway-ipc." + std::to_string(::geteuid()) + "." +
                            std::to_string(compositor.pid) + ".sock";
  return tried({m_names.swaySocket, usual}, compositor,
               [this](Descriptor socket, const std::string& /*path*/) {
                 return std::make_unique<SwayWindows>(m_loop, m_kernel, std::move(socket));
               });
}

// Of the folders of all its runs, dead ones too, one is this process's.
std::unique_ptr<DesktopWindows> DesktopProbe::hyprland(const LocalPeer& compositor) const {
  const std::string runs = m_names.runtimeFolder + "/hypr/";
  std::vector<std::string> sockets;
  for (const std::string& run : firstNamesIn(runs, m_names.hyprland)) {
    sockets.push_back(runs + run + "/" + HyprlandWindows::eventSocket);
  }
  auto windows = tried(sockets, compositor, [&](Descriptor socket, const std::string& path) {
    const std::string folder = path.substr(0, path.rfind('/') + 1);
    return std::make_unique<HyprlandWindows>(m_loop, m_kernel, std::move(socket),
                                             folder + HyprlandWindows::questionSocket, compositor.pid);
  });
  return windows ? withXClients(std::move(windows)) : nullptr;
}

std::unique_ptr<DesktopWindows> DesktopProbe::niri(const LocalPeer& compositor) const {
  const std::string usual = m_names.runtimeFolder + "/niri." + m_names.waylandDisplay + "." +
                            std::to_string(compositor.pid) + ".sock";
  auto windows =
      tried({m_names.niriSocket, usual}, compositor, [&](Descriptor socket, const std::string& path) {
        return std::make_unique<NiriWindows>(m_loop, m_kernel, std::move(socket), path, compositor.pid);
      });
  return windows ? withXClients(std::move(windows)) : nullptr;
}

// One that does not answer is not waited for: what it has to tell would be as late. The window managers of
// such compositors were seen to hand on no wish to close an X window (wlroots 0.15).
std::unique_ptr<DesktopWindows> DesktopProbe::toplevels(LocalPeer compositor, Time end) const {
  auto windows = std::make_unique<ToplevelWindows>(m_loop, m_kernel, std::move(compositor.socket),
                                                   ToplevelWindows::Options{m_installed, m_names.display});
  windows->learnWhetherOffered(end);
  if (!windows->isOffered()) return nullptr;
  return withXClients(std::move(windows));
}

std::set<std::string> DesktopProbe::ownedOf(const std::vector<std::string>& names, Time end) const {
  BusBatch batch(m_bus);
  std::vector<std::size_t> places;
  for (const std::string& name : names) {
    BusMessage question = m_bus.methodCall(
        {"org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "NameHasOwner"});
    if (!question || sd_bus_message_append(question.get(), "s", name.c_str()) < 0) return {};
    places.push_back(batch.add(std::move(question)));
  }
  if (!batch.wait(end)) return {};
  std::set<std::string> owned;
  for (std::size_t at = 0; at < names.size(); ++at) {
    sd_bus_message* const reply = batch.reply(places[at]);
    int hasOwner = 0;
    if (reply != nullptr && sd_bus_message_read(reply, "b", &hasOwner) > 0 && hasOwner != 0)
      owned.insert(names[at]);
  }
  return owned;
}

// Whether KWin takes and runs a script only that script's call tells. Until then there is nothing to see.
DesktopSource DesktopProbe::plasma() const {
  auto script = std::make_unique<KWinScript>(
      m_loop, m_bus, KWinScript::Place{.name = m_feed, .folder = m_names.runtimeFolder});
  auto fed = std::make_unique<FedWindows>(
      m_loop, m_kernel, m_bus, FedWindows::Options{.shell = kwin, .ownName = m_feed}, std::move(script));
  auto joined =
      std::make_unique<JoinedWindows>(m_loop, std::move(fed), xServer(X11Windows::Closing::byManager));
  const std::shared_ptr<std::string> name = named("Plasma (native apps and X11 apps)");
  auto windows = std::make_unique<FallbackWindows>(m_loop, std::move(joined),
                                                   [name, connect = xServer(X11Windows::Closing::byManager)] {
                                                     *name = xwaylandOnly;
                                                     return connect();
                                                   });
  return onWayland(name, std::move(windows));
}

// The extension may be put in, and taken out, at any time; until it calls there is the X server.
DesktopSource DesktopProbe::gnome(bool hasExtension) const {
  auto fed = std::make_unique<FedWindows>(
      m_loop, m_kernel, m_bus,
      FedWindows::Options{.shell = gnomeShell, .ownName = m_feed, .waitsForName = true},
      std::make_unique<GnomeExtension>(m_bus));
  const auto isComplete = [source = fed.get()] { return source->isComplete(); };
  const auto patience = hasExtension ? longestStart - longestTry : std::chrono::milliseconds(0);
  const std::shared_ptr<std::string> name = named(xwaylandOnly);
  auto windows =
      std::make_unique<StandInWindows>(m_loop, StandInWindows::Awaited{std::move(fed), isComplete, patience},
                                       xServer(X11Windows::Closing::byManager), [name](bool isStandIn) {
                                         *name = isStandIn ? xwaylandOnly : gnomeApps;
                                       });
  return onWayland(name, std::move(windows));
}

// Where the compositor's window manager hands no wish to close on.
std::unique_ptr<DesktopWindows> DesktopProbe::withXClients(std::unique_ptr<DesktopWindows> windows) const {
  return std::make_unique<JoinedWindows>(m_loop, std::move(windows), xServer(X11Windows::Closing::byClient));
}

std::function<std::unique_ptr<DesktopWindows>()> DesktopProbe::xServer(X11Windows::Closing closing) const {
  return [&loop = m_loop, display = m_names.display, closing] {
    return std::make_unique<X11Windows>(loop, display, closing);
  };
}

} // namespace vantle
