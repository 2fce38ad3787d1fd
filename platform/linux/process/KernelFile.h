// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>

namespace vantle {

// A file of /proc or /sys as text; absent when it cannot be read. At most 64 KB, which no file that is read
// this way reaches.
std::optional<std::string> readKernelFile(const std::string& path);
std::optional<std::string> readKernelFile(int folder, const char* path);

} // namespace vantle
