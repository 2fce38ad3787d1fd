// SPDX-License-Identifier: MIT
#include "desktop/linux/icons/ThemedIcons.h"

#include "desktop/linux/scheme/GtkSettings.h"

#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QStandardPaths>

namespace vantle {

void ThemedIcons::choose() {
  QStringList paths = QIcon::themeSearchPaths();
  for (const QString& data : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
    const QString icons = data + QLatin1String("/icons");
    if (!paths.contains(icons) && QFileInfo(icons).isDir()) paths.append(icons);
  }
  QIcon::setThemeSearchPaths(paths);
  const auto& texts = m_manager.published().texts;
  const auto published = texts.find("Net/IconThemeName");
  if (published != texts.end() && !published->second.empty()) {
    QIcon::setThemeName(QString::fromStdString(published->second));
  } else if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor")) {
    const QString named = gtkSetting(QStringLiteral("gtk-icon-theme-name"));
    QIcon::setThemeName(named.isEmpty() ? QStringLiteral("Adwaita") : named);
  }
  if (QIcon::fallbackThemeName().isEmpty()) QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
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
