// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>
#include <QSize>

namespace vantle {

// Where the panel opens: right under the anchor, or over it in the lower half of the screen, or beside it
// when the anchor is in a bar at the left or right edge. Always within `available`, the part of the screen
// that bars leave free, as far as it fits. All in one coordinate system.
QRect panelPlace(const QRect& anchor, const QSize& panel, const QRect& screen, const QRect& available);

} // namespace vantle
