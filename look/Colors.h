// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"

#include <QColor>
#include <QPalette>

namespace vantle {

// The colours of one scheme, by what they are for. Every text colour has a contrast of at least 4.5 to 1 on
// `surface` and on `control`, tinted with any accent. Cards stand out from their ground at least 1.2 to 1,
// whatever its tint: on a Mac, too, they are the darker of the two in the dark.
struct Colors {
  QColor surface;   // a window's ground, under the tint
  QColor control;   // cards
  QColor edge;      // around cards
  QColor primary;   // text
  QColor secondary; // text of lesser weight
  QColor tertiary;  // marks that are not text
  QColor outline;   // of controls, and a switch that is off: at least 3 to 1 on `control`
  QColor divider;
  QColor green;
  QColor orange;
  QColor red;
};

const Colors& colorsFor(bool dark);
QPalette paletteFor(bool dark);
QColor accentColor(AccentTheme theme);

// The accent, as much darker as white text on it needs for a contrast of 4.5 to 1; most need nothing.
QColor accentUnderText(AccentTheme theme);

// The edge of a control that is filled with the accent: none where the accent has 3 to 1 on a card by itself.
QColor accentOutline(AccentTheme theme, bool dark);

} // namespace vantle
