// SPDX-License-Identifier: MIT
#pragma once

#include "look/ports/PlaceWords.h"

namespace vantle {

inline constexpr PlaceWords macWords{
    .computer = "Mac", .store = "App Store", .bar = "menu bar panel", .cores = "the efficiency cores"};

} // namespace vantle
