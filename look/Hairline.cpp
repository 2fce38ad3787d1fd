// SPDX-License-Identifier: MIT
#include "look/Hairline.h"

#include <QPainter>
#include <algorithm>

namespace vantle {

void Hairline::paint(QPainter& painter, const QRectF& bounds) {
  const QRectF device = painter.transform().mapRect(bounds);
  painter.resetTransform();
  painter.fillRect(qRound(device.left()), qRound(device.top()), std::max(1, qRound(device.width())),
                   std::max(1, qRound(device.height())), m_color);
}

} // namespace vantle
