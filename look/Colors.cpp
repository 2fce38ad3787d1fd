// SPDX-License-Identifier: MIT
#include "look/Colors.h"

#include <algorithm>
#include <cmath>

namespace vantle {
namespace {

// Relative luminance and contrast as the web's accessibility guidelines (WCAG 2.1) define them.
double linear(double component) {
  return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrastBetween(const QColor& one, const QColor& other) {
  const double a = luminance(one);
  const double b = luminance(other);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

const Colors& lightColors() {
  static const Colors colors{
      .surface = QColor(0xf1, 0xf1, 0xf4),
      .control = QColor(0xff, 0xff, 0xff),
      .edge = QColor(0, 0, 0, 15), // 0.06
      .primary = QColor(0x1c, 0x1c, 0x20),
      .secondary = QColor(0x58, 0x58, 0x60),
      .tertiary = QColor(0xa0, 0xa0, 0xa8),
      .outline = QColor(0x8e, 0x8e, 0x96),
      .divider = QColor(0, 0, 0, 23),
      .green = QColor(0x1a, 0x7a, 0x34),
      .orange = QColor(0xa8, 0x4c, 0x00),
      .red = QColor(0xc4, 0x22, 0x2c),
  };
  return colors;
}

const Colors& darkColors() {
  static const Colors colors{
      .surface = QColor(0x22, 0x22, 0x26),
      .control = QColor(0x16, 0x16, 0x19),
      .edge = QColor(0, 0, 0, 15),
      .primary = QColor(0xf2, 0xf2, 0xf5),
      .secondary = QColor(0xb4, 0xb4, 0xbc),
      .tertiary = QColor(0x78, 0x78, 0x80),
      .outline = QColor(0x70, 0x70, 0x78),
      .divider = QColor(255, 255, 255, 26),
      .green = QColor(0x3f, 0xd1, 0x64),
      .orange = QColor(0xff, 0xa2, 0x2e),
      .red = QColor(0xff, 0x7d, 0x74),
  };
  return colors;
}

} // namespace

const Colors& colorsFor(bool dark) { return dark ? darkColors() : lightColors(); }

QPalette paletteFor(bool dark) {
  const Colors& colors = colorsFor(dark);
  QPalette palette(colors.control, colors.surface);
  palette.setColor(QPalette::WindowText, colors.primary);
  palette.setColor(QPalette::Text, colors.primary);
  palette.setColor(QPalette::ButtonText, colors.primary);
  palette.setColor(QPalette::Base, colors.control);
  palette.setColor(QPalette::ToolTipBase, colors.control);
  palette.setColor(QPalette::ToolTipText, colors.primary);
  palette.setColor(QPalette::PlaceholderText, colors.secondary);
  return palette;
}

QColor accentColor(AccentTheme theme) {
  const AccentColor color = colorOf(theme);
  return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                          static_cast<float>(color.blue));
}

QColor accentUnderText(AccentTheme theme) {
  constexpr double leastContrast = 4.5;
  const QColor accent = accentColor(theme);
  QColor color = accent;
  for (int percent = 101; contrastBetween(color, Qt::white) < leastContrast; ++percent)
    color = accent.darker(percent);
  return color;
}

QColor accentOutline(AccentTheme theme, bool dark) {
  constexpr double leastContrast = 3;
  const Colors& colors = colorsFor(dark);
  return contrastBetween(accentColor(theme), colors.control) < leastContrast ? colors.outline
                                                                             : Qt::transparent;
}

} // namespace vantle
