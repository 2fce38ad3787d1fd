// SPDX-License-Identifier: MIT
#include "settings/SettingsWindowController.h"

#include <chrono>

namespace vantle {

namespace {
constexpr std::chrono::seconds keepTime{5};
}

SettingsWindowController::SettingsWindowController(const SettingsParts& parts, const WindowParts& windowParts)
    : KeptWindow(windowParts, keepTime), m_parts(parts) {}

void SettingsWindowController::show() {
  keep();
  m_window->show();
}

void SettingsWindowController::make(LookEngine& engine) {
  m_window = std::make_unique<SettingsWindow>(engine, m_parts, m_state, [this] {
    m_state = m_window->state();
    releaseLater();
  });
}

// A window keeps the scale and the font that it was made with.
void SettingsWindowController::renew(LookEngine& engine) {
  const bool wasShown = m_window->isShown();
  m_state = m_window->state();
  m_window.reset();
  make(engine);
  if (wasShown) m_window->show();
}

void SettingsWindowController::destroy() { m_window.reset(); }

} // namespace vantle
