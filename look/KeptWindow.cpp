// SPDX-License-Identifier: MIT
#include "look/KeptWindow.h"

#include "look/LookEngine.h"

#include <QEvent>
#include <QGuiApplication>
#include <QScreen>

namespace vantle {

namespace {

// Between two screens there is none.
qreal currentScale() {
  const QScreen* const screen = QGuiApplication::primaryScreen();
  return screen == nullptr ? 1 : screen->devicePixelRatio();
}

} // namespace

KeptWindow::KeptWindow(const WindowParts& parts, std::chrono::milliseconds keepTime) : m_parts(parts) {
  m_release.setSingleShot(true);
  m_release.setInterval(keepTime);
  connect(&m_release, &QTimer::timeout, this, &KeptWindow::release);
  m_check.setSingleShot(true);
  connect(&m_check, &QTimer::timeout, this, &KeptWindow::checkDrawing);
  qApp->installEventFilter(this);
}

KeptWindow::~KeptWindow() = default;

void KeptWindow::keep() {
  if (m_parts.front != nullptr) m_parts.front->take();
  m_release.stop();
  if (m_engine) return;
  prepareRendering();
  m_engine = std::make_unique<LookEngine>(m_parts.settings, m_parts.icons, m_parts.words);
  followScreen();
  make(*m_engine);
}

void KeptWindow::followScreen() {
  m_font = QGuiApplication::font();
  m_scale = currentScale();
}

void KeptWindow::checkDrawing() {
  const bool isSame = m_font == QGuiApplication::font() && qFuzzyCompare(m_scale, currentScale());
  if (!m_engine || isSame) return;
  followScreen();
  renew(*m_engine);
}

bool KeptWindow::eventFilter(QObject* watched, QEvent* event) {
  if (watched == qApp && event->type() == QEvent::ApplicationFontChange && m_engine) m_check.start(0);
  return QObject::eventFilter(watched, event);
}

void KeptWindow::releaseLater() { m_release.start(); }

void KeptWindow::release() {
  destroy();
  m_engine.reset();
  giveMemoryBack(m_parts.heap);
  emit discarded();
}

} // namespace vantle
