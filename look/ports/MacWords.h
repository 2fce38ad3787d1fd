// SPDX-License-Identifier: MIT
#pragma once

#include "look/ports/PlaceWords.h"

#include <QtGlobal>

namespace vantle {

inline constexpr PlaceWords macWords{.computer = QT_TRANSLATE_NOOP("Place", "Mac"),
                                     .store = QT_TRANSLATE_NOOP("Place", "App Store"),
                                     .bar = QT_TRANSLATE_NOOP("Place", "menu bar panel"),
                                     .cores = QT_TRANSLATE_NOOP("Place", "the efficiency cores")};

} // namespace vantle
