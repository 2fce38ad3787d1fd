// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>
#include <QSize>
#include <cstddef>
#include <utility>
#include <vector>

namespace vantle {

// Where the panel opens: right under the anchor, or over it in the lower half of the screen, or beside it
// when the anchor is in a bar at the left or right edge. Always within `available`, the part of the screen
// that bars leave free, as far as it fits. All in one coordinate system.
QRect panelPlace(const QRect& anchor, const QSize& panel, const QRect& screen, const QRect& available);

// Where the tray's icon most likely is when nobody tells: at the right end of the bar at the top, else of the
// one at the bottom, else at the lower end of the one at a side; in the upper right corner where no bar is.
QRect likelyIcon(const QRect& screen, const QRect& available);

// Which of the screens the tray most likely is on, the first of which is the main one: that one, unless bars
// take room from another one alone. Each with the part of it that is free; not empty.
std::size_t likelyScreen(const std::vector<std::pair<QRect, QRect>>& screens);

// Where the icon most likely is whose menu the pointer has just left: as far along as the pointer, in the bar
// that is nearest to it. The pointer itself where no bar takes any room.
QRect iconNear(const QPoint& pointer, const QRect& screen, const QRect& available);

} // namespace vantle
