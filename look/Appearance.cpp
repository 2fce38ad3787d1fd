// SPDX-License-Identifier: MIT
#include "look/Appearance.h"

#include "look/Colors.h"

#include <QGuiApplication>
#include <optional>

namespace vantle {

Appearance::Appearance(ColorScheme& desktop)
    : m_desktop(desktop), m_observer(desktop.observe([this] { update(); })) {}

void Appearance::apply(AppearanceMode mode) {
  m_mode = mode;
  update();
}

void Appearance::update() {
  const bool followsDesktop = m_mode == AppearanceMode::system;
  m_desktop.draw(followsDesktop ? std::nullopt : std::optional(m_mode == AppearanceMode::dark));
  const bool dark = followsDesktop ? m_desktop.isDark() : m_mode == AppearanceMode::dark;
  QGuiApplication::setPalette(paletteFor(dark));
}

} // namespace vantle
