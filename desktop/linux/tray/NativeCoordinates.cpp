// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/NativeCoordinates.h"

#include <QGuiApplication>
#include <QScreen>

namespace vantle {

// Under X11 a screen keeps the place of its corner, and what is within it is scaled. On Wayland trays speak
// of the desktop's own points, as the toolkit does.
QRect fromNative(const QRect& native) {
  if (QGuiApplication::platformName() != QLatin1String("xcb")) return native;
  for (const QScreen* screen : QGuiApplication::screens()) {
    const qreal ratio = screen->devicePixelRatio();
    const QRect geometry = screen->geometry();
    const QRectF covered(geometry.topLeft(), QSizeF(geometry.size()) * ratio);
    if (!covered.contains(native.center())) continue;
    const QPointF corner = QPointF(native.topLeft() - geometry.topLeft()) / ratio + geometry.topLeft();
    return {corner.toPoint(), (QSizeF(native.size()) / ratio).toSize().expandedTo({1, 1})};
  }
  return native;
}

} // namespace vantle
