// SPDX-License-Identifier: MIT
#include "panel/PanelPlacement.h"

#include <algorithm>

namespace vantle {
namespace {

constexpr int gap = 4; // between the panel and what it opens beside

int within(int wanted, int size, int low, int high) { return std::max(low, std::min(wanted, high - size)); }

} // namespace

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
