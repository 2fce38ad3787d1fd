// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"

#include <cstddef>
#include <functional>

namespace vantle {

// Waits at the end of the program until everybody is out of the band, as long as there are fewer of them from
// time to time; true when nobody is left. `tell` is called about once a second, with how many there are.
bool waitUntilAllIsBack(BackgroundBand& band, const std::function<void(std::size_t left)>& tell);

} // namespace vantle
