// SPDX-License-Identifier: MIT
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QTimer>
#include <chrono>
#include <memory>

namespace vantle {

// The program's connection to the session's message bus, one for all who use it. When the bus ends and
// another one takes its place, there is a new connection to that; the toolkit's own stays dead for good.
// Nothing of what was registered with the old bus is known to the new one.
//
// It is tried again only while there is no bus, ever less often; never when none was named to begin with.
class SessionBus : public QObject {
  Q_OBJECT

 public:
  SessionBus();
  ~SessionBus() override;

  QDBusConnection connection() const { return QDBusConnection(m_name); } // a dead one while there is no bus
  bool isConnected() const { return m_isConnected; }

 signals:
  void opened(); // a bus is there again
  void lost();

 private slots:
  void lose();

 private:
  struct Attempt;

  void adopt(const QString& name);
  void retryLater();
  void retry();

  QString m_name;
  bool m_isConnected = false;
  std::chrono::milliseconds m_delay;
  QTimer m_retry;
  std::shared_ptr<Attempt> m_attempt; // set while one is under way
};

} // namespace vantle
