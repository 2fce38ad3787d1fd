// SPDX-License-Identifier: MIT
#pragma once

#include "demo/Screen.h"

#include <filesystem>

namespace vantle::demo {

// True when all that the report claims was seen to hold.
bool runDemo(const Screen::Kind& kind, const std::filesystem::path& program,
             const std::filesystem::path& folder);

} // namespace vantle::demo
