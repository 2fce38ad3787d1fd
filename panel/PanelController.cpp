// SPDX-License-Identifier: MIT
#include "panel/PanelController.h"

#include "panel/PanelWindow.h"

#include <chrono>
#include <utility>

namespace vantle {
namespace {

constexpr std::chrono::seconds keepTime{10};
constexpr int sameClickTime = 400; // milliseconds

} // namespace

PanelController::PanelController(Engine& engine, const WindowParts& parts, PanelSurface& surface,
                                 std::function<void()> openSettings, std::function<void()> quit)
    : KeptWindow(parts, keepTime), m_engine(engine), m_surface(surface),
      m_openSettings(std::move(openSettings)), m_quit(std::move(quit)), m_menu(parts, surface) {}

PanelController::~PanelController() = default;

bool PanelController::isOpen() const { return m_window && m_window->isVisible(); }

void PanelController::make(LookEngine& engine) {
  m_window = std::make_unique<PanelWindow>(
      engine, m_engine, m_surface,
      PanelModel::Actions{[this] { openSettings(); }, [this] { quit(); }, [this] { close(); }});
  connect(m_window.get(), &PanelWindow::shown, this, &PanelController::opened);
  connect(m_window.get(), &PanelWindow::dismissed, this, [this] {
    m_sinceClosed.start();
    releaseLater();
    emit closed();
  });
}

void PanelController::destroy() { m_window.reset(); }

void PanelController::renew(LookEngine& engine) {
  close();
  m_window.reset();
  make(engine);
}

void PanelController::show(std::optional<QRect> anchor) {
  m_menu.close();
  keep();
  m_window->open(anchor);
}

// The click on the tray that should close the panel has often closed it already, as a click elsewhere, by the
// time the tray tells of it: it must not open it again.
void PanelController::toggle(std::optional<QRect> anchor) {
  const bool sameClick = m_sinceClosed.isValid() && m_sinceClosed.elapsed() < sameClickTime;
  if (isOpen()) {
    close();
  } else if (!sameClick) {
    show(anchor);
  }
}

void PanelController::close() {
  if (m_window) m_window->dismiss();
}

// One at a time has the pointer and the keyboard.
void PanelController::toggleMenu(const QRect& icon, std::vector<TrayEntry> entries) {
  close();
  m_menu.toggle(icon, std::move(entries));
}

void PanelController::leaveEngine() {
  if (m_window) m_window->model().disappear();
}

void PanelController::openSettings() {
  close();
  m_openSettings();
}

void PanelController::quit() {
  close();
  m_quit();
}

} // namespace vantle
