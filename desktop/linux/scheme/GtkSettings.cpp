// SPDX-License-Identifier: MIT
#include "desktop/linux/scheme/GtkSettings.h"

#include <QFileInfo>
#include <QRegularExpression>
#include <QSettings>
#include <QStandardPaths>
#include <QStringList>

namespace vantle {
namespace {

// "Adwaita-dark", "Adwaita:dark", "Mint-Y-Dark-Aqua", "HighContrastInverse".
bool isDarkName(const QString& theme) {
  static const QRegularExpression dark(QStringLiteral("dark($|[^a-z])|inverse$"),
                                       QRegularExpression::CaseInsensitiveOption);
  return dark.match(theme).hasMatch();
}

} // namespace

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

bool gtkThemeIsDark(const PublishedSettings& published) {
  const QString forced = qEnvironmentVariable("GTK_THEME");
  if (!forced.isEmpty()) return isDarkName(forced);
  const auto theme = published.texts.find("Net/ThemeName");
  if (theme != published.texts.end()) {
    const auto preferDark = published.numbers.find("Gtk/ApplicationPreferDarkTheme");
    return isDarkName(QString::fromStdString(theme->second)) ||
           (preferDark != published.numbers.end() && preferDark->second != 0);
  }
  if (isDarkName(gtkSetting(QStringLiteral("gtk-theme-name")))) return true;
  const QString preferDark = gtkSetting(QStringLiteral("gtk-application-prefer-dark-theme"));
  return preferDark == QLatin1String("1") || preferDark == QLatin1String("true");
}

} // namespace vantle
