// SPDX-License-Identifier: MIT
#include "desktop/linux/bus/Callers.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QVariantMap>
#include <filesystem>
#include <string>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace vantle {
namespace {

constexpr int longestAnswer = 5000; // milliseconds, of the bus itself

bool isAllowed(const QDBusPendingCall& call) {
  const QDBusPendingReply<QVariantMap> reply = call;
  if (reply.isError()) return false;
  const QVariantMap known = reply.value();
  const QVariant user = known.value(QStringLiteral("UnixUserID"));
  const QVariant process = known.value(QStringLiteral("ProcessID"));
  return user.isValid() && user.toUInt() == ::getuid() && process.isValid() &&
         seesTheSameMachine(process.toLongLong());
}

} // namespace

bool seesTheSameMachine(std::int64_t pid) {
  // Links into the kernel itself: reading them waits for nobody.
  const auto seen = [](const std::string& process, const char* kind) {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/" + process + "/ns/" + kind, error).string();
  };
  for (const char* kind : {"mnt", "user"}) {
    const std::string own = seen("self", kind);
    if (own.empty() || seen(std::to_string(pid), kind) != own) return false;
  }
  return true;
}

void Callers::ask(const QString& connection, std::function<void(bool isAllowed)> tell) {
  QDBusMessage question = QDBusMessage::createMethodCall(
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
      QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetConnectionCredentials"));
  question << connection;
  auto* const watcher =
      new QDBusPendingCallWatcher(m_bus.connection().asyncCall(question, longestAnswer), this);
  ++m_open;
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, then = std::move(tell)] {
    --m_open;
    watcher->deleteLater();
    then(isAllowed(*watcher));
  });
}

} // namespace vantle
