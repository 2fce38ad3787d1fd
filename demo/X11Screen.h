// SPDX-License-Identifier: MIT
#pragma once

#include "demo/Screen.h"
#include "tests/support/VirtualDesktop.h"

namespace vantle::demo {

class X11Screen final : public PixelScreen {
 public:
  desktop::PrivateSession& session() override { return m_desktop; }
  // The window manager finds a place for whoever asks for none.
  void settle(const desktop::Program& program, const Place& /*place*/) override {
    m_desktop.waitForWindow(program.pid());
  }
  void ask(const desktop::Program& program) override {
    m_desktop.windows().activate(m_desktop.waitForWindow(program.pid()).id);
  }
  void activate(const desktop::Program& program) override { m_desktop.activate(program); }
  bool screenshot(const std::filesystem::path& png) override { return m_desktop.screenshot(png); }

 protected:
  // It opens in the corner of the screen.
  Point inPanel() const override { return {1420, 10}; }
  std::uint32_t pixel(Point point) override { return m_desktop.windows().pixel(point.x, point.y); }
  void sendPanelAway() override { m_desktop.run({"xdotool", "key", "Escape"}); }

 private:
  desktop::VirtualDesktop m_desktop{desktop::VirtualDesktop::Options{.screen = "1600x1200x24"}};
};

} // namespace vantle::demo
