// SPDX-License-Identifier: MIT
#include "panel/tray/TrayIcon.h"

#include "look/SymbolDrawing.h"

#include <QtEndian>

namespace vantle {
namespace {

constexpr int sizes[] = {16, 22, 24, 32, 48, 64}; // pixels
const QColor onDark(0xf4, 0xf4, 0xf6);
const QColor onLight(0x2c, 0x2c, 0x32);

TrayPixmap toPixmap(const QImage& image) {
  TrayPixmap pixmap{.width = image.width(), .height = image.height(), .pixels = {}};
  const QImage argb = image.convertToFormat(QImage::Format_ARGB32);
  pixmap.pixels.resize(argb.sizeInBytes());
  const auto count = static_cast<qsizetype>(argb.width()) * argb.height();
  qToBigEndian<quint32>(argb.constBits(), count, pixmap.pixels.data());
  return pixmap;
}

} // namespace

QImage trayImage(const TrayIcon& icon, int pixels) {
  const bool filled = icon.shape == BoltShape::filled;
  return symbolImage(filled ? QStringLiteral("bolt.fill") : QStringLiteral("bolt"),
                     icon.forDarkTray ? onDark : onLight, pixels);
}

TrayPixmaps trayPixmaps(const TrayIcon& icon) {
  TrayPixmaps all;
  for (const int size : sizes) all.append(toPixmap(trayImage(icon, size)));
  return all;
}

} // namespace vantle
