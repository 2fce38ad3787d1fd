// SPDX-License-Identifier: MIT
#include "desktop/linux/window/Struts.h"

#include <algorithm>

namespace vantle {
namespace {

constexpr std::uint32_t farthest = 1U << 15U; // no X server has a larger screen

int bounded(std::uint32_t number) { return static_cast<int>(std::min(number, farthest)); }

} // namespace

std::optional<Strut> strutOf(const std::uint32_t* numbers, std::size_t count) {
  constexpr std::size_t plain = 4;
  constexpr std::size_t partial = 12;
  if (count != plain && count != partial) return std::nullopt;
  const auto edge = [&](std::size_t place) -> Strut::Edge {
    const int depth = bounded(numbers[place]);
    if (count == plain) return {depth, 0, static_cast<int>(farthest)};
    return {depth, bounded(numbers[plain + 2 * place]), bounded(numbers[plain + 2 * place + 1])};
  };
  return Strut{edge(0), edge(1), edge(2), edge(3)};
}

// Depths are counted from the edges of the whole desktop, so a bar on a screen further in takes all the
// others between it and that edge, were it not for this: no bar takes half of a screen.
QRect roomBeside(const std::vector<Strut>& struts, const QRect& screen, const QSize& desktop) {
  int left = screen.left();
  int right = screen.right();
  int top = screen.top();
  int bottom = screen.bottom();
  const auto isBeside = [](const Strut::Edge& edge, int low, int high) {
    return edge.depth > 0 && edge.from <= high && edge.to >= low;
  };
  const int middleX = screen.center().x();
  const int middleY = screen.center().y();
  for (const Strut& each : struts) {
    const int fromLeft = each.left.depth;
    const int toRight = desktop.width() - 1 - each.right.depth;
    const int fromTop = each.top.depth;
    const int toBottom = desktop.height() - 1 - each.bottom.depth;
    if (isBeside(each.left, screen.top(), screen.bottom()) && fromLeft <= middleX)
      left = std::max(left, fromLeft);
    if (isBeside(each.right, screen.top(), screen.bottom()) && toRight >= middleX)
      right = std::min(right, toRight);
    if (isBeside(each.top, screen.left(), screen.right()) && fromTop <= middleY) top = std::max(top, fromTop);
    if (isBeside(each.bottom, screen.left(), screen.right()) && toBottom >= middleY)
      bottom = std::min(bottom, toBottom);
  }
  return {QPoint(left, top), QPoint(right, bottom)};
}

} // namespace vantle
