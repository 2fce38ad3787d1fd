// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/DesktopTray.h"

#include "desktop/linux/tray/NativeCoordinates.h"
#include "desktop/linux/tray/StatusNotifierItem.h"
#include "desktop/linux/tray/TrayScheme.h"
#include "desktop/linux/tray/XEmbedIcon.h"

#include <QGuiApplication>
#include <optional>
#include <utility>

namespace vantle {
namespace {

// Bars that are windows of Wayland do not know where they are, and then say so in this way.
std::optional<QRect> iconAt(QPoint point) {
  if (point.isNull() && QGuiApplication::platformName() != QLatin1String("xcb")) return std::nullopt;
  return fromNative({point, QSize(1, 1)});
}

class DesktopTrayIcon final : public TrayIcon {
 public:
  DesktopTrayIcon(EventLoop& loop, SessionBus& bus, ColorScheme& scheme, TrayActions actions)
      : m_loop(loop), m_actions(std::move(actions)), m_scheme(bus, scheme), m_isOnDark(m_scheme.isDark()),
        m_notifierItem(bus, {.activated = [this](QPoint point) { m_actions.clicked(iconAt(point)); },
                             .secondaryActivated = m_actions.middleClicked,
                             .presence = [this](bool shown) { useEmbedding(!shown); }}) {
    QObject::connect(&m_scheme, &TrayScheme::changed, &m_scheme, [this] { followScheme(); });
  }

  void show(const TrayFace& face) override {
    m_face = face;
    m_notifierItem.show(m_face, m_isOnDark);
    if (m_embedded) m_embedded->show(m_face, m_isOnDark);
  }

  void offer(std::vector<TrayEntry> menu) override { m_notifierItem.offer(std::move(menu)); }

 private:
  void followScheme() {
    if (std::exchange(m_isOnDark, m_scheme.isDark()) != m_isOnDark) show(m_face);
  }

  // Told more than once of the same, when a tray restarts.
  void useEmbedding(bool use) {
    if (!use) m_embedded.reset();
    if (use && !m_embedded && qEnvironmentVariableIsSet("DISPLAY")) {
      m_embedded = std::make_unique<XEmbedIcon>(
          m_loop, XEmbedIcon::Handlers{
                      .clicked = [this](const QRect& place) { m_actions.clicked(fromNative(place)); },
                      .middleClicked = m_actions.middleClicked,
                      .menuWanted = [this](const QRect& place) { m_actions.menuWanted(fromNative(place)); }});
      m_embedded->show(m_face, m_isOnDark);
    }
  }

  EventLoop& m_loop;
  TrayActions m_actions;
  TrayScheme m_scheme;
  bool m_isOnDark;
  TrayFace m_face;
  std::unique_ptr<XEmbedIcon> m_embedded;
  StatusNotifierItem m_notifierItem;
};

} // namespace

std::unique_ptr<TrayIcon> DesktopTray::add(TrayActions actions) {
  return std::make_unique<DesktopTrayIcon>(m_loop, m_bus, m_scheme, std::move(actions));
}

} // namespace vantle
