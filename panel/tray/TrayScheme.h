// SPDX-License-Identifier: MIT
#pragma once

#include "look/DesktopScheme.h"

#include <optional>

namespace vantle {

// Whether the bar that holds the tray is dark, which is not always what the rest of the desktop is.
class TrayScheme : public QObject {
  Q_OBJECT

 public:
  TrayScheme();

  bool isDark() const;

 signals:
  void changed();

 private slots:
  void xfceSettingChanged(const QString& channel, const QString& property, const QDBusVariant& value);

 private:
  void followXfcePanel();
  void askXfcePanel();

  std::shared_ptr<SessionBus> m_bus = SessionBus::shared();
  DesktopScheme m_desktop;
  std::optional<bool> m_xfceDark; // absent: this is another desktop
};

} // namespace vantle
