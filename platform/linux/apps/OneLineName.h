// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace vantle {

// A name from somebody else's bytes, fit to be shown on one line: well-formed UTF-8, control characters as
// spaces, none at the ends, and at most 200 characters.
std::string oneLineName(std::string_view bytes);

} // namespace vantle
