// SPDX-License-Identifier: MIT
#include "desktop/linux/icons/ThemedIcons.h"

#include "desktop/linux/scheme/GtkSettings.h"

#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QStandardPaths>
#include <algorithm>

namespace vantle {

void ThemedIcons::choose() {
  QStringList paths = QIcon::themeSearchPaths();
  for (const QString& data : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
    const QString icons = data + QLatin1String("/icons");
    if (!paths.contains(icons) && QFileInfo(icons).isDir()) paths.append(icons);
  }
  QIcon::setThemeSearchPaths(paths);
  const auto isThere = [&paths](const QString& theme) {
    return std::any_of(paths.begin(), paths.end(), [&](const QString& path) {
      return QFileInfo(path + QLatin1Char('/') + theme + QLatin1String("/index.theme")).isFile();
    });
  };
  const auto& texts = m_manager.published().texts;
  const auto published = texts.find("Net/IconThemeName");
  const QString wanted = published == texts.end() ? QString() : QString::fromStdString(published->second);
  if (!wanted.isEmpty() && isThere(wanted)) {
    QIcon::setThemeName(wanted);
  } else if (!isThere(QIcon::themeName()) || QIcon::themeName() == QLatin1String("hicolor")) {
    const QString named = gtkSetting(QStringLiteral("gtk-icon-theme-name"));
    QIcon::setThemeName(isThere(named) ? named : QStringLiteral("Adwaita"));
  }
  // Every theme falls back to "hicolor" by itself.
  if (QIcon::fallbackThemeName().isEmpty() || QIcon::fallbackThemeName() == QLatin1String("hicolor"))
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
}

// Old desktop files name a file of the pixmaps folder, with or without its ending.
QString ThemedIcons::fileOf(const QString& name) const {
  const QDir folder(QStringLiteral("/usr/share/pixmaps"));
  for (const char* ending : {"", ".png", ".svg", ".xpm"}) {
    QString path = folder.filePath(name + QLatin1String(ending));
    if (QFileInfo(path).isFile()) return path;
  }
  return {};
}

} // namespace vantle
