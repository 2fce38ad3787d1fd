// SPDX-License-Identifier: MIT
#include "desktop/linux/window/DesktopPanelSurface.h"

#include "desktop/linux/window/Compositing.h"
#include "desktop/linux/window/TaskBars.h"

#include <QGuiApplication>
#include <QScreen>
#include <utility>

namespace vantle {
namespace {

constexpr int grabRetryInterval = 40; // milliseconds
constexpr int maxGrabAttempts = 25;   // about as long as anybody holds a button down for a click

bool isOnX11() { return QGuiApplication::platformName() == QLatin1String("xcb"); }

} // namespace

DesktopPanelSurface::DesktopPanelSurface(EventLoop& loop) : m_loop(loop) {
  m_grabRetry.setInterval(grabRetryInterval);
  QObject::connect(&m_grabRetry, &QTimer::timeout, &m_grabRetry, [this] { grabPointer(); });
}

// Wayland always composes, and pictures keep their corners.
bool DesktopPanelSurface::isTranslucent() { return !isOnX11() || screenIsComposited(m_loop); }

QSize DesktopPanelSurface::roomOn(QScreen& screen) { return screen.availableSize(); }

void DesktopPanelSurface::place(QWindow& window, QScreen& screen, const QRect& /*anchor*/,
                                const QRect& place) {
  m_place = place;
  window.setScreen(&screen);
  window.setGeometry(place);
}

void DesktopPanelSurface::show(QWindow& window) {
  if (isOnX11()) keepOffTaskBars(window);
  window.show();
  window.raise();
  window.requestActivate();
  m_grabbing = &window;
  m_isPlaced = false;
  m_grabAttempts = 0;
  if (isOnX11()) m_grabRetry.start();
}

void DesktopPanelSurface::hide(QWindow& window) {
  m_grabRetry.stop();
  window.setMouseGrabEnabled(false);
  window.hide();
}

// A click in a bar or on the empty desktop moves no keyboard focus, so the pointer's grab tells of it. While
// the click that opened the panel still holds the button down, another program has the grab.
void DesktopPanelSurface::grabPointer() {
  if (m_grabbing && m_grabbing->isExposed()) insistOnPlace(*m_grabbing);
  const bool done = !m_grabbing || (m_grabbing->isExposed() && m_grabbing->setMouseGrabEnabled(true));
  if (done || ++m_grabAttempts >= maxGrabAttempts) m_grabRetry.stop();
}

// i3 puts a new window without a frame as far off its place as a frame would be wide. Said once: whoever has
// a mind of their own about the place keeps it.
void DesktopPanelSurface::insistOnPlace(QWindow& window) {
  if (!std::exchange(m_isPlaced, true) && window.position() != m_place.topLeft()) window.setGeometry(m_place);
}

} // namespace vantle
