// SPDX-License-Identifier: MIT
#pragma once

#include <QCoreApplication>
#include <QMouseEvent>
#include <QWindow>

namespace vantle {

// Of a press that the toolkit was not told of: as if it had seen it outside of the window.
inline void tellOfPressElsewhere(QWindow& window) {
  const QPointF outside(-1, -1);
  QMouseEvent press(QEvent::MouseButtonPress, outside, window.mapToGlobal(outside), Qt::LeftButton,
                    Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(&window, &press);
}

} // namespace vantle
