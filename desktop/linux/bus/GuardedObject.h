// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/SessionBus.h"
#include "desktop/linux/bus/Callers.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QVariantMap>
#include <vector>

namespace vantle {

// One interface of an object on the session's bus.
class BusInterface {
 public:
  virtual ~BusInterface() = default;

  virtual QString name() const = 0;
  virtual QString introspection() const = 0; // <interface name=…>…</interface>
  // A call of a method of this interface. False when it has none of that name and those arguments.
  virtual bool take(const QDBusMessage& call) = 0;
  // A question of org.freedesktop.DBus.Properties about it.
  virtual void takeProperties(const QDBusMessage& question) = 0;
};

// An object on the session's bus, on every bus that takes the place of one that ended. Only programs of this
// user outside of a sandbox reach its parts; the toolkit's own export of objects knows no such question. All
// others are refused, whatever they ask. Parts answer when they are ready to, which may be after the call.
class GuardedObject : public QDBusVirtualObject {
  Q_OBJECT

 public:
  GuardedObject(SessionBus& bus, QString path);

  // Parts outlive the object, or leave it.
  void add(BusInterface& part) { m_parts.push_back(&part); }
  void remove(BusInterface& part) { std::erase(m_parts, &part); }
  // False when the bus does not have it.
  bool enterBus();

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

  void reply(const QDBusMessage& call, const QVariantList& values = {}) const;
  void replyProperties(const QDBusMessage& question, const QVariantMap& all) const;
  void refuse(const QDBusMessage& call, const QString& error, const QString& text) const;
  // To all who listen, or to one.
  void tell(const BusInterface& part, const QString& signal, const QVariantList& values = {},
            const QString& listener = {}) const;
  void send(const QDBusMessage& message) const;
  SessionBus& bus() const { return m_bus; }

 private:
  void answer(const QDBusMessage& call);
  BusInterface* named(const QString& interface) const;

  SessionBus& m_bus;
  QString m_path;
  Callers m_callers;
  std::vector<BusInterface*> m_parts;
};

// "Get ss", say: its name and the types of its arguments.
QString methodOf(const QDBusMessage& call);

} // namespace vantle
