// SPDX-License-Identifier: MIT
#pragma once

#include "look/ports/PlaceWords.h"

namespace vantle {

// Categories are those of the app menu's entries. Only some machines have cores of two kinds; where the
// others go instead has no name, so the text says what it is to the apps.
inline constexpr PlaceWords linuxWords{
    .computer = "computer", .store = "app menu", .bar = "panel", .cores = "the background"};

} // namespace vantle
