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
constexpr QSize smallest(680, 480);
// About what a title bar takes: who draws it says how much only when the window is shown.
constexpr QSize frame(0, 40);

// Not when the screen that it was on is gone.
bool isInSight(QPoint framePosition) {
  constexpr QPoint inTheTitle(60, 10);
  return QGuiApplication::screenAt(framePosition + inTheTitle) != nullptr;
}
} // namespace

void SettingsWindow::View::closeEvent(QCloseEvent* event) {
  m_closing();
  QQuickView::closeEvent(event);
}

SettingsWindow::SettingsWindow(LookEngine& engine, const SettingsParts& parts, const WindowState& state,
                               std::function<void()> closed)
    : m_model(parts, state.pane), m_view(&engine, [this, call = std::move(closed)] {
        m_position = m_view.framePosition();
        m_model.picker()->cancel();
        call();
      }) {
  registerSettingsTypes();
  m_view.setTitle(QCoreApplication::translate("SettingsWindow", "Vantle Settings"));
  m_view.setMinimumSize(smallest);
  m_view.setResizeMode(QQuickView::SizeRootObjectToView);
  m_view.resize(state.size);
  place(state.position);
  m_view.setInitialProperties({{QStringLiteral("model"), QVariant::fromValue(&m_model)}});
  m_view.setSource(QUrl(QStringLiteral("qrc:/qt/qml/Vantle/Settings/SettingsView.qml")));
}

void SettingsWindow::place(const std::optional<QPoint>& position) {
  m_position = position;
  if (position && isInSight(*position)) {
    m_view.setFramePosition(*position);
    return;
  }
  const QRect free = m_view.screen()->availableGeometry();
  m_view.resize(m_view.size().boundedTo(free.size() - frame).expandedTo(smallest));
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
  m_view.raise();
  m_view.requestActivate();
}

WindowState SettingsWindow::state() const { return {m_model.pane(), m_view.size(), m_position}; }

} // namespace vantle
