// SPDX-License-Identifier: MIT
#include "look/AppIcons.h"

#include "look/GtkSettings.h"

#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QImageReader>
#include <QPainter>
#include <QStandardPaths>

namespace vantle {
namespace {

constexpr qint64 maxFileBytes = 8 * 1024 * 1024;
constexpr int maxSide = 4096;      // pixels
constexpr int maxNameLength = 255; // a file name cannot be longer

QImage squared(const QImage& image, int pixels) {
  if (image.isNull() || (image.width() == pixels && image.height() == pixels)) return image;
  const QImage scaled = image.scaled(pixels, pixels, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  QImage square(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  square.fill(Qt::transparent);
  QPainter painter(&square);
  painter.drawImage((pixels - scaled.width()) / 2, (pixels - scaled.height()) / 2, scaled);
  return square;
}

QImage fromFile(const QString& path, int pixels) {
  const QFileInfo info(path);
  if (!info.isFile() || info.size() > maxFileBytes) return {};
  QImageReader reader(path);
  const QSize size = reader.size();
  if (!size.isValid() || size.isEmpty() || size.width() > maxSide || size.height() > maxSide) return {};
  reader.setScaledSize(size.scaled(pixels, pixels, Qt::KeepAspectRatio));
  return squared(reader.read(), pixels);
}

// Old desktop files name a file of the pixmaps folder, with or without its ending.
QString pixmapPath(const QString& name) {
  const QDir folder(QStringLiteral("/usr/share/pixmaps"));
  for (const char* ending : {"", ".png", ".svg", ".xpm"}) {
    QString path = folder.filePath(name + QLatin1String(ending));
    if (QFileInfo(path).isFile()) return path;
  }
  return {};
}

QImage fromTheme(const QString& name, int pixels) {
  const QIcon icon = QIcon::fromTheme(name);
  if (icon.isNull()) return {};
  return squared(icon.pixmap(QSize(pixels, pixels), 1.0).toImage(), pixels);
}

} // namespace

QImage appIcon(const QString& source, int pixels) {
  if (source.isEmpty() || pixels <= 0 || pixels > maxSide) return {};
  if (QDir::isAbsolutePath(source)) return fromFile(source, pixels);
  if (source.contains(QLatin1Char('/')) || source.size() > maxNameLength) return {};
  QImage themed = fromTheme(source, pixels);
  if (!themed.isNull()) return themed;
  const QString path = pixmapPath(source);
  return path.isEmpty() ? QImage() : fromFile(path, pixels);
}

void chooseIconTheme() {
  QStringList paths = QIcon::themeSearchPaths();
  for (const QString& data : QStandardPaths::standardLocations(QStandardPaths::GenericDataLocation)) {
    const QString icons = data + QLatin1String("/icons");
    if (!paths.contains(icons) && QFileInfo(icons).isDir()) paths.append(icons);
  }
  QIcon::setThemeSearchPaths(paths);
  if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor")) {
    const QString named = gtkSetting(QStringLiteral("gtk-icon-theme-name"));
    QIcon::setThemeName(named.isEmpty() ? QStringLiteral("Adwaita") : named);
  }
  if (QIcon::fallbackThemeName().isEmpty()) QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
}

} // namespace vantle
