// SPDX-License-Identifier: MIT
#include "look/Colors.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <gtest/gtest.h>

namespace vantle {
namespace {

constexpr double readable = 4.5;

double luminance(const QColor& color) {
  const auto linear = [](double c) { return c <= 0.04045 ? c / 12.92 : std::pow((c + 0.055) / 1.055, 2.4); };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
  const double a = luminance(one) + 0.05;
  const double b = luminance(other) + 0.05;
  return std::max(a, b) / std::min(a, b);
}

QColor tinted(const QColor& ground, const QColor& tint, float opacity) {
  const auto mix = [&](float under, float over) { return under * (1 - opacity) + over * opacity; };
  return QColor::fromRgbF(mix(ground.redF(), tint.redF()), mix(ground.greenF(), tint.greenF()),
                          mix(ground.blueF(), tint.blueF()));
}

TEST(Colors, TextsCanBeReadOnEveryGround) {
  for (const bool dark : {false, true}) {
    const Colors& colors = colorsFor(dark);
    for (const QColor& text : {colors.primary, colors.secondary, colors.green, colors.orange, colors.red})
      EXPECT_GE(contrast(text, colors.control), readable) << dark << " " << text.name().toStdString();
    for (const AccentTheme accent : allAccentThemes) {
      // The strongest tints there are: of the panel, and of the settings' sidebar and pane.
      for (const float opacity : dark ? std::array{0.18F, 0.2F} : std::array{0.1F, 0.12F}) {
        const QColor ground = tinted(colors.surface, accentColor(accent), opacity);
        for (const QColor& text : {colors.primary, colors.secondary})
          EXPECT_GE(contrast(text, ground), readable) << dark << " " << rawValue(accent);
      }
      const QColor sidebar = tinted(colors.surface, accentColor(accent), dark ? 0.24F : 0.16F);
      EXPECT_GE(contrast(colors.primary, sidebar), readable) << dark << " " << rawValue(accent);
    }
  }
}

TEST(Colors, CardsStandOutFromEveryGround) {
  for (const bool dark : {false, true}) {
    const Colors& colors = colorsFor(dark);
    for (const AccentTheme accent : allAccentThemes) {
      for (const float opacity : dark ? std::array{0.18F, 0.2F} : std::array{0.1F, 0.12F}) {
        const QColor ground = tinted(colors.surface, accentColor(accent), opacity);
        EXPECT_GE(contrast(colors.control, ground), 1.2) << dark << " " << rawValue(accent);
      }
    }
  }
}

TEST(Colors, ControlsStandOutFromTheirCard) {
  constexpr double visible = 3;
  for (const bool dark : {false, true}) {
    const Colors& colors = colorsFor(dark);
    EXPECT_GE(contrast(colors.outline, colors.control), visible) << dark;
    for (const AccentTheme accent : allAccentThemes) {
      const bool standsOut = contrast(accentColor(accent), colors.control) >= visible;
      EXPECT_EQ(accentOutline(accent, dark), standsOut ? QColor(Qt::transparent) : colors.outline)
          << dark << " " << rawValue(accent);
    }
  }
}

TEST(Colors, WhiteCanBeReadOnTheAccentUnderText) {
  for (const AccentTheme accent : allAccentThemes) {
    const QColor under = accentUnderText(accent);
    EXPECT_GE(contrast(Qt::white, under), readable) << rawValue(accent);
    const bool wasReadable = contrast(Qt::white, accentColor(accent)) >= readable;
    EXPECT_EQ(under == accentColor(accent), wasReadable) << rawValue(accent);
    EXPECT_LT(std::abs(under.hue() - accentColor(accent).hue()), 6) << rawValue(accent);
  }
}

} // namespace
} // namespace vantle
