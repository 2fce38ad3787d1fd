// SPDX-License-Identifier: MIT
#include "desktop/linux/bus/Followers.h"

namespace vantle {
namespace {

constexpr qsizetype most = 64; // bars, overlays and scripts of one person

} // namespace

Followers::Followers(SessionBus& bus) : m_bus(bus) {
  m_watcher.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
  connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, &m_watcher,
          &QDBusServiceWatcher::removeWatchedService);
  // Names of connections mean nobody on the next bus.
  connect(&bus, &SessionBus::lost, this, [this] { m_watcher.setWatchedServices({}); });
}

bool Followers::add(const QString& connection) {
  const QStringList all = names();
  if (all.contains(connection)) return true;
  if (all.size() >= most) return false;
  if (all.isEmpty()) m_watcher.setConnection(m_bus.connection());
  m_watcher.addWatchedService(connection);
  return true;
}

} // namespace vantle
