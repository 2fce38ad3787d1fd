// SPDX-License-Identifier: MIT
#pragma once

#include "demo/Screen.h"
#include "tests/support/KWinDesktop.h"

namespace vantle::demo {

// Plasma's compositor alone: it has no bar of its own.
class KWinScreen final : public Screen {
 public:
  KWinScreen();

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
  Point inPanel() const override { return {1420, 14}; }
  std::uint32_t pixel(Point point) override { return m_desktop.picture().pixel(point.x, point.y); }
  // There is no key to press here, but it goes when something else takes the front.
  void sendPanelAway() override { activate(*m_inFront); }

 private:
  desktop::KWinDesktop m_desktop;
  const desktop::Program* m_inFront = nullptr; // who was asked for last
};

} // namespace vantle::demo
