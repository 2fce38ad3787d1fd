// SPDX-License-Identifier: MIT
#include "look/AppIcons.h"

#include "look/ports/IconTheme.h"

#include <QDir>
#include <QFileInfo>
#include <QIcon>
#include <QImageReader>
#include <QPainter>

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

QImage fromTheme(const QString& name, int pixels) {
  const QIcon icon = QIcon::fromTheme(name);
  if (icon.isNull()) return {};
  return squared(icon.pixmap(QSize(pixels, pixels), 1.0).toImage(), pixels);
}

} // namespace

QImage appIcon(const IconTheme& icons, const QString& source, int pixels) {
  if (source.isEmpty() || pixels <= 0 || pixels > maxSide) return {};
  if (QDir::isAbsolutePath(source)) {
    const QImage file = fromFile(source, pixels);
    return file.isNull() ? squared(icons.pictureOf(source, pixels), pixels) : file;
  }
  if (source.contains(QLatin1Char('/')) || source.size() > maxNameLength) return {};
  QImage themed = fromTheme(source, pixels);
  if (!themed.isNull()) return themed;
  const QString path = icons.fileOf(source);
  return path.isEmpty() ? squared(icons.pictureOf(source, pixels), pixels) : fromFile(path, pixels);
}
} // namespace vantle
