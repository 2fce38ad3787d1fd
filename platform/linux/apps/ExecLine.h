// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// As a shell takes a line apart; empty when it cannot.
std::vector<std::string> shellWords(const std::string& line);

// An Exec line has its percent signs twice.
std::string singlePercents(std::string_view argument);

// A command line without programs that only run another one in another way ("env A=b", "nice -n 5",
// "gamemoderun", the dynamic loader).
std::vector<std::string> withoutPrefixes(std::vector<std::string> words);

// An Exec line taken apart: the program and its arguments, without the places for files and such programs.
// Empty when it is not well formed.
std::vector<std::string> programOf(const std::string& exec);

// The same, with single percent signs, where a shell is told in words to start it or to become it
// ("sh -c 'cd FOLDER && ./run'", "bash -lc 'export A=b; exec ~/run >/dev/null'").
struct InnerProgram {
  std::vector<std::string> words;
  std::vector<std::string> told; // the shell and what it is given; empty where there is none
};
InnerProgram innerProgramOf(const std::string& exec);

} // namespace vantle
