// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/linux/SessionBus.h"
#include "look/ports/ColorScheme.h"

#include <QDBusVariant>
#include <memory>
#include <optional>

namespace vantle {

// Whether the bar that holds the tray is dark, which is not always what the rest of the desktop is.
class TrayScheme : public QObject {
  Q_OBJECT

 public:
  TrayScheme(SessionBus& bus, ColorScheme& desktop); // both outlive it

  bool isDark() const;

 signals:
  void changed();

 private slots:
  void xfceSettingChanged(const QString& channel, const QString& property, const QDBusVariant& value);

 private:
  void followXfcePanel();
  void askXfcePanel();

  SessionBus& m_bus;
  ColorScheme& m_desktop;
  std::unique_ptr<Registration> m_observer;
  bool m_isXfceDark = false; // by its own setting, whatever the theme is; otherwise the bar is as the theme
};

} // namespace vantle
