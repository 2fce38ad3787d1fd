// SPDX-License-Identifier: MIT
#pragma once

#include <QRect>

namespace vantle {

// A rectangle in the display server's pixels, in the toolkit's device-independent coordinates.
QRect fromNative(const QRect& native);

} // namespace vantle
