// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace vantle {

// Well-formed UTF-8 from any bytes: each maximal malformed sequence becomes one U+FFFD.
std::string cleanUtf8(std::string_view bytes);

} // namespace vantle
