// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/VirtualDesktop.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace vantle::realapps {

// The last two are how GNOME and Plasma start apps, and need a user manager.
enum class Way { command, desktopFile, menu, terminal, scope, service };
inline constexpr std::array allWays{Way::command,  Way::desktopFile, Way::menu,
                                    Way::terminal, Way::scope,       Way::service};
const char* textOf(Way way);
inline bool isUnit(Way way) { return way == Way::scope || way == Way::service; }

enum class Kind { game, app };

// One real program, and what Vantle ought to make of it.
struct Program {
  std::string key; // of the command line of this proof
  std::string family;
  std::string package; // whose version the table names
  Kind kind = Kind::game;
  std::vector<std::string> command;
  std::string file; // its desktop file; it is to be found as that
  // Where it is right to be found as something else: other desktop files, or "–" for none, under that name.
  std::vector<std::string> others = {};
  std::string name = {};
  std::string title = {}; // part of the title of the window that is meant, where it shows others before
  // What has to be there before: files, a desktop file of its own, settings.
  std::function<void(desktop::VirtualDesktop&)> prepare = {};
  std::function<void(desktop::VirtualDesktop&)> beside = {}; // what runs already, once the desktop is there
  // What the bus starts for its desktop file, and the name that it then has there: the stage's bus starts
  // nothing.
  std::vector<std::string> service = {};
  std::string busName = {};
  bool isHeard = false;
};

const std::vector<Program>& programs();

// Why what was seen is so, in words; empty where nobody has looked into it.
std::string reasonFor(const Program& program, Way way, const std::string& seen);

} // namespace vantle::realapps
