// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// A letter of a variable's name.
bool isNamePart(char letter);

// Of "NAME=value" the length of the name; 0 for anything else.
std::size_t assignedName(std::string_view word);

struct ShellCommand {
  std::vector<std::string> words; // without what it reads from and writes to
  std::string sequel;             // "&&", "||", ";" or "&"; empty at the end
};

// The commands of a plain list such as "cd FOLDER && exec ./run "$@" >/dev/null": `given` are the words that
// "$@" stands for, `home` is $HOME and ~. Absent for all that only a shell understands (pipes, substitutions,
// other variables, patterns, groups), and for $HOME while `home` is empty.
std::optional<std::vector<ShellCommand>>
shellCommands(std::string_view text, const std::vector<std::string>& given, const std::string& home);

} // namespace vantle
