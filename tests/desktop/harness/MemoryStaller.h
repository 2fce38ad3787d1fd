// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vantle::desktop {

// The path of a program that brings about real memory pressure (tests/desktop/programs/MemoryStaller.cpp).
std::string memoryStaller();

} // namespace vantle::desktop
