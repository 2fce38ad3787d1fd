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
    : m_menu(std::move(actions)), m_onActivate(std::move(onActivate)), m_onPresence(std::move(onPresence)) {
  registerTrayTypes();
  m_activation.setSingleShot(true);
  connect(&m_activation, &QTimer::timeout, this, [this] { m_onActivate(m_activatedAt); });
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
  connect(m_bus.get(), &SessionBus::lost, this, [this] { m_onPresence(false); });
  connect(m_bus.get(), &SessionBus::opened, this, &StatusNotifierItem::enterBus);
  if (m_bus->isConnected()) {
    enterBus();
  } else {
    m_onPresence(false);
  }
}

void StatusNotifierItem::enterBus() {
  QDBusConnection bus = m_bus->connection();
  bus.registerObject(itemPath, this, QDBusConnection::ExportAllContents);
  bus.registerObject(menuPath, &m_menu, QDBusConnection::ExportAllContents);
  m_service = QStringLiteral("org.kde.StatusNotifierItem-%1-1").arg(QCoreApplication::applicationPid());
  if (!bus.registerService(m_service)) m_service = bus.baseService(); // a sandbox may forbid the name
  m_watcher.setConnection(bus);
  bus.connect(watcherService, watcherPath, watcherService, QStringLiteral("StatusNotifierHostRegistered"),
              this, SLOT(hostAppeared()));
  announce();
}

void StatusNotifierItem::announce() {
  QDBusMessage call = watcherCall(watcherService, QStringLiteral("RegisterStatusNotifierItem"));
  call << m_service;
  auto* watcher = new QDBusPendingCallWatcher(m_bus->connection().asyncCall(call), this);
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
  auto* watcher = new QDBusPendingCallWatcher(m_bus->connection().asyncCall(call), this);
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
  return {.iconName = {}, .icon = {}, .title = title(), .text = m_stateText};
}

QDBusObjectPath StatusNotifierItem::menu() const { return QDBusObjectPath(menuPath); }

// After the answer to the tray. However often somebody calls until then, it is one click.
void StatusNotifierItem::activateSoon(QPoint point) {
  m_activatedAt = point;
  if (!m_activation.isActive()) m_activation.start(0);
}

void StatusNotifierItem::Activate(int x, int y) { activateSoon({x, y}); }

void StatusNotifierItem::SecondaryActivate(int x, int y) { activateSoon({x, y}); }

void StatusNotifierItem::ContextMenu(int x, int y) { activateSoon({x, y}); }

void StatusNotifierItem::Scroll(int, const QString&) {}

} // namespace vantle
