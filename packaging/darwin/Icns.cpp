// SPDX-License-Identifier: MIT
#include "packaging/darwin/Icns.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>
#include <QSvgRenderer>
#include <QtEndian>

namespace vantle {

namespace {

// Those that hold PNG pictures; half of them are for screens with twice as many pixels.
struct Kind {
  const char* name;
  int pixels;
};
constexpr Kind kinds[] = {{"icp4", 16},  {"ic11", 32},  {"icp5", 32},  {"ic12", 64},  {"ic07", 128},
                          {"ic13", 256}, {"ic08", 256}, {"ic14", 512}, {"ic09", 512}, {"ic10", 1024}};

QByteArray pngOf(QSvgRenderer& drawing, int pixels) {
  QImage picture(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  drawing.render(&painter);
  painter.end();
  QBuffer png;
  png.open(QIODevice::WriteOnly);
  picture.save(&png, "PNG");
  return png.data();
}

// A name of four letters, the length of all of it, and what it holds.
QByteArray entry(const char* name, const QByteArray& bytes) {
  constexpr qsizetype headLength = 8;
  const quint32 length = qToBigEndian(static_cast<quint32>(headLength + bytes.size()));
  return QByteArray(name, 4).append(reinterpret_cast<const char*>(&length), sizeof length).append(bytes);
}

} // namespace

QByteArray icnsOf(const QString& svgFile) {
  QSvgRenderer drawing(svgFile);
  if (!drawing.isValid()) return {};
  QByteArray entries;
  for (const Kind& kind : kinds) entries.append(entry(kind.name, pngOf(drawing, kind.pixels)));
  return entry("icns", entries);
}

} // namespace vantle
