// SPDX-License-Identifier: MIT
#pragma once

#include <string_view>

namespace vantle {

// True for the programs that everything else on a desktop waits for: sound servers, compositors and window
// managers, X servers, session and user managers, message buses. By the kernel's name of the process, which
// it cuts off after 15 bytes. A program that takes such a name only spares itself.
bool isSystemPart(std::string_view processName);

} // namespace vantle
