// SPDX-License-Identifier: MIT
#include "panel/PanelController.h"

#include "panel/PanelWindow.h"

#include <utility>

namespace vantle {
namespace {

constexpr int keepTime = 10'000;   // milliseconds
constexpr int sameClickTime = 400; // milliseconds

} // namespace

PanelController::PanelController(Engine& engine, AppSettings& settings, std::function<void()> openSettings,
                                 std::function<void()> quit)
    : m_engine(engine), m_settings(settings), m_openSettings(std::move(openSettings)),
      m_quit(std::move(quit)) {
  m_discard.setSingleShot(true);
  m_discard.setInterval(keepTime);
  connect(&m_discard, &QTimer::timeout, this, &PanelController::discard);
}

PanelController::~PanelController() = default;

bool PanelController::isOpen() const { return m_window && m_window->isVisible(); }

void PanelController::ensureWindow() {
  m_discard.stop();
  if (m_window) return;
  prepareRendering();
  m_window = std::make_unique<PanelWindow>(
      m_engine, m_settings, PanelModel::Actions{[this] { openSettings(); }, [this] { quit(); }});
  connect(m_window.get(), &PanelWindow::shown, this, &PanelController::opened);
  connect(m_window.get(), &PanelWindow::dismissed, this, [this] {
    m_sinceClosed.start();
    m_discard.start();
    emit closed();
  });
}

void PanelController::show(std::optional<QRect> anchor) {
  ensureWindow();
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

void PanelController::openSettings() {
  close();
  m_openSettings();
}

void PanelController::quit() {
  close();
  m_quit();
}

void PanelController::discard() {
  if (isOpen()) return;
  m_window.reset();
  giveMemoryBack();
  emit discarded();
}

} // namespace vantle
