// SPDX-License-Identifier: MIT
#include "look/Appearance.h"

#include "look/Colors.h"

#include <QGuiApplication>

namespace vantle {

Appearance::Appearance() {
  QObject::connect(&m_desktop, &DesktopScheme::changed, &m_desktop, [this] { update(); });
}

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
