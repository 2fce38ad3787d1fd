// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>
#include <QSize>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace vantle {

// What a bar takes from the edges of the whole desktop, in the display server's pixels: how far in from each
// edge, and from where to where along it, both included (_NET_WM_STRUT_PARTIAL).
struct Strut {
  struct Edge {
    int depth = 0; // 0: nothing of this edge
    int from = 0;
    int to = 0;
    bool operator==(const Edge&) const = default;
  };
  Edge left;
  Edge right;
  Edge top;
  Edge bottom;
  bool operator==(const Strut&) const = default;
};

// A bar's property, of twelve numbers, or of four in its older form; none of anything else.
std::optional<Strut> strutOf(const std::uint32_t* numbers, std::size_t count);

// What of that screen is left, on a desktop of that size with all its screens.
QRect roomBeside(const std::vector<Strut>& struts, const QRect& screen, const QSize& desktop);

} // namespace vantle
