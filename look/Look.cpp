// SPDX-License-Identifier: MIT
#include "look/Look.h"

#include "look/LookEngine.h"

#include <QEvent>
#include <QGuiApplication>
#include <algorithm>

namespace vantle {
namespace {

bool applicationIsDark() {
  const QPalette palette = QGuiApplication::palette();
  return palette.color(QPalette::Window).lightness() < palette.color(QPalette::WindowText).lightness();
}

} // namespace

Look::Look(AppSettings& settings) : m_settings(settings), m_dark(applicationIsDark()) {
  m_accentObserver = settings.accent.observe([this] { emit changed(); });
  qApp->installEventFilter(this);
}

Look* Look::create(QQmlEngine* engine, QJSEngine*) {
  return new Look(static_cast<LookEngine*>(engine)->settings()); // the engine owns it
}

QColor Look::faded(QColor color, double opacity) const {
  color.setAlphaF(static_cast<float>(opacity));
  return color;
}

QColor Look::accentNamed(const QString& value) const {
  const auto* theme = std::find_if(allAccentThemes.begin(), allAccentThemes.end(), [&](AccentTheme each) {
    return value == QLatin1String(rawValue(each).data(), static_cast<qsizetype>(rawValue(each).size()));
  });
  return accentColor(theme == allAccentThemes.end() ? AccentTheme::blue : *theme);
}

bool Look::eventFilter(QObject* watched, QEvent* event) {
  if (watched == qApp && event->type() == QEvent::ApplicationPaletteChange && m_dark != applicationIsDark()) {
    m_dark = !m_dark;
    emit changed();
  }
  return QObject::eventFilter(watched, event);
}

} // namespace vantle
