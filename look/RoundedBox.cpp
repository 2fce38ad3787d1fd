// SPDX-License-Identifier: MIT
#include "look/RoundedBox.h"

#include <QPainter>
#include <algorithm>

namespace vantle {

void RoundedBox::paint(QPainter& painter, const QRectF& bounds) {
  const qreal radius = std::min({m_radius, bounds.width() / 2, bounds.height() / 2});
  if (m_color.alpha() > 0) {
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_color);
    painter.drawRoundedRect(bounds, radius, radius);
  }
  if (m_edgeColor.alpha() > 0 && m_edgeWidth > 0) {
    const qreal inset = m_edgeWidth / 2;
    const qreal inner = std::max(0.0, radius - inset);
    painter.setPen(QPen(m_edgeColor, m_edgeWidth));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(bounds.adjusted(inset, inset, -inset, -inset), inner, inner);
  }
}

} // namespace vantle
