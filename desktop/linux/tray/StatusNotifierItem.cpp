// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/StatusNotifierItem.h"

#include "base/Names.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QtEndian>
#include <utility>

namespace vantle {
namespace {

const auto watcherService = QStringLiteral("org.kde.StatusNotifierWatcher");
const auto watcherPath = QStringLiteral("/StatusNotifierWatcher");
const auto itemPath = QStringLiteral("/StatusNotifierItem");

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
    : m_bus(bus), m_object(bus, itemPath), m_menu(bus), m_handlers(std::move(handlers)) {
  registerTrayTypes();
  m_object.add(*this);
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
  m_object.enterBus();
  m_menu.enterBus();
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
  // They only say that there is something new; what it is has to be asked for.
  m_object.tell(*this, QStringLiteral("NewIcon"));
  m_object.tell(*this, QStringLiteral("NewToolTip"));
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
  return {.iconName = {},
          .icon = {},
          .title = QString::fromLatin1(names::display),
          .text = m_face.state.toHtmlEscaped()};
}

QString StatusNotifierItem::name() const { return QStringLiteral("org.kde.StatusNotifierItem"); }

QString StatusNotifierItem::introspection() const {
  return QStringLiteral("  <interface name=\"org.kde.StatusNotifierItem\">\n"
                        "    <property name=\"Category\" type=\"s\" access=\"read\"/>\n"
                        "    <property name=\"Id\" type=\"s\" access=\"read\"/>\n"
                        "    <property name=\"Title\" type=\"s\" access=\"read\"/>\n"
                        "    <property name=\"Status\" type=\"s\" access=\"read\"/>\n"
                        "    <property name=\"WindowId\" type=\"i\" access=\"read\"/>\n"
                        "    <property name=\"IconName\" type=\"s\" access=\"read\"/>\n"
                        "    <property name=\"IconPixmap\" type=\"a(iiay)\" access=\"read\"/>\n"
                        "    <property name=\"ToolTip\" type=\"(sa(iiay)ss)\" access=\"read\"/>\n"
                        "    <property name=\"ItemIsMenu\" type=\"b\" access=\"read\"/>\n"
                        "    <property name=\"Menu\" type=\"o\" access=\"read\"/>\n"
                        "    <method name=\"Activate\">\n"
                        "      <arg name=\"x\" type=\"i\" direction=\"in\"/>\n"
                        "      <arg name=\"y\" type=\"i\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "    <method name=\"SecondaryActivate\">\n"
                        "      <arg name=\"x\" type=\"i\" direction=\"in\"/>\n"
                        "      <arg name=\"y\" type=\"i\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "    <method name=\"ContextMenu\">\n"
                        "      <arg name=\"x\" type=\"i\" direction=\"in\"/>\n"
                        "      <arg name=\"y\" type=\"i\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "    <method name=\"Scroll\">\n"
                        "      <arg name=\"delta\" type=\"i\" direction=\"in\"/>\n"
                        "      <arg name=\"orientation\" type=\"s\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "    <method name=\"ProvideXdgActivationToken\">\n"
                        "      <arg name=\"token\" type=\"s\" direction=\"in\"/>\n"
                        "    </method>\n"
                        "    <signal name=\"NewIcon\"/>\n"
                        "    <signal name=\"NewToolTip\"/>\n"
                        "  </interface>\n");
}

void StatusNotifierItem::takeProperties(const QDBusMessage& question) {
  m_object.replyProperties(
      question, {{QStringLiteral("Category"), QStringLiteral("ApplicationStatus")},
                 {QStringLiteral("Id"), QString::fromLatin1(names::identifier)},
                 {QStringLiteral("Title"), QString::fromLatin1(names::display)},
                 {QStringLiteral("Status"), QStringLiteral("Active")},
                 {QStringLiteral("WindowId"), 0},
                 {QStringLiteral("IconName"), QString()},
                 {QStringLiteral("IconPixmap"), QVariant::fromValue(iconPixmap())},
                 {QStringLiteral("ToolTip"), QVariant::fromValue(toolTip())},
                 {QStringLiteral("ItemIsMenu"), false},
                 {QStringLiteral("Menu"), QVariant::fromValue(QDBusObjectPath(TrayMenu::path()))}});
}

// After the answer to the tray. However often somebody calls until then, it is one click.
void StatusNotifierItem::soon(std::function<void()> click) {
  m_click = std::move(click);
  if (!m_activation.isActive()) m_activation.start(0);
}

bool StatusNotifierItem::take(const QDBusMessage& call) {
  const QString method = methodOf(call);
  const QVariantList arguments = call.arguments();
  // The tray shows the menu itself; the last of these is for trays that cannot.
  if (method == QLatin1String("Activate ii") || method == QLatin1String("ContextMenu ii")) {
    soon([this, point = QPoint(arguments[0].toInt(), arguments[1].toInt())] { m_handlers.activated(point); });
  } else if (method == QLatin1String("SecondaryActivate ii")) {
    soon(m_handlers.secondaryActivated);
  } else if (method == QLatin1String("ProvideXdgActivationToken s")) {
    m_token.give(arguments[0].toString());
  } else if (method != QLatin1String("Scroll is")) {
    return false;
  }
  m_object.reply(call);
  return true;
}

} // namespace vantle
