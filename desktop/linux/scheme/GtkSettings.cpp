// SPDX-License-Identifier: MIT
#include "desktop/linux/scheme/GtkSettings.h"

#include <QFileInfo>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>

namespace vantle {

QString gtkSetting(const QString& key) {
  QStringList folders = {QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation),
                         QStringLiteral("/etc")};
  for (const QString& folder : std::as_const(folders)) {
    for (const char* version : {"gtk-4.0", "gtk-3.0"}) {
      const QString path =
          folder + QLatin1Char('/') + QLatin1String(version) + QLatin1String("/settings.ini");
      if (!QFileInfo(path).isFile()) continue;
      const QVariant value = QSettings(path, QSettings::IniFormat).value(QLatin1String("Settings/") + key);
      if (value.isValid()) return value.toString();
    }
  }
  return {};
}

bool gtkThemeIsDark() {
  const QString forced = qEnvironmentVariable("GTK_THEME");
  const QString theme = forced.isEmpty() ? gtkSetting(QStringLiteral("gtk-theme-name")) : forced;
  if (theme.endsWith(QLatin1String("dark"), Qt::CaseInsensitive)) return true;
  if (!forced.isEmpty()) return false;
  const QString preferDark = gtkSetting(QStringLiteral("gtk-application-prefer-dark-theme"));
  return preferDark == QLatin1String("1") || preferDark == QLatin1String("true");
}

} // namespace vantle
