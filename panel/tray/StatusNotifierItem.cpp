// SPDX-License-Identifier: MIT
#include "panel/tray/StatusNotifierItem.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <utility>

namespace vantle {
namespace {

const auto watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");
const auto itemPath = QStringLiteral("/StatusNotifierItem");
const auto menuPath = QStringLiteral("/MenuBar");

QDBusMessage watcherCall(const QString& interface, const QString& method) {
  QDBusMessage call = QDBusMessage::createMethodCall(watcherService, watcherPath, interface, method);
  call.setAutoStartService(false);
  return call;
}

} // namespace

StatusNotifierItem::StatusNotifierItem(TrayMenu::Actions actions, std::function<void(QPoint)> onActivate,
                                       std::function<void(bool)> onPresence)
    : m_bus(QDBusConnection::sessionBus()), m_menu(std::move(actions)), m_onActivate(std::move(onActivate)),
      m_onPresence(std::move(onPresence)),
      m_service(QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid())) {
  if (!m_bus.isConnected()) {
    m_onPresence(false);
    return;
  }
  registerTrayTypes();
  m_bus.registerObject(itemPath, this, QDBusConnection::ExportAllContents);
  m_bus.registerObject(menuPath, &m_menu, QDBusConnection::ExportAllContents);
  if (!m_bus.registerService(m_service)) m_service = m_bus.baseService(); // a sandbox may forbid the name

  m_watcher.setConnection(m_bus);
  m_watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  m_watcher.addWatchedService(watcherService);
  connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& newOwner) {
            if (newOwner.isEmpty()) {
              m_onPresence(false);
            } else {
              announce();
            }
          });
  m_bus.connect(watcherService, watcherPath, watcherService, QStringLiteral("StatusNotifierHostRegistered"),
                this, SLOT(hostAppeared()));
  announce();
}

void StatusNotifierItem::announce() {
  QDBusMessage call = watcherCall(watcherService, QStringLiteral("RegisterStatusNotifierItem"));
  call << m_service;
  auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    if (watcher->isError()) {
      m_onPresence(false);
    } else {
      askForHost();
    }
    watcher->deleteLater();
  });
}

// A service can be there with nobody who shows its items.
void StatusNotifierItem::askForHost() {
  QDBusMessage call = watcherCall(QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
  call << watcherService << QStringLiteral("IsStatusNotifierHostRegistered");
  auto* watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    m_onPresence(!reply.isValid() || reply.value().variant().toBool());
    watcher->deleteLater();
  });
}

void StatusNotifierItem::hostAppeared() { m_onPresence(true); }

void StatusNotifierItem::show(const TrayIcon& icon, const QString& stateText) {
  if (icon == m_icon && stateText == m_stateText) return;
  m_icon = icon;
  m_stateText = stateText;
  emit NewIcon();
  emit NewToolTip();
}

TrayToolTip StatusNotifierItem::toolTip() const {
  return {.iconName = {}, .icon = {}, .title = QStringLiteral("Vantle"), .text = m_stateText};
}

QDBusObjectPath StatusNotifierItem::menu() const { return QDBusObjectPath(menuPath); }

void StatusNotifierItem::Activate(int x, int y) { m_onActivate({x, y}); }

void StatusNotifierItem::SecondaryActivate(int x, int y) { m_onActivate({x, y}); }

void StatusNotifierItem::ContextMenu(int x, int y) { m_onActivate({x, y}); }

void StatusNotifierItem::Scroll(int, const QString&) {}

} // namespace vantle
