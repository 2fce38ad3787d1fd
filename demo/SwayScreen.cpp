// SPDX-License-Identifier: MIT
#include "demo/SwayScreen.h"

namespace vantle::demo {

namespace {

// The middle of the one icon in the tray, which is at the right end of the bar.
constexpr int iconX = 1600 - 16;
constexpr int iconY = 15;

desktop::SwayDesktop::Options options() {
  desktop::SwayDesktop::Options chosen;
  chosen.screen = "1600x1200";
  chosen.configuration = "bar {\n position top\n height 30\n tray_output *\n}\n"
                         "for_window [title=\".*\"] floating enable\n";
  return chosen;
}

std::string criterion(const desktop::SwayDesktop::Window& window) {
  return "[con_id=" + std::to_string(window.id) + "] ";
}

} // namespace

SwayScreen::SwayScreen() : m_desktop(options()) { m_desktop.addPointer(); }

std::string SwayScreen::about() { return "the desktop: " + versionOf("sway") + ", with its bar"; }

std::vector<std::string> SwayScreen::terminal(const std::string& name, const std::string& geometry,
                                              const std::string& script) {
  return nativeTerminal(name, geometry, script);
}

void SwayScreen::settle(const desktop::Program& program, const Place& place) {
  const std::string window = criterion(m_desktop.waitForWindow(program.pid()));
  if (place.width > 0) {
    m_desktop.command(window + "resize set " + std::to_string(place.width) + " px " +
                      std::to_string(place.height) + " px");
  }
  m_desktop.command(window + "move absolute position " + std::to_string(place.x) + " px " +
                    std::to_string(place.y) + " px");
}

std::string SwayScreen::wayOf(const desktop::Program& program) {
  return m_desktop.waitForWindow(program.pid()).isX11 ? ", through Xwayland" : ", a native app";
}

void SwayScreen::ask(const desktop::Program& program) {
  m_desktop.command(criterion(m_desktop.waitForWindow(program.pid())) + "focus");
}

std::uint32_t SwayScreen::pixel(Point point) {
  return m_desktop.picture(std::to_string(point.x) + "," + std::to_string(point.y) + " 1x1").pixel(0, 0);
}

bool SwayScreen::askForPanel() {
  // It comes into the tray some time after both are there.
  const auto isThere = [this] {
    const desktop::Picture icon =
        m_desktop.picture(std::to_string(iconX - 12) + "," + std::to_string(iconY - 12) + " 24x24");
    for (int y = 0; y < icon.height(); ++y) {
      for (int x = 0; x < icon.width(); ++x) {
        if (icon.pixel(x, y) != icon.pixel(0, 0)) return true;
      }
    }
    return false;
  };
  if (!desktop::waitUntil(isThere)) return false;
  m_desktop.click(iconX, iconY);
  return true;
}

} // namespace vantle::demo
