// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>

namespace vantle {

// A screen under X11, in the display server's pixels.
struct NativeScreen {
  QRect geometry;
  qreal ratio = 1; // pixels a point
};

// The one that a place in these pixels is on, the primary one for a place between all.
NativeScreen nativeScreenAt(const QPoint& place);

// A rectangle in the display server's pixels, in the toolkit's device-independent coordinates.
QRect fromNative(const QRect& native);

} // namespace vantle
