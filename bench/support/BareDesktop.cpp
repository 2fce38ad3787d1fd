// SPDX-License-Identifier: MIT
#include "bench/support/BareDesktop.h"

#include "tests/support/Picture.h"
#include "tests/support/Props.h"
#include "tests/support/SwayDesktop.h"
#include "tests/support/VirtualDesktop.h"

namespace vantle::bench {

namespace {

constexpr int apps = 3;

class BareX11 final : public BareDesktop {
 public:
  BareX11() {
    m_desktop.setEnvironment("QT_QPA_PLATFORM", "xcb");
    for (int app = 0; app < apps; ++app) {
      const desktop::Program& window = m_desktop.launch({desktop::testWindow()});
      m_desktop.windows().minimise(m_desktop.waitForWindow(window.pid()).id);
    }
  }

  desktop::PrivateSession& session() override { return m_desktop; }
  std::uint32_t pixel(int x, int y) override { return m_desktop.windows().pixel(x, y); }
  void press(const std::string& key) override { m_desktop.run({"xdotool", "key", key}); }
  void closeWindow(const std::string& title) override { m_desktop.run({"wmctrl", "-c", title}); }

 private:
  desktop::VirtualDesktop m_desktop;
};

class BareSway final : public BareDesktop {
 public:
  BareSway() {
    m_desktop.addKeyboard();
    for (int app = 0; app < apps; ++app) {
      m_desktop.waitForWindow(m_desktop.launch({desktop::testWindow()}).pid());
    }
    m_desktop.command("workspace another");
  }

  desktop::PrivateSession& session() override { return m_desktop; }
  // A program that takes a picture: tens of milliseconds.
  std::uint32_t pixel(int x, int y) override {
    return m_desktop.picture(std::to_string(x) + "," + std::to_string(y) + " 1x1").pixel(0, 0);
  }
  void press(const std::string& key) override { m_desktop.press(key); }
  void closeWindow(const std::string& title) override { m_desktop.command("[title=\"" + title + "\"] kill"); }

 private:
  desktop::SwayDesktop m_desktop;
};

} // namespace

std::unique_ptr<BareDesktop> BareDesktop::make(const std::string& kind) {
  if (kind == "x11") return std::make_unique<BareX11>();
  if (kind == "sway") return std::make_unique<BareSway>();
  return {};
}

} // namespace vantle::bench
