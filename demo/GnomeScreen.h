// SPDX-License-Identifier: MIT
#pragma once

#include "demo/Screen.h"
#include "tests/support/GnomeDesktop.h"

namespace vantle::demo {

// GNOME's shell, with Vantle's extension in it.
class GnomeScreen final : public Screen {
 public:
  GnomeScreen();

  desktop::PrivateSession& session() override { return m_desktop; }
  std::string about() override;
  std::vector<std::string> terminal(const std::string& name, const std::string& geometry,
                                    const std::string& script) override;
  bool hasNativeApps() override { return true; }
  void settle(const desktop::Program& program, const Place& place) override;
  std::string wayOf(const desktop::Program& program) override;
  void ask(const desktop::Program& program) override;
  void activate(const desktop::Program& program) override;
  bool screenshot(const std::filesystem::path& png) override { return m_desktop.screenshot(png); }

 protected:
  Point inPanel() const override { return {1420, 41}; }
  std::uint32_t pixel(Point point) override { return m_desktop.pixel(point.x, point.y); }
  bool askForPanel() override;
  // A press on the bar, where nothing is; then the window gets its shadow back.
  void sendPanelAway() override;

 private:
  desktop::GnomeDesktop m_desktop;
  const desktop::Program* m_inFront = nullptr; // who was asked for last
};

} // namespace vantle::demo
