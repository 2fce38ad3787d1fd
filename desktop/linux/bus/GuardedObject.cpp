// SPDX-License-Identifier: MIT
#include "desktop/linux/bus/GuardedObject.h"

#include <QDBusError>
#include <QDBusVariant>
#include <algorithm>
#include <utility>

namespace vantle {
namespace {

constexpr int mostOpen = 256; // calls whose callers are still asked about

const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");
const QString introspectableInterface = QStringLiteral("org.freedesktop.DBus.Introspectable");

const QString standardInterfaces =
    QStringLiteral("  <interface name=\"org.freedesktop.DBus.Properties\">\n"
                   "    <method name=\"Get\">\n"
                   "      <arg type=\"s\" direction=\"in\"/>\n"
                   "      <arg type=\"s\" direction=\"in\"/>\n"
                   "      <arg type=\"v\" direction=\"out\"/>\n"
                   "    </method>\n"
                   "    <method name=\"GetAll\">\n"
                   "      <arg type=\"s\" direction=\"in\"/>\n"
                   "      <arg type=\"a{sv}\" direction=\"out\"/>\n"
                   "    </method>\n"
                   "    <signal name=\"PropertiesChanged\">\n"
                   "      <arg type=\"s\"/>\n"
                   "      <arg type=\"a{sv}\"/>\n"
                   "      <arg type=\"as\"/>\n"
                   "    </signal>\n"
                   "  </interface>\n"
                   "  <interface name=\"org.freedesktop.DBus.Introspectable\">\n"
                   "    <method name=\"Introspect\">\n"
                   "      <arg type=\"s\" direction=\"out\"/>\n"
                   "    </method>\n"
                   "  </interface>\n");

} // namespace

QString methodOf(const QDBusMessage& call) { return call.member() + QLatin1Char(' ') + call.signature(); }

GuardedObject::GuardedObject(SessionBus& bus, QString path)
    : m_bus(bus), m_path(std::move(path)), m_callers(bus) {}

bool GuardedObject::enterBus() { return m_bus.connection().registerVirtualObject(m_path, this); }

BusInterface* GuardedObject::named(const QString& interface) const {
  const auto part = std::find_if(m_parts.begin(), m_parts.end(),
                                 [&interface](const BusInterface* one) { return one->name() == interface; });
  return part == m_parts.end() ? nullptr : *part;
}

QString GuardedObject::introspect(const QString& /*path*/) const {
  QString all = standardInterfaces;
  for (const BusInterface* part : m_parts) all += part->introspection();
  return all;
}

// True for every call: what is not taken here the toolkit would answer, and it answers everybody. The work
// comes when the bus has said who asks.
bool GuardedObject::handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) {
  message.setDelayedReply(true);
  if (m_callers.open() >= mostOpen) {
    refuse(message, QDBusError::errorString(QDBusError::LimitsExceeded),
           QStringLiteral("too many questions at a time"));
    return true;
  }
  m_callers.ask(message.service(), [this, message](bool isAllowed) {
    if (isAllowed) return answer(message);
    refuse(message, QDBusError::errorString(QDBusError::AccessDenied),
           QStringLiteral("only programs of this user outside of a sandbox are told"));
  });
  return true;
}

void GuardedObject::answer(const QDBusMessage& call) {
  const QString interface = call.interface();
  const QString method = methodOf(call);
  if (method == QLatin1String("Introspect ") &&
      (interface.isEmpty() || interface == introspectableInterface)) {
    return reply(call,
                 {QStringLiteral("<!DOCTYPE node PUBLIC \"-//freedesktop//DTD D-BUS Object Introspection "
                                 "1.0//EN\" \"http://www.freedesktop.org/standards/dbus/1.0/"
                                 "introspect.dtd\">\n<node>\n%1</node>\n")
                      .arg(introspect(m_path))});
  }
  if (interface == propertiesInterface) {
    const QString about = call.arguments().value(0).toString();
    BusInterface* const only = about.isEmpty() && m_parts.size() == 1 ? m_parts.front() : nullptr;
    if (BusInterface* const part = only != nullptr ? only : named(about)) return part->takeProperties(call);
    return refuse(call, QDBusError::errorString(QDBusError::UnknownInterface),
                  QStringLiteral("no such interface"));
  }
  const bool isTaken = std::any_of(m_parts.begin(), m_parts.end(), [&](BusInterface* part) {
    return (interface.isEmpty() || part->name() == interface) && part->take(call);
  });
  if (isTaken) return;
  refuse(call, QDBusError::errorString(QDBusError::UnknownMethod), QStringLiteral("no such method"));
}

void GuardedObject::reply(const QDBusMessage& call, const QVariantList& values) const {
  if (call.isReplyRequired()) send(call.createReply(values));
}

void GuardedObject::replyProperties(const QDBusMessage& question, const QVariantMap& all) const {
  const QString method = methodOf(question);
  if (method == QLatin1String("GetAll s")) return reply(question, {all});
  if (method != QLatin1String("Get ss")) {
    return refuse(question, QDBusError::errorString(QDBusError::PropertyReadOnly),
                  QStringLiteral("properties can only be read"));
  }
  const auto property = all.find(question.arguments().value(1).toString());
  if (property == all.end()) {
    return refuse(question, QDBusError::errorString(QDBusError::UnknownProperty),
                  QStringLiteral("no such property"));
  }
  reply(question, {QVariant::fromValue(QDBusVariant(*property))});
}

void GuardedObject::refuse(const QDBusMessage& call, const QString& error, const QString& text) const {
  if (call.isReplyRequired()) send(call.createErrorReply(error, text));
}

void GuardedObject::tell(const BusInterface& part, const QString& signal, const QVariantList& values,
                         const QString& listener) const {
  if (!m_bus.isConnected()) return;
  QDBusMessage message = listener.isEmpty()
                             ? QDBusMessage::createSignal(m_path, part.name(), signal)
                             : QDBusMessage::createTargetedSignal(listener, m_path, part.name(), signal);
  message.setArguments(values);
  send(message);
}

void GuardedObject::send(const QDBusMessage& message) const { m_bus.connection().send(message); }

} // namespace vantle
