// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>
#include <QRect>
#include <optional>

namespace vantle {

// A place on the screens as the toolkit counts: from the upper left corner of the first screen, where the
// system counts from its lower left one. Both in points. Absent between two screens, when there is none.
std::optional<QRect> placeOnScreens(NSRect place);

} // namespace vantle
