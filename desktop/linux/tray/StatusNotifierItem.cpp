// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/StatusNotifierItem.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QtEndian>
#include <utility>

namespace vantle {
namespace {

const auto watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");
const auto itemPath = QStringLiteral("/StatusNotifierItem");
const auto menuPath = QStringLiteral("/MenuBar");

constexpr int sizes[] = {16, 22, 24, 32, 48, 64}; // pixels

TrayPixmap toPixmap(const QImage& image) {
  TrayPixmap pixmap{.width = image.width(), .height = image.height(), .pixels = {}};
  const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
  pixmap.pixels.resize(argb.sizeInBytes());
  const auto count = static_cast<qsizetype>(argb.width()) * argb.height();
  qToBigEndian<quint32>(argb.constBits(), count, pixmap.pixels.data());
  return pixmap;
}

QDBusMessage watcherCall(const QString& interface, const QString& method) {
  QDBusMessage call = QDBusMessage::createMethodCall(watcherService, watcherPath, interface, method);
  call.setAutoStartService(false);
  return call;
}

} // namespace

StatusNotifierItem::StatusNotifierItem(SessionBus& bus, Handlers handlers)
    : m_bus(bus), m_handlers(std::move(handlers)) {
  registerTrayTypes();
  m_activation.setSingleShot(true);
  connect(&m_activation, &QTimer::timeout, this, [this] { m_token.during(m_click); });
  m_watcher.setWatchMode(QDBusServiceWatcher::WatchForOwnerChange);
  m_watcher.addWatchedService(watcherService);
  connect(&m_watcher, &QDBusServiceWatcher::serviceOwnerChanged, this,
          [this](const QString&, const QString&, const QString& newOwner) {
            if (newOwner.isEmpty()) {
              m_handlers.presence(false);
            } else {
              announce();
            }
          });
  connect(&m_bus, &SessionBus::lost, this, [this] { m_handlers.presence(false); });
  connect(&m_bus, &SessionBus::opened, this, &StatusNotifierItem::enterBus);
  if (m_bus.isConnected()) {
    enterBus();
  } else {
    m_handlers.presence(false);
  }
}

void StatusNotifierItem::enterBus() {
  QDBusConnection bus = m_bus.connection();
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
  auto* watcher = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    if (watcher->isError()) {
      m_handlers.presence(false);
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
  auto* watcher = new QDBusPendingCallWatcher(m_bus.connection().asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    m_handlers.presence(!reply.isValid() || reply.value().variant().toBool());
    watcher->deleteLater();
  });
}

void StatusNotifierItem::hostAppeared() const { m_handlers.presence(true); }

void StatusNotifierItem::show(const TrayFace& face, bool onDark) {
  m_face = face;
  m_isOnDark = onDark;
  emit NewIcon();
  emit NewToolTip();
}

void StatusNotifierItem::offer(std::vector<TrayEntry> menu) {
  for (TrayEntry& entry : menu) {
    if (!entry.chosen) continue;
    entry.chosen = [this, chosen = std::move(entry.chosen)](auto pointer) {
      m_token.during([&] { chosen(pointer); });
    };
  }
  m_menu.offer(std::move(menu));
}

TrayPixmaps StatusNotifierItem::iconPixmap() const {
  TrayPixmaps all;
  if (!m_face.picture) return all;
  for (const int size : sizes) all.append(toPixmap(m_face.picture(size, m_isOnDark)));
  return all;
}

// Trays take the text for one with marks of HTML; names are from outside.
TrayToolTip StatusNotifierItem::toolTip() const {
  return {.iconName = {}, .icon = {}, .title = title(), .text = m_face.state.toHtmlEscaped()};
}

QDBusObjectPath StatusNotifierItem::menu() const { return QDBusObjectPath(menuPath); }

// After the answer to the tray. However often somebody calls until then, it is one click.
void StatusNotifierItem::soon(std::function<void()> click) {
  m_click = std::move(click);
  if (!m_activation.isActive()) m_activation.start(0);
}

void StatusNotifierItem::Activate(int x, int y) {
  soon([this, point = QPoint(x, y)] { m_handlers.activated(point); });
}

void StatusNotifierItem::SecondaryActivate(int, int) { soon(m_handlers.secondaryActivated); }

void StatusNotifierItem::ContextMenu(int x, int y) { Activate(x, y); }

void StatusNotifierItem::Scroll(int, const QString&) {}

void StatusNotifierItem::ProvideXdgActivationToken(const QString& token) { m_token.give(token); }

} // namespace vantle
