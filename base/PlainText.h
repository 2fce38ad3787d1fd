// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vantle {

// A text from outside, fit for a terminal, a log or a variable: well-formed UTF-8 on one line. Control
// characters of every kind and line separators become "?"; what is not seen, or turns the direction of the
// text around it, is left out. What is longer than so many characters is cut, and ends with "…"; a text of
// which nothing is left is "?".
std::string plainText(std::string_view bytes, std::size_t longest = 300);

} // namespace vantle
