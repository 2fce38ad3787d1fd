// SPDX-License-Identifier: MIT
#include "desktop/linux/scheme/DesktopScheme.h"

#include "desktop/linux/scheme/GtkSettings.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

namespace vantle {
namespace {

const auto service = QStringLiteral("org.freedesktop.portal.Desktop");
const auto path = QStringLiteral("/org/freedesktop/portal/desktop");
const auto interface = QStringLiteral("org.freedesktop.portal.Settings");
const auto group = QStringLiteral("org.freedesktop.appearance");
const auto key = QStringLiteral("color-scheme");

// The portal's values: 0 no preference, 1 dark, 2 light.
constexpr uint preferDark = 1;
constexpr uint preferLight = 2;

} // namespace

DesktopScheme::DesktopScheme(SessionBus& bus, SettingsManager& manager)
    : m_bus(bus), m_manager(manager), m_managerObserver(manager.observe([this] { weigh(); })),
      m_dark(gtkThemeIsDark(manager.published())) {
  connect(&m_bus, &SessionBus::opened, this, &DesktopScheme::followPortal);
  if (m_bus.isConnected()) followPortal();
}

std::unique_ptr<Registration> DesktopScheme::observe(std::function<void()> changed) {
  return m_observers.add(std::move(changed));
}

void DesktopScheme::followPortal() {
  m_bus.connection().connect(service, path, interface, QStringLiteral("SettingChanged"), this,
                             SLOT(settingChanged(QString, QString, QDBusVariant)));
  ask();
}

void DesktopScheme::ask() {
  QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, QStringLiteral("Read"));
  call << group << key;
  auto* watcher = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    if (reply.isValid()) take(reply.value().variant());
    watcher->deleteLater();
  });
}

void DesktopScheme::settingChanged(const QString& changedGroup, const QString& changedKey,
                                   const QDBusVariant& value) {
  if (changedGroup == group && changedKey == key) take(value.variant());
}

void DesktopScheme::take(const QVariant& colorScheme) {
  // Read wraps the value in one variant more than the signal does.
  QVariant plain = colorScheme;
  if (plain.canConvert<QDBusVariant>()) plain = plain.value<QDBusVariant>().variant();
  m_preference = plain.toUInt();
  weigh();
}

void DesktopScheme::weigh() {
  const bool dark =
      m_preference == preferDark || (m_preference != preferLight && gtkThemeIsDark(m_manager.published()));
  if (dark == m_dark) return;
  m_dark = dark;
  m_observers.notify();
}

} // namespace vantle
