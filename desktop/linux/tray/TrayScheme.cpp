// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/TrayScheme.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace vantle {
namespace {

const auto xfconf = QStringLiteral("org.xfce.Xfconf");
const auto xfconfPath = QStringLiteral("/org/xfce/Xfconf");
const auto panelChannel = QStringLiteral("xfce4-panel");
const auto darkMode = QStringLiteral("/panels/dark-mode");

// GNOME's top bar is dark whatever the apps are, and sway's is black. Started from a console, sway has no
// name in the environment.
bool hasDarkBar() {
  const QStringList names = qEnvironmentVariable("XDG_CURRENT_DESKTOP").split(u':');
  return names.contains("GNOME") || names.contains("sway") || qEnvironmentVariableIsSet("SWAYSOCK");
}

} // namespace

TrayScheme::TrayScheme(SessionBus& bus, ColorScheme& desktop)
    : m_bus(bus), m_desktop(desktop), m_observer(desktop.observe([this] { emit changed(); })) {
  connect(&m_bus, &SessionBus::opened, this, &TrayScheme::followXfcePanel);
  if (m_bus.isConnected()) followXfcePanel();
}

void TrayScheme::followXfcePanel() {
  m_bus.connection().connect(xfconf, xfconfPath, xfconf, QStringLiteral("PropertyChanged"), this,
                             SLOT(xfceSettingChanged(QString, QString, QDBusVariant)));
  askXfcePanel();
}

bool TrayScheme::isDark() const { return m_isXfceDark || hasDarkBar() || m_desktop.isDark(); }

void TrayScheme::askXfcePanel() {
  QDBusMessage call =
      QDBusMessage::createMethodCall(xfconf, xfconfPath, xfconf, QStringLiteral("GetProperty"));
  call.setAutoStartService(false);
  call << panelChannel << darkMode;
  auto* watcher = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    if (reply.isValid()) xfceSettingChanged(panelChannel, darkMode, reply.value());
    watcher->deleteLater();
  });
}

void TrayScheme::xfceSettingChanged(const QString& channel, const QString& property,
                                    const QDBusVariant& value) {
  if (channel != panelChannel || property != darkMode) return;
  m_isXfceDark = value.variant().toBool();
  emit changed();
}

} // namespace vantle
