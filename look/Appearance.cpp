// SPDX-License-Identifier: MIT
#include "look/Appearance.h"

#include "look/Colors.h"

#include <QGuiApplication>

namespace vantle {

Appearance::Appearance(ColorScheme& desktop)
    : m_desktop(desktop), m_observer(desktop.observe([this] { update(); })) {}

void Appearance::apply(AppearanceMode mode) {
  m_mode = mode;
  update();
}

void Appearance::update() {
  const bool dark =
      m_mode == AppearanceMode::dark || (m_mode == AppearanceMode::system && m_desktop.isDark());
  QGuiApplication::setPalette(paletteFor(dark));
}

} // namespace vantle
