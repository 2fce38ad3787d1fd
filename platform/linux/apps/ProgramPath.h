// SPDX-License-Identifier: MIT
#pragma once

#include <string>

namespace vantle {

// Where a desktop finds a program, PATH or not: root's own lacks the folders of the games. A name with a
// leading slash stays as it is; empty for a program that is nowhere.
std::string absolutePath(const std::string& program);

// Whether it is a file that this user may run.
bool isProgram(const std::string& path);

// With all links followed; empty when there is no such file.
std::string realPath(const std::string& path);

} // namespace vantle
