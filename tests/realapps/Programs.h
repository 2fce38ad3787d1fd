// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/VirtualDesktop.h"

#include <array>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace vantle::realapps {

enum class Way { command, desktopFile, menu, terminal };
inline constexpr std::array allWays{Way::command, Way::desktopFile, Way::menu, Way::terminal};
const char* textOf(Way way);

enum class Kind { game, app };

// One real program, and what Vantle ought to make of it.
struct Program {
  std::string key; // of the command line of this proof
  std::string family;
  std::string package; // whose version the table names
  Kind kind = Kind::game;
  std::vector<std::string> command;
  std::string id; // its desktop file, as which it is to be found
  std::string name = {}; // that of its desktop file where there is nothing else
  // What has to be there before: files, a desktop file of its own, settings.
  std::function<void(desktop::VirtualDesktop&)> prepare = {};
  bool isHeard = false;
  // In words, for ways in which it is not right; of a way, or of all when they are alike.
  std::map<Way, std::string> known = {};
  // Why it cannot be tried in this place; empty where it can.
  std::function<std::string()> whyNot = {};
};

const std::vector<Program>& programs();

} // namespace vantle::realapps
