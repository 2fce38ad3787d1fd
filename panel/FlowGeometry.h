// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <vector>

namespace vantle {

struct FlowSize {
  double width = 0;
  double height = 0;
  bool operator==(const FlowSize&) const = default;
};

struct FlowPoint {
  double x = 0;
  double y = 0;
  bool operator==(const FlowPoint&) const = default;
};

struct FlowBounds {
  double minX = 0;
  double minY = 0;
  double maxX = 0;
};

// Children left to right, wrapped to a new line when the next would not fit. A child wider than the width
// stays alone on its line. Lines are top-aligned and left-aligned, `spacing` apart like the children on them.

// The size that the arrangement needs; without a proposed width all children are on one line.
FlowSize flowSize(std::optional<double> proposedWidth, const std::vector<FlowSize>& children, double spacing);

// The top left corner of each child.
std::vector<FlowPoint> flowPlaces(const FlowBounds& bounds, const std::vector<FlowSize>& children,
                                  double spacing);

} // namespace vantle
