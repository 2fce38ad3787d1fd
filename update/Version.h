// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace vantle {

// Without the letters v and V and the blanks at both ends; other white space stays.
std::string trimmedVersion(std::string_view version);

// Whether version `candidate` is newer than version `current`: number by number between the full stops, a
// missing number counting as 0. A part counts by its leading numerals (12rc1 is 12); what cannot be read as
// a 64-bit number of ASCII digits counts as 0. Texts are UTF-8.
bool isNewer(std::string_view candidate, std::string_view current);

} // namespace vantle
