// SPDX-License-Identifier: MIT
#include "panel/FlowGeometry.h"

#include <algorithm>
#include <limits>

namespace vantle {

FlowSize flowSize(std::optional<double> proposedWidth, const std::vector<FlowSize>& children,
                  double spacing) {
  const double available = proposedWidth.value_or(std::numeric_limits<double>::infinity());
  double x = 0;
  double y = 0;
  double lineHeight = 0;
  double widest = 0;
  for (const FlowSize& child : children) {
    if (x > 0 && x + child.width > available) {
      y += lineHeight + spacing;
      x = 0;
      lineHeight = 0;
    }
    x += child.width + spacing;
    widest = std::max(widest, x - spacing);
    lineHeight = std::max(lineHeight, child.height);
  }
  return {widest, y + lineHeight};
}

std::vector<FlowPoint> flowPlaces(const FlowBounds& bounds, const std::vector<FlowSize>& children,
                                  double spacing) {
  std::vector<FlowPoint> places;
  places.reserve(children.size());
  double x = bounds.minX;
  double y = bounds.minY;
  double lineHeight = 0;
  for (const FlowSize& child : children) {
    if (x > bounds.minX && x + child.width > bounds.maxX) {
      x = bounds.minX;
      y += lineHeight + spacing;
      lineHeight = 0;
    }
    places.push_back({x, y});
    x += child.width + spacing;
    lineHeight = std::max(lineHeight, child.height);
  }
  return places;
}

} // namespace vantle
