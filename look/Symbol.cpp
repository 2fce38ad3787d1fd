// SPDX-License-Identifier: MIT
#include "look/Symbol.h"

namespace vantle {

Symbol::Symbol(QQuickItem* parent) : DirectItem(parent) { setImplicitSize(16, 16); }

void Symbol::setName(const QString& value) {
  m_drawing.reset();
  assign(m_name, value, &Symbol::nameChanged);
}

void Symbol::setColor(const QColor& value) {
  m_drawing.reset();
  assign(m_color, value, &Symbol::colorChanged);
}

void Symbol::paint(QPainter& painter, const QRectF& bounds) {
  if (!m_drawing) m_drawing = std::make_unique<SymbolDrawing>(m_name, m_color);
  m_drawing->paint(painter, bounds);
}

} // namespace vantle
