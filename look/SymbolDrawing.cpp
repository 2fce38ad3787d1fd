// SPDX-License-Identifier: MIT
#include "look/SymbolDrawing.h"

#include "look/Resources.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <algorithm>

namespace vantle {

SymbolDrawing::SymbolDrawing(const QString& name, const QColor& color)
    : m_renderer(std::make_unique<QSvgRenderer>()), m_opacity(color.alphaF()) {
  loadLookResources();
  QFile file(QStringLiteral(":/vantle/symbols/%1.svg").arg(name));
  if (!file.open(QIODevice::ReadOnly)) return;
  // The files are drawn in black; the tint is put in its place, so that edges stay exact at every size.
  QByteArray drawing = file.readAll();
  drawing.replace("#000", color.name(QColor::HexRgb).toLatin1());
  m_renderer->load(drawing);
}

SymbolDrawing::~SymbolDrawing() = default;

bool SymbolDrawing::isValid() const { return m_renderer->isValid(); }

void SymbolDrawing::paint(QPainter& painter, const QRectF& bounds) const {
  const qreal side = std::min(bounds.width(), bounds.height());
  if (!isValid() || side <= 0) return;
  painter.save();
  painter.setOpacity(painter.opacity() * m_opacity);
  m_renderer->render(&painter, QRectF(bounds.center() - QPointF(side / 2, side / 2), QSizeF(side, side)));
  painter.restore();
}

QImage symbolImage(const QString& name, const QColor& color, int pixels) {
  QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.setRenderHint(QPainter::Antialiasing);
  SymbolDrawing(name, color).paint(painter, QRectF(0, 0, pixels, pixels));
  return image;
}

} // namespace vantle
