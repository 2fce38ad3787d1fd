// SPDX-License-Identifier: MIT
#pragma once

#include "base/Observers.h"
#include "desktop/linux/SessionBus.h"
#include "look/ports/ColorScheme.h"

#include <QDBusVariant>
#include <QObject>
#include <functional>
#include <memory>

namespace vantle {

// Whether the desktop itself is dark: as its settings portal says, else as its GTK theme is.
class DesktopScheme : public QObject, public ColorScheme {
  Q_OBJECT

 public:
  explicit DesktopScheme(SessionBus& bus); // the bus outlives it

  bool isDark() const override { return m_dark; }
  std::unique_ptr<Registration> observe(std::function<void()> changed) override;

 private slots:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void followPortal();
  void ask();
  void take(const QVariant& colorScheme);

  SessionBus& m_bus;
  bool m_fallback;
  bool m_dark;
  Observers<> m_observers;
};

} // namespace vantle
