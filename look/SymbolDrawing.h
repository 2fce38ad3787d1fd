// SPDX-License-Identifier: MIT
#pragma once

#include <QColor>
#include <QImage>
#include <QString>
#include <memory>

class QPainter;
class QRectF;
class QSvgRenderer;

namespace vantle {

// One of the symbols of assets/symbols in one colour, by name ("bolt.fill"). An unknown name draws nothing.
class SymbolDrawing {
 public:
  SymbolDrawing(const QString& name, const QColor& color);
  ~SymbolDrawing();
  SymbolDrawing(const SymbolDrawing&) = delete;
  SymbolDrawing& operator=(const SymbolDrawing&) = delete;

  bool isValid() const;
  // Centred in the bounds, as large as fits.
  void paint(QPainter& painter, const QRectF& bounds) const;

 private:
  std::unique_ptr<QSvgRenderer> m_renderer;
  double m_opacity;
};

// A square picture with a transparent ground, `pixels` on a side.
QImage symbolImage(const QString& name, const QColor& color, int pixels);

} // namespace vantle
