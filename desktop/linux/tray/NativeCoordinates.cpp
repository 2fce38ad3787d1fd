// SPDX-License-Identifier: MIT
#include "desktop/linux/tray/NativeCoordinates.h"

#include <QGuiApplication>
#include <QScreen>

namespace vantle {
namespace {

// A screen keeps the place of its corner, and what is within it is scaled.
NativeScreen nativeOf(const QScreen& screen) {
  const qreal ratio = screen.devicePixelRatio();
  const QRect geometry = screen.geometry();
  return {{geometry.topLeft(), (QSizeF(geometry.size()) * ratio).toSize()}, ratio};
}

} // namespace

NativeScreen nativeScreenAt(const QPoint& place) {
  for (const QScreen* screen : QGuiApplication::screens()) {
    const NativeScreen native = nativeOf(*screen);
    if (native.geometry.contains(place)) return native;
  }
  const QScreen* const primary = QGuiApplication::primaryScreen();
  return primary != nullptr ? nativeOf(*primary) : NativeScreen();
}

// On Wayland trays speak of the desktop's own points, as the toolkit does.
QRect fromNative(const QRect& native) {
  if (QGuiApplication::platformName() != QLatin1String("xcb")) return native;
  const auto [geometry, ratio] = nativeScreenAt(native.center());
  if (!geometry.contains(native.center())) return native;
  const QPointF corner = QPointF(native.topLeft() - geometry.topLeft()) / ratio + geometry.topLeft();
  return {corner.toPoint(), (QSizeF(native.size()) / ratio).toSize().expandedTo({1, 1})};
}

} // namespace vantle
