// SPDX-License-Identifier: MIT
#include "desktop/linux/SessionBus.h"

#include <QMetaObject>
#include <algorithm>
#include <mutex>
#include <system_error>
#include <thread>

namespace vantle {
namespace {

constexpr std::chrono::milliseconds firstDelay{250};
constexpr std::chrono::milliseconds longestDelay{30'000};

// The toolkit tells connections apart by name, and never makes one of the same name again.
QString nextName() {
  static int count = 0;
  return QStringLiteral("vantle-%1").arg(++count);
}

} // namespace

// A bus that lets in and then says nothing may be waited for by a thread, but not by the main loop.
struct SessionBus::Attempt {
  std::mutex mutex;
  SessionBus* bus = nullptr; // null: given up

  void run(const QString& name) {
    const bool isConnected = QDBusConnection::connectToBus(QDBusConnection::SessionBus, name).isConnected();
    if (!isConnected) QDBusConnection::disconnectFromBus(name);
    const std::lock_guard lock(mutex);
    if (bus == nullptr) return;
    QMetaObject::invokeMethod(
        bus,
        [bus = bus, name, isConnected] {
          bus->m_attempt.reset();
          if (isConnected) {
            bus->adopt(name);
            emit bus->opened();
          } else {
            bus->retryLater();
          }
        },
        Qt::QueuedConnection);
  }
};

SessionBus::SessionBus() : m_name(nextName()), m_delay(firstDelay) {
  m_retry.setSingleShot(true);
  connect(&m_retry, &QTimer::timeout, this, &SessionBus::retry);
  if (QDBusConnection::connectToBus(QDBusConnection::SessionBus, m_name).isConnected()) {
    adopt(m_name);
  } else {
    QDBusConnection::disconnectFromBus(m_name);
    if (qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS")) retryLater();
  }
}

SessionBus::~SessionBus() {
  if (m_attempt) {
    const std::lock_guard lock(m_attempt->mutex);
    m_attempt->bus = nullptr;
  }
  if (m_isConnected) QDBusConnection::disconnectFromBus(m_name);
}

void SessionBus::adopt(const QString& name) {
  m_name = name;
  m_isConnected = true;
  m_delay = firstDelay;
  // The library itself says so.
  connection().connect(QString(), QStringLiteral("/org/freedesktop/DBus/Local"),
                       QStringLiteral("org.freedesktop.DBus.Local"), QStringLiteral("Disconnected"), this,
                       SLOT(lose()));
  if (!connection().isConnected()) QMetaObject::invokeMethod(this, &SessionBus::lose, Qt::QueuedConnection);
}

void SessionBus::lose() {
  if (!m_isConnected) return;
  m_isConnected = false;
  emit lost();
  QDBusConnection::disconnectFromBus(m_name);
  retryLater();
}

void SessionBus::retryLater() {
  m_retry.start(m_delay);
  m_delay = std::min(2 * m_delay, longestDelay);
}

void SessionBus::retry() {
  m_attempt = std::make_shared<Attempt>();
  m_attempt->bus = this;
  try {
    std::thread([attempt = m_attempt, name = nextName()] { attempt->run(name); }).detach();
  } catch (const std::system_error&) {
    m_attempt.reset();
    retryLater();
  }
}

} // namespace vantle
