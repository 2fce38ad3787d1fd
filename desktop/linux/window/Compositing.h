// SPDX-License-Identifier: MIT
#pragma once

#include "platform/shared/EventLoop.h"

#include <chrono>
#include <string>

namespace vantle {

// Whether somebody composes the first screen of that X server. A server that does not answer in time counts
// as one that has nobody. An empty name is the display in DISPLAY.
bool screenIsComposited(EventLoop& loop, const std::string& display = {},
                        std::chrono::milliseconds limit = std::chrono::milliseconds(100));

} // namespace vantle
