// SPDX-License-Identifier: MIT
#include "desktop/linux/activation/ProgramObject.h"

#include "base/Names.h"

#include <algorithm>

namespace vantle {
namespace {

const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

} // namespace

ProgramObject::ProgramObject(SessionBus& bus) : m_bus(bus) {
  connect(&m_bus, &SessionBus::opened, this, &ProgramObject::enterBus);
}

void ProgramObject::add(BusInterface& part, Name name) {
  m_parts.push_back(&part);
  m_wantsName = m_wantsName || name == Name::now;
  if (m_bus.isConnected()) enterBus();
}

void ProgramObject::remove(BusInterface& part) { std::erase(m_parts, &part); }

void ProgramObject::enterBus() {
  if (!m_wantsName) return;
  QDBusConnection bus = m_bus.connection();
  if (bus.registerVirtualObject(QString::fromLatin1(names::busPath), this)) {
    bus.registerService(QString::fromLatin1(names::identifier));
  }
}

BusInterface* ProgramObject::named(const QString& interface) const {
  const auto part = std::find_if(m_parts.begin(), m_parts.end(),
                                 [&interface](const BusInterface* one) { return one->name() == interface; });
  return part == m_parts.end() ? nullptr : *part;
}

QString ProgramObject::introspect(const QString& /*path*/) const {
  QString all;
  for (const BusInterface* part : m_parts) all += part->introspection();
  return all;
}

bool ProgramObject::handleMessage(const QDBusMessage& message, const QDBusConnection& /*connection*/) {
  const QString interface = message.interface();
  if (interface == propertiesInterface) {
    BusInterface* const part = named(message.arguments().value(0).toString());
    if (part == nullptr) return false;
    part->takeProperties(message);
    return true;
  }
  if (!interface.isEmpty()) {
    BusInterface* const part = named(interface);
    return part != nullptr && part->take(message);
  }
  return std::any_of(m_parts.begin(), m_parts.end(),
                     [&message](BusInterface* part) { return part->take(message); });
}

void ProgramObject::reply(const QDBusMessage& call, const QVariantList& values) const {
  if (call.isReplyRequired()) send(call.createReply(values));
}

void ProgramObject::refuse(const QDBusMessage& call, const QString& error, const QString& text) const {
  if (call.isReplyRequired()) send(call.createErrorReply(error, text));
}

void ProgramObject::send(const QDBusMessage& message) const { m_bus.connection().send(message); }

} // namespace vantle
