// SPDX-License-Identifier: MIT
#pragma once

#include "base/Observers.h"
#include "desktop/linux/SessionBus.h"
#include "desktop/linux/scheme/SettingsManager.h"
#include "look/ports/ColorScheme.h"

#include <QDBusVariant>
#include <QObject>
#include <functional>
#include <memory>

namespace vantle {

// Whether the desktop itself is dark: as its settings portal says, else as its GTK theme is. Follows both.
class DesktopScheme : public QObject, public ColorScheme {
  Q_OBJECT

 public:
  DesktopScheme(SessionBus& bus, SettingsManager& manager); // which outlive it

  bool isDark() const override { return m_dark; }
  std::unique_ptr<Registration> observe(std::function<void()> changed) override;

 private slots:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void followPortal();
  void ask();
  void take(const QVariant& colorScheme);
  void weigh();

  SessionBus& m_bus;
  SettingsManager& m_manager;
  std::unique_ptr<Registration> m_managerObserver;
  uint m_preference = 0; // as the portal has it
  bool m_dark;
  Observers<> m_observers;
};

} // namespace vantle
