// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>

namespace vantle::demo {

// True when all that the report claims was seen to hold.
bool runDemo(const std::filesystem::path& program, const std::filesystem::path& folder);

} // namespace vantle::demo
