// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/SessionBus.h"

#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <vector>

namespace vantle {

// One interface of the program's own object.
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

// The object that the program's own name on the session's bus stands for, on every bus that takes the place
// of one that ended. Its parts answer when they are ready to, which may be after the call.
class ProgramObject : public QDBusVirtualObject {
  Q_OBJECT

 public:
  explicit ProgramObject(SessionBus& bus);

  // Parts outlive the object, or leave it. The name is taken with the first one that wants it: whoever waits
  // for it finds all parts that were added before.
  enum class Name { whenOthersDo, now };
  void add(BusInterface& part, Name name);
  void remove(BusInterface& part);

  QString introspect(const QString& path) const override;
  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

  void reply(const QDBusMessage& call, const QVariantList& values = {}) const;
  void refuse(const QDBusMessage& call, const QString& error, const QString& text) const;
  void send(const QDBusMessage& message) const;
  SessionBus& bus() const { return m_bus; }

 private:
  void enterBus();
  BusInterface* named(const QString& interface) const;

  SessionBus& m_bus;
  std::vector<BusInterface*> m_parts;
  bool m_wantsName = false;
};

} // namespace vantle
