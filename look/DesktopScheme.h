// SPDX-License-Identifier: MIT
#pragma once

#include "look/SessionBus.h"

#include <QDBusVariant>
#include <QObject>
#include <memory>

namespace vantle {

// Whether the desktop itself is dark: as its settings portal says, else as its GTK theme is.
class DesktopScheme : public QObject {
  Q_OBJECT

 public:
  explicit DesktopScheme(QObject* parent = nullptr);

  bool isDark() const { return m_dark; }

 signals:
  void changed(); // also when the portal's first answer differs from what was assumed

 private slots:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void followPortal();
  void ask();
  void take(const QVariant& colorScheme);

  std::shared_ptr<SessionBus> m_bus = SessionBus::shared();
  bool m_fallback;
  bool m_dark;
};

} // namespace vantle
