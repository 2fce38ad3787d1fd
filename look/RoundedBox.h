// SPDX-License-Identifier: MIT
#pragma once

#include "look/DirectItem.h"

#include <QColor>

namespace vantle {

// A rectangle with round corners and an edge inside its bounds. A radius of half the height makes a capsule.
class RoundedBox : public DirectItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QColor color MEMBER m_color WRITE setColor NOTIFY colorChanged)
  Q_PROPERTY(QColor edgeColor MEMBER m_edgeColor WRITE setEdgeColor NOTIFY edgeColorChanged)
  Q_PROPERTY(qreal edgeWidth MEMBER m_edgeWidth WRITE setEdgeWidth NOTIFY edgeWidthChanged)
  Q_PROPERTY(qreal radius MEMBER m_radius WRITE setRadius NOTIFY radiusChanged)

 public:
  using DirectItem::DirectItem;

  void setColor(const QColor& value) { assign(m_color, value, &RoundedBox::colorChanged); }
  void setEdgeColor(const QColor& value) { assign(m_edgeColor, value, &RoundedBox::edgeColorChanged); }
  void setEdgeWidth(qreal value) { assign(m_edgeWidth, value, &RoundedBox::edgeWidthChanged); }
  void setRadius(qreal value) { assign(m_radius, value, &RoundedBox::radiusChanged); }

  void paint(QPainter& painter, const QRectF& bounds) override;

 signals:
  void colorChanged();
  void edgeColorChanged();
  void edgeWidthChanged();
  void radiusChanged();

 private:
  QColor m_color = Qt::transparent;
  QColor m_edgeColor = Qt::transparent;
  qreal m_edgeWidth = 1;
  qreal m_radius = 0;
};

} // namespace vantle
