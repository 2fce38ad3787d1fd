// SPDX-License-Identifier: MIT
#include "panel/PanelPlacement.h"

#include <algorithm>

namespace vantle {
namespace {

constexpr int gap = 4; // between the panel and what it opens beside

int within(int wanted, int size, int low, int high) { return std::max(low, std::min(wanted, high - size)); }

// How wide the bars at the edges are; 0 where none is.
struct Bars {
  int top;
  int bottom;
  int left;
  int right;
};

Bars barsOf(const QRect& screen, const QRect& available) {
  return {available.top() - screen.top(), screen.bottom() - available.bottom(),
          available.left() - screen.left(), screen.right() - available.right()};
}

QRect iconAt(int x, int y) { return {x, y, 1, 1}; }

} // namespace

QRect likelyIcon(const QRect& screen, const QRect& available) {
  const Bars bars = barsOf(screen, available);
  if (bars.top > 0 || (bars.bottom <= 0 && bars.left <= 0 && bars.right <= 0))
    return iconAt(available.right(), available.top());
  if (bars.bottom > 0) return iconAt(available.right(), screen.bottom());
  return iconAt(bars.left > 0 ? screen.left() : screen.right(), available.bottom());
}

std::size_t likelyScreen(const std::vector<std::pair<QRect, QRect>>& screens) {
  const auto cut = std::find_if(screens.begin(), screens.end(),
                                [](const auto& screen) { return screen.first != screen.second; });
  return cut == screens.end() ? 0 : static_cast<std::size_t>(cut - screens.begin());
}

QRect iconNear(const QPoint& pointer, const QRect& screen, const QRect& available) {
  const Bars bars = barsOf(screen, available);
  struct Candidate {
    int width = 0; // of the bar
    int distance = 0;
    QRect icon;
  };
  const Candidate candidates[] = {
      {bars.top, pointer.y() - screen.top(), iconAt(pointer.x(), screen.top())},
      {bars.bottom, screen.bottom() - pointer.y(), iconAt(pointer.x(), screen.bottom())},
      {bars.left, pointer.x() - screen.left(), iconAt(screen.left(), pointer.y())},
      {bars.right, screen.right() - pointer.x(), iconAt(screen.right(), pointer.y())},
  };
  const Candidate* nearest = nullptr;
  for (const Candidate& each : candidates) {
    if (each.width > 0 && (nearest == nullptr || each.distance < nearest->distance)) nearest = &each;
  }
  return nearest != nullptr ? nearest->icon : iconAt(pointer.x(), pointer.y());
}

QRect panelPlace(const QRect& anchor, const QSize& panel, const QRect& screen, const QRect& available) {
  const QPoint middle = anchor.center();
  const int lowX = available.left() + gap;
  const int highX = available.left() + available.width() - gap;
  const int lowY = available.top() + gap;
  const int highY = available.top() + available.height() - gap;

  int x = middle.x() - panel.width() / 2;
  int y = middle.y() - panel.height() / 2;
  const bool barAtSide = middle.x() < available.left() || middle.x() >= available.left() + available.width();
  if (barAtSide) {
    x = middle.x() < available.left() ? lowX : highX - panel.width();
  } else if (middle.y() < screen.center().y()) {
    y = anchor.top() + anchor.height() + gap;
  } else {
    y = anchor.top() - gap - panel.height();
  }
  const int width = std::min(panel.width(), highX - lowX);
  const int height = std::min(panel.height(), highY - lowY);
  return {within(x, width, lowX, highX), within(y, height, lowY, highY), width, height};
}

} // namespace vantle
