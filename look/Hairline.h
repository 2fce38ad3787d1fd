// SPDX-License-Identifier: MIT
#pragma once

#include "look/DirectItem.h"

#include <QColor>

namespace vantle {

// A line that is drawn on whole pixels, so that all lines are equally thick at fractional scales too.
class Hairline : public DirectItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QColor color MEMBER m_color WRITE setColor NOTIFY colorChanged)

 public:
  using DirectItem::DirectItem;

  void setColor(const QColor& value) { assign(m_color, value, &Hairline::colorChanged); }
  void paint(QPainter& painter, const QRectF& bounds) override;

 signals:
  void colorChanged();

 private:
  QColor m_color = Qt::transparent;
};

} // namespace vantle
