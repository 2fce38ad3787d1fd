// SPDX-License-Identifier: MIT
#include "panel/FlowGeometry.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <random>

namespace vantle {

void PrintTo(const FlowPoint& point, std::ostream* out) { *out << point.x << "," << point.y; }

namespace {

using Sizes = std::vector<FlowSize>;
using Places = std::vector<FlowPoint>;

struct Case {
  const char* name;
  std::optional<double> width;
  Sizes children;
  double spacing;
  FlowSize size;
  Places places; // from 0,0 in that width
};

TEST(Flow, LaysOutLinesAsTheTableSays) {
  const Case cases[] = {
      {"nothing", 100, {}, 6, {0, 0}, {}},
      {"one that fits", 100, {{40, 10}}, 6, {40, 10}, {{0, 0}}},
      {"one as wide as the width", 100, {{100, 10}}, 6, {100, 10}, {{0, 0}}},
      {"one wider than the width", 100, {{150, 10}}, 6, {150, 10}, {{0, 0}}},
      {"two that just fit", 100, {{47, 10}, {47, 10}}, 6, {100, 10}, {{0, 0}, {53, 0}}},
      {"two that just do not", 99, {{47, 10}, {47, 10}}, 6, {47, 26}, {{0, 0}, {0, 16}}},
      {"the tallest decides where the next line starts",
       100,
       {{30, 10}, {30, 25}, {30, 5}, {30, 10}},
       5,
       {100, 40},
       {{0, 0}, {35, 0}, {70, 0}, {0, 30}}},
      {"a wide one after another is on a line of its own",
       100,
       {{30, 10}, {150, 10}, {30, 10}},
       6,
       {150, 42},
       {{0, 0}, {0, 16}, {0, 32}}},
      {"no width: one line", std::nullopt, {{90, 10}, {90, 20}}, 6, {186, 20}, {{0, 0}, {96, 0}}},
      {"no width to speak of", 0, {{5, 10}, {5, 10}}, 6, {5, 26}, {{0, 0}, {0, 16}}},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(flowSize(each.width, each.children, each.spacing), each.size) << each.name;
    const double width = each.width.value_or(1e9);
    EXPECT_THAT(flowPlaces({0, 0, width}, each.children, each.spacing), ::testing::ContainerEq(each.places))
        << each.name;
  }
}

// The arrangement told in another way: split into lines first, then stack the lines.
struct Reference {
  FlowSize size;
  Places places;
};

Reference arrange(double left, double top, double width, const Sizes& children, double spacing) {
  std::vector<Sizes> lines;
  double used = 0;
  for (const FlowSize& child : children) {
    const bool fits = !lines.empty() && used + spacing + child.width <= width;
    // Children of no width at the start of a line do not make it a begun one unless spacing does.
    const bool joins = fits || (!lines.empty() && used + spacing <= 0);
    if (!joins) lines.emplace_back();
    used = lines.back().empty() ? child.width : used + spacing + child.width;
    lines.back().push_back(child);
  }
  Reference result;
  double y = top;
  for (const Sizes& line : lines) {
    double x = left;
    double height = 0;
    for (const FlowSize& child : line) {
      result.places.push_back({x, y});
      result.size.width = std::max(result.size.width, x - left + child.width);
      x += child.width + spacing;
      height = std::max(height, child.height);
    }
    result.size.height = y - top + height;
    y += height + spacing;
  }
  return result;
}

TEST(Flow, EqualsThePlainReferenceOnAnyChildren) {
  std::mt19937 random(20261121); // NOLINT(bugprone-random-generator-seed): the same cases on every run
  const auto number = [&](int low, int high) {
    return static_cast<double>(std::uniform_int_distribution<int>(low, high)(random));
  };
  for (int round = 0; round < 5000; ++round) {
    const double width = number(0, 300);
    const double spacing = number(1, 12);
    const double left = number(-50, 50);
    const double top = number(-50, 50);
    Sizes children(static_cast<std::size_t>(number(0, 30)));
    for (FlowSize& child : children) child = {number(0, 120), number(0, 40)};
    const Reference reference = arrange(left, top, width, children, spacing);
    ASSERT_EQ(flowSize(width, children, spacing), reference.size) << "round " << round;
    ASSERT_THAT(flowPlaces({left, top, left + width}, children, spacing),
                ::testing::ContainerEq(reference.places))
        << "round " << round;
  }
}

} // namespace
} // namespace vantle
