// SPDX-License-Identifier: MIT
#include "settings/SettingsWindow.h"

#include "settings/Resources.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QScreen>
#include <QVariant>
#include <utility>

namespace vantle {

namespace {
constexpr QSize smallest(680, 480); // where the screen has room for it; in less the content scrolls
// About what borders and a title bar take: who draws them says how much only when the window is shown.
constexpr QSize frame(4, 40);

// None when the screen that it was on is gone.
QScreen* screenOf(QPoint framePosition) {
  constexpr QPoint inTheTitle(60, 10);
  return QGuiApplication::screenAt(framePosition + inTheTitle);
}
} // namespace

void SettingsWindow::View::closeEvent(QCloseEvent* event) {
  m_closing();
  QQuickView::closeEvent(event);
}

SettingsWindow::SettingsWindow(LookEngine& engine, const SettingsParts& parts, const WindowState& state,
                               std::function<void()> closed)
    : m_model(parts, state.pane), m_view(&engine,
                                         [this, call = std::move(closed)] {
                                           m_position = m_view.framePosition();
                                           m_scale = m_view.devicePixelRatio();
                                           m_model.picker()->cancel();
                                           call();
                                         }),
      m_scale(state.scale) {
  registerSettingsTypes();
  m_view.setTitle(QCoreApplication::translate("SettingsWindow", "Vantle Settings"));
  m_view.setResizeMode(QQuickView::SizeRootObjectToView);
  m_view.resize(state.size);
  place(state.position);
  m_view.setInitialProperties({{QStringLiteral("model"), QVariant::fromValue(&m_model)}});
  m_view.setSource(QUrl(QStringLiteral("qrc:/qt/qml/Vantle/Settings/SettingsView.qml")));
}

void SettingsWindow::place(const std::optional<QPoint>& position) {
  m_position = position;
  QScreen* const before = position ? screenOf(*position) : nullptr;
  QScreen* const screen = before != nullptr ? before : m_view.screen();
  const QRect free = screen->availableGeometry();
  const QSize room = free.size() - frame;
  m_view.setMinimumSize(smallest.boundedTo(room));
  const bool fits = m_view.size() == m_view.size().boundedTo(room);
  m_view.resize(m_view.size().boundedTo(room));
  // On a screen that is drawn larger or smaller now its old place means another one.
  const bool isAsLeft = m_scale == 0 || qFuzzyCompare(m_scale, screen->devicePixelRatio());
  if (before != nullptr && isAsLeft && fits) {
    m_view.setFramePosition(*position);
    return;
  }
  const QSize wanted = m_view.size() + frame;
  QRect whole({}, wanted);
  whole.moveCenter(free.center());
  // Where there is no room its title at least is in sight.
  m_view.setFramePosition({qMax(whole.left(), free.left()), qMax(whole.top(), free.top())});
}

void SettingsWindow::show() {
  if (!m_view.isVisible()) {
    if (m_position) place(m_position);
    m_model.reload();
  }
  if (m_view.windowStates().testFlag(Qt::WindowMinimized))
    m_view.setWindowStates(m_view.windowStates() & ~Qt::WindowMinimized);
  m_view.setVisible(true);
  m_scale = m_view.devicePixelRatio();
  m_view.raise();
  m_view.requestActivate();
}

// A window that is open when its screen is drawn larger keeps its pixels, and has fewer points from then on.
QSize SettingsWindow::sizeAsLeft() const {
  const bool hasPixels = m_view.handle() != nullptr && m_scale > 0;
  return hasPixels ? m_view.size() * (m_view.devicePixelRatio() / m_scale) : m_view.size();
}

WindowState SettingsWindow::state() const {
  return {m_model.pane(), sizeAsLeft(), isShown() ? m_view.framePosition() : m_position, m_scale};
}

} // namespace vantle
