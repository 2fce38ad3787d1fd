// SPDX-License-Identifier: MIT
#pragma once

#include "demo/Screen.h"
#include "tests/support/GnomeDesktop.h"

namespace vantle::demo {

// GNOME's shell, with Vantle's extension in it.
class GnomeScreen final : public ShellScreen {
 public:
  GnomeScreen();

  std::string about() override;
  std::vector<std::string> terminal(const std::string& name, const std::string& geometry,
                                    const std::string& script) override;
  void settle(const desktop::Program& program, const Place& place) override;
  bool screenshot(const std::filesystem::path& png) override { return m_desktop.screenshot(png); }

 protected:
  desktop::ShellDesktop& shell() override { return m_desktop; }
  std::string isOfX11() const override;
  bool askForPanel() override;
  // A press on the bar, where nothing is; then the window gets its shadow back.
  void sendPanelAway() override;

 private:
  desktop::GnomeDesktop m_desktop;
};

} // namespace vantle::demo
