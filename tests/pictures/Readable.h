// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"

#include <QImage>
#include <QQuickItem>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace vantle::pictures {

// Whether the texts of a view can be read on its picture: a contrast of 4.5 to 1 between each text's colour
// and the ground that the picture shows under it. And whether its cards stand out from the ground around
// them.
struct Findings {
  int texts = 0;
  int unreadable = 0;
  int faintCards = 0;
  double leastOnAccent = 21; // white on the accent where the design asks for just that, whatever the accent
};

Findings checkTexts(const QQuickItem& view, const QImage& picture);

// Waits in the event loop; a guard keeps a broken view from hanging it.
bool waitFor(const std::function<bool()>& holds);

// Keeps the picture and says what was found; false when a text in it cannot be read or too few are there, or
// a card does not stand out.
bool keep(const QQuickItem& view, const QImage& picture, const QString& path, int leastTexts);

// Makes one picture of a state; false when it could not be made or a text in it cannot be read.
using Draw =
    std::function<bool(std::size_t state, AppearanceMode mode, AccentTheme accent, const QString& path)>;

struct Subject {
  std::string name;
  bool inEveryAccent = false;
};

// Draws every state of a window into the folder, in light and dark; at 100 % some of them in every accent as
// well. The status of the program.
int drawAll(const QString& folder, const char* window, const std::vector<Subject>& states, const Draw& draw);

} // namespace vantle::pictures
