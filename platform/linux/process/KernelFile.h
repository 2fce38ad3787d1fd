// SPDX-License-Identifier: MIT
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// A file of /proc or /sys as text; absent when it cannot be read. At most 64 KB, which no file that is read
// this way reaches.
std::optional<std::string> readKernelFile(const std::string& path);
std::optional<std::string> readKernelFile(int folder, const char* path);

// Where a link of /proc leads; absent when there is no such link or it may not be read.
std::optional<std::string> readKernelLink(const std::string& path);
std::optional<std::string> readKernelLink(int folder, const char* path);

// What the kernel puts behind the path of a program's file that was deleted, or replaced by an update.
inline constexpr std::string_view deletedMark = " (deleted)";
std::string withoutDeletedMark(std::string path);

} // namespace vantle
