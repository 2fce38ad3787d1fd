// SPDX-License-Identifier: MIT
#pragma once

#include "demo/Screen.h"
#include "tests/support/KWinDesktop.h"

namespace vantle::demo {

// Plasma's compositor alone: it has no bar of its own.
class KWinScreen final : public ShellScreen {
 public:
  KWinScreen();

  std::string about() override;
  std::vector<std::string> terminal(const std::string& name, const std::string& geometry,
                                    const std::string& script) override;
  void settle(const desktop::Program& program, const Place& place) override;
  std::string whyNoPictures() override {
    return m_desktop.takesPictures() ? "" : "this KWin takes none without a graphics device";
  }
  bool screenshot(const std::filesystem::path& png) override { return m_desktop.screenshot(png); }

 protected:
  desktop::ShellDesktop& shell() override { return m_desktop; }
  std::string isOfX11() const override;

 private:
  desktop::KWinDesktop m_desktop;
};

} // namespace vantle::demo
