// SPDX-License-Identifier: MIT
#pragma once

#include <chrono>
#include <functional>

namespace vantle::desktop {

// Long enough for any busy machine; it only bounds a test that would otherwise hang.
constexpr std::chrono::seconds guardLimit{30};

// Waits for something that another program brings about; true as soon as it holds. VANTLE_PATIENCE multiplies
// every limit and the pauses between two looks, for machines that are always slow, as emulated ones are.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds limit = guardLimit);

// The same, but a condition that never holds is an exception that names it.
void require(const char* what, const std::function<bool()>& condition,
             std::chrono::milliseconds limit = guardLimit);

} // namespace vantle::desktop
