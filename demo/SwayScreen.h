// SPDX-License-Identifier: MIT
#pragma once

#include "demo/Screen.h"
#include "tests/support/SwayDesktop.h"

namespace vantle::demo {

// With sway's own bar and its tray.
class SwayScreen final : public PixelScreen {
 public:
  SwayScreen();

  desktop::PrivateSession& session() override { return m_desktop; }
  std::string about() override;
  std::vector<std::string> terminal(const std::string& name, const std::string& geometry,
                                    const std::string& script) override;
  bool hasNativeApps() override { return true; }
  void settle(const desktop::Program& program, const Place& place) override;
  std::string wayOf(const desktop::Program& program) override;
  void ask(const desktop::Program& program) override;
  void activate(const desktop::Program& program) override { m_desktop.focus(program); }
  bool screenshot(const std::filesystem::path& png) override { return m_desktop.screenshot(png); }

 protected:
  Point inPanel() const override { return {1420, 44}; } // under the bar
  std::uint32_t pixel(Point point) override;
  bool askForPanel() override; // by a click on the icon
  // By one on the empty desktop. The game would not survive the virtual keyboards that come and go.
  void sendPanelAway() override { m_desktop.click(1580, 1180); }

 private:
  desktop::SwayDesktop m_desktop;
};

} // namespace vantle::demo
