// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <vector>

namespace vantle {

// The program that a script becomes, and what is certain of its command line.
struct ScriptsProgram {
  std::string program; // a path, or a name that PATH finds; empty where the script does not tell
  std::vector<std::string> arguments{}; // in these words, right after the program
  bool takesMore = false;               // what the script is given follows them
  std::string folder{};                 // that the program is started in, if the script has gone to one
  bool operator==(const ScriptsProgram&) const = default;
};

// The one program that a shell's script becomes, if it says so in full: `exec /opt/game/run "$@"`,
// `exec engine game.pak`, or a program beside it after `cd "$(dirname "$0")"`. `folder` is the one that the
// script stands in.
ScriptsProgram programOfScript(const std::string& script, const std::string& folder);

} // namespace vantle
