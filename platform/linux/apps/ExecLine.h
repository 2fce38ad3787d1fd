// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace vantle {

// As a shell takes a line apart; empty when it cannot.
std::vector<std::string> shellWords(const std::string& line);

// An Exec line taken apart: the program and its arguments, without the places for files and without programs
// that only run it in another way ("env A=b", "nice -n 5", "gamemoderun"). Empty when it is not well formed.
std::vector<std::string> programOf(const std::string& exec);

// The same, where a shell is told in words to start it in its folder ("sh -c 'cd FOLDER && ./run'").
std::vector<std::string> innerProgramOf(const std::string& exec);

} // namespace vantle
