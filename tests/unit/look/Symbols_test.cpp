// SPDX-License-Identifier: MIT
#include "look/SymbolDrawing.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace vantle {
namespace {

struct Ink {
  int drawn = 0; // pixels that are mostly covered
  int clear = 0;
  bool inOneColor = true;
};

Ink inkOf(const QImage& image, const QColor& color) {
  constexpr int tolerance = 12; // of a component, from storing it multiplied by its opacity
  Ink ink;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x) {
      const QColor pixel = image.pixelColor(x, y);
      ink.clear += pixel.alpha() == 0 ? 1 : 0;
      if (pixel.alpha() <= 128) continue;
      ++ink.drawn;
      ink.inOneColor = ink.inOneColor && std::abs(pixel.red() - color.red()) < tolerance &&
                       std::abs(pixel.green() - color.green()) < tolerance &&
                       std::abs(pixel.blue() - color.blue()) < tolerance;
    }
  }
  return ink;
}

TEST(Symbols, AreDrawnInTheirColorAtEverySize) {
  for (const char* name : {"bolt", "bolt.fill", "gearshape", "paintpalette", "arrow.triangle.2.circlepath",
                           "info.circle", "minus.circle.fill", "checkmark.circle.fill",
                           "arrow.down.circle.fill", "exclamationmark.triangle.fill"}) {
    for (const int size : {16, 22, 24, 32, 48, 64}) {
      const QColor color(10, 200, 30);
      const QImage image = symbolImage(QLatin1String(name), color, size);
      EXPECT_EQ(image.size(), QSize(size, size));
      const Ink ink = inkOf(image, color);
      EXPECT_GT(ink.drawn, size) << name << " at " << size;
      EXPECT_GT(ink.clear, size) << name << " at " << size;
      EXPECT_TRUE(ink.inOneColor) << name << " at " << size;
    }
  }
}

TEST(Symbols, AnUnknownNameDrawsNothing) {
  EXPECT_FALSE(SymbolDrawing(QStringLiteral("no such symbol"), Qt::red).isValid());
  const QImage image = symbolImage(QStringLiteral("../../etc/passwd"), Qt::red, 16);
  EXPECT_EQ(inkOf(image, Qt::red).clear, 16 * 16);
}

} // namespace
} // namespace vantle
