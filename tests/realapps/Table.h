// SPDX-License-Identifier: MIT
#pragma once

#include "tests/realapps/Trial.h"

#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace vantle::realapps {

// The rows of one program are kept in a file, so that some can be played anew.
std::vector<Row> keptRows(const std::filesystem::path& file);
void keepRows(const std::filesystem::path& file, const std::vector<Row>& rows);

// All kept rows as a page for people, in the order of the list of programs.
void writePage(std::ostream& out, const std::filesystem::path& folder);
// The part of it that tells of machines with a user manager, from its heading on.
void writeUnits(std::ostream& out, const std::filesystem::path& folder);
extern const char* const headingOfUnits;

// What the unit tests know of the right ones, a line each.
void writeRecord(std::ostream& out, const std::filesystem::path& folder);

} // namespace vantle::realapps
