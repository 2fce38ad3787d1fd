// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// Takes the first part off a list such as "a:b:c", and the separator behind it. For a loop until the list is
// empty: what ends with the separator has no empty part after it.
std::string_view takePart(std::string_view& list, char separator);
std::vector<std::string> split(std::string_view list, char separator); // all of them
bool holdsPart(std::string_view list, char separator, std::string_view part);

// A to Z only: for names that programs give each other. What people read is the platform's `UnicodeText`.
std::string asciiLowered(std::string_view text);

// Of "/a/b" the "b", and the whole of what holds no slash.
std::string fileNameOf(std::string_view path);
// Of "/a/b" the "/a", of "/a" the "/". Of what holds no slash nothing.
std::string folderOf(std::string_view path);

} // namespace vantle
