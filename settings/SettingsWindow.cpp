// SPDX-License-Identifier: MIT
#include "settings/SettingsWindow.h"

#include "settings/Resources.h"

#include <QGuiApplication>
#include <QScreen>
#include <QVariant>
#include <utility>

namespace vantle {

namespace {
constexpr QSize smallest(680, 480);
constexpr QSize frame(0, 40); // about what a title bar takes

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
  m_view.setTitle(QStringLiteral("Vantle Settings"));
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
  if (wanted.width() > free.width() || wanted.height() > free.height()) {
    m_view.setFramePosition(free.topLeft()); // its title at least is in sight
  } else {
    m_view.setPosition(free.center() - QRect(QPoint(), m_view.size()).center());
  }
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
