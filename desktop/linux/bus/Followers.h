// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/SessionBus.h"

#include <QDBusServiceWatcher>
#include <QObject>

namespace vantle {

// The connections that are told of changes, each until it leaves the bus.
class Followers : public QObject {
  Q_OBJECT

 public:
  explicit Followers(SessionBus& bus);

  QStringList names() const { return m_watcher.watchedServices(); }
  // False when there are too many already. Once is enough.
  bool add(const QString& connection);

 private:
  SessionBus& m_bus;
  QDBusServiceWatcher m_watcher; // whom it watches for is told
};

} // namespace vantle
