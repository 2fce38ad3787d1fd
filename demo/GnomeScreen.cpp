// SPDX-License-Identifier: MIT
#include "demo/GnomeScreen.h"

namespace vantle::demo {

namespace {

constexpr const char* extension = "vantle@halvo.com";

} // namespace

GnomeScreen::GnomeScreen() : m_desktop(VANTLE_GNOME_EXTENSIONS, extension, 1600, 1200) {}

std::string GnomeScreen::about() {
  return "the desktop: " + versionOf("gnome-shell") + ", with Vantle's extension in it";
}

std::vector<std::string> GnomeScreen::terminal(const std::string& name, const std::string& geometry,
                                               const std::string& script) {
  return nativeTerminal(name, geometry, script);
}

void GnomeScreen::settle(const desktop::Program& program, const Place& place) {
  const std::string own = "w.pid === " + std::to_string(program.pid());
  desktop::require("a window", [&] { return m_desktop.windowsWhere(own) > 0; });
  const std::string at = std::to_string(place.x) + ", " + std::to_string(place.y);
  const std::string moved = place.width > 0
                                ? "move_resize_frame(false, " + at + ", " + std::to_string(place.width) +
                                      ", " + std::to_string(place.height) + ")"
                                : "move_frame(false, " + at + ")";
  m_desktop.script("all.filter(w => " + own + ").forEach(w => w.window." + moved + ");");
}

std::string GnomeScreen::isOfX11() const { return "w.window.get_client_type() === 1"; }

void GnomeScreen::sendPanelAway() {
  m_desktop.click(500, 12);
  ShellScreen::sendPanelAway();
}

bool GnomeScreen::askForPanel() {
  m_desktop.click(m_desktop.iconInBar(extension), 12);
  return true;
}

} // namespace vantle::demo
