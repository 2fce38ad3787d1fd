// SPDX-License-Identifier: MIT
#include "panel/IconMenu.h"

#include "panel/IconMenuWindow.h"

#include <chrono>
#include <utility>

namespace vantle {
namespace {

constexpr std::chrono::seconds keepTime{10};
constexpr int sameClickTime = 400; // milliseconds

} // namespace

IconMenu::IconMenu(const WindowParts& parts, PanelSurface& surface)
    : KeptWindow(parts, keepTime), m_surface(surface) {}

IconMenu::~IconMenu() = default;

QQuickWindow* IconMenu::window() const { return m_window.get(); }

// As with the panel, the press has closed it by the time the tray tells of the click.
void IconMenu::toggle(const QRect& icon, std::vector<TrayEntry> entries) {
  if (m_window && m_window->isVisible()) return close();
  if (m_sinceClosed.isValid() && m_sinceClosed.elapsed() < sameClickTime) return;
  keep();
  m_window->open(icon, std::move(entries));
  if (m_window->isVisible()) emit opened();
}

void IconMenu::close() {
  if (m_window && m_window->isVisible()) m_window->dismiss();
}

void IconMenu::make(LookEngine& engine) {
  m_window = std::make_unique<IconMenuWindow>(engine, m_surface);
  connect(m_window.get(), &IconMenuWindow::dismissed, this, [this] {
    m_sinceClosed.start();
    releaseLater();
  });
}

void IconMenu::destroy() { m_window.reset(); }

void IconMenu::renew(LookEngine& engine) {
  close();
  m_window.reset();
  make(engine);
}

} // namespace vantle
