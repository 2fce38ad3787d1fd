// SPDX-License-Identifier: MIT
#import "desktop/darwin/Screens.h"

namespace vantle {

std::optional<QRect> placeOnScreens(NSRect place) {
  NSArray* const screens = [NSScreen screens];
  if ([screens count] == 0) return std::nullopt;
  NSScreen* const first = [screens objectAtIndex:0];
  const CGFloat top = [first frame].size.height - (place.origin.y + place.size.height);
  return QRectF(place.origin.x, top, place.size.width, place.size.height).toAlignedRect();
}

} // namespace vantle
