// SPDX-License-Identifier: MIT
#include "desktop/linux/wayland/ToolkitChoice.h"

#include "desktop/linux/wayland/LayerShell.h"
#include "desktop/linux/wayland/WaylandQueue.h"
#include "platform/linux/sockets/LocalSocket.h"

#include <QByteArray>
#include <QtGlobal>
#include <chrono>

namespace vantle {

namespace {

constexpr const char* pluginVariable = "QT_QPA_PLATFORM";
constexpr std::chrono::milliseconds longestLook{200};

void noteLayerShell(void* found, wl_registry* /*registry*/, std::uint32_t /*name*/, const char* interface,
                    std::uint32_t /*version*/) {
  if (LayerShell::isInterface(interface)) *static_cast<bool*>(found) = true;
}
void ignoreRemoval(void* /*found*/, wl_registry* /*registry*/, std::uint32_t /*name*/) {}
constexpr wl_registry_listener looking{.global = noteLayerShell, .global_remove = ignoreRemoval};

// A compositor that refuses or does not answer has none.
bool hasLayerShell() {
  // The library's own way of connecting would wait for ever for a compositor that accepts nobody.
  Descriptor socket = connectTo(
      waylandSocket(qgetenv("WAYLAND_DISPLAY").toStdString(), qgetenv("XDG_RUNTIME_DIR").toStdString()));
  if (!socket) return false;
  wl_display* const display = wl_display_connect_to_fd(socket.release());
  if (display == nullptr) return false;
  bool found = false;
  {
    const WaylandQueue queue(display);
    wl_registry* const registry = queue.makeRegistry();
    wl_registry_add_listener(registry, &looking, &found);
    queue.settle(longestLook);
    wl_registry_destroy(registry);
  }
  wl_display_disconnect(display);
  return found;
}

// Programs that are started from here choose for themselves.
class Choice final : public Registration {
 public:
  explicit Choice(const char* plugins) { qputenv(pluginVariable, plugins); }
  ~Choice() override { qunsetenv(pluginVariable); }
  Choice(const Choice&) = delete;
  Choice& operator=(const Choice&) = delete;
};

// Heeded whenever a window is shown, and so left in the environment. The first has the toolkit give a window
// that asks for it no role. The second keeps it from asking the graphics driver whether it could draw frames,
// which costs 10 MB: compositors with a layer shell draw them themselves.
void prepareForLayers() {
  qputenv("QT_WAYLAND_USE_BYPASSWINDOWMANAGERHINT", "1");
  qputenv("QT_WAYLAND_DISABLE_WINDOWDECORATION", "1");
}

} // namespace

// Where windows can choose no place the X server behind most compositors still lets them. The second of each
// is for a machine on which the first is not installed.
std::unique_ptr<Registration> chooseToolkitPlugin() {
  const QByteArray chosen = qgetenv(pluginVariable);
  if (!qEnvironmentVariableIsSet("WAYLAND_DISPLAY")) return {};
  if (!chosen.isEmpty() && !chosen.startsWith("wayland")) return {};
  const bool hasLayers = hasLayerShell();
  if (hasLayers) prepareForLayers();
  if (!chosen.isEmpty()) return {};
  const bool hasXServer = !qEnvironmentVariableIsEmpty("DISPLAY");
  if (!hasXServer) return std::make_unique<Choice>("wayland");
  return std::make_unique<Choice>(hasLayers ? "wayland;xcb" : "xcb;wayland");
}

} // namespace vantle
