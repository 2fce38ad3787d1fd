// SPDX-License-Identifier: MIT
#pragma once

#include "base/Json.h"
#include "tests/realapps/Programs.h"
#include "tests/support/SoundServer.h"
#include "tests/support/VirtualDesktop.h"

#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vantle::realapps {

// What a program is started on: a desktop that knows no user manager, or one whose user manager is the real
// one of a machine that nobody needs, bus and folder of the login session with it.
enum class Surroundings { none, userManager };

// What the units above a process have to say of it.
struct UnitState {
  bool isIdle = false; // runs only when nobody else wants to
  std::string weight = "100";
  bool operator==(const UnitState&) const = default;
};
UnitState unitState(Pid pid);

// A private desktop for one program: a window manager with the program in its menu, a busy terminal that has
// to make way, and the build of Vantle that is tried.
class Stage {
 public:
  // Of a program that is started as a unit everything else is one as well, but for the window manager.
  Stage(const Program& program, const std::filesystem::path& vantle, Way way, Surroundings surroundings);

  desktop::VirtualDesktop& desktop() { return m_desktop; }
  const desktop::Program& witness() const { return *m_witness; }

  void start(const Program& program);
  // With all rules, or with none and that game alone which `startGame` brings.
  void startVantle(bool withRules);
  void endVantle();
  Json status();
  std::string vantle(const std::vector<std::string>& arguments); // what the command says
  desktop::Program& startGame();                                 // in front when this returns
  std::string outputOf(const std::vector<std::string>& command);

  // What lived here before the program, and what it needs beside it, were started.
  const std::set<Pid>& furniture() const { return m_furniture; }
  // Everything that lives here but Vantle and that game, the terminal of `start` among it.
  std::set<Pid> processes();
  // Of these the ones that a terminal of `start` consists of.
  const std::set<Pid>& starters() const { return m_starters; }
  std::string desktopFileOf(const std::string& id) const; // its path; empty when it is not installed

 private:
  static desktop::VirtualDesktop::Options options(Surroundings surroundings);
  desktop::Program& launch(const std::string& id, std::vector<std::string> command); // of the stage's own
  bool belongsHere(Pid pid, const std::string& name) const;
  void writeMenu();
  void chooseFromMenu();

  Way m_way;
  Surroundings m_surroundings;
  desktop::VirtualDesktop m_desktop;
  std::optional<desktop::SoundServer> m_sound;
  std::filesystem::path m_program;
  std::vector<std::string> m_command; // of the program that is tried
  std::string m_activated;            // what the bus starts of it, as the kernel calls it
  int m_units = 0;
  desktop::Program* m_witness = nullptr;
  desktop::Program* m_vantle = nullptr;
  desktop::Program* m_game = nullptr;
  std::set<Pid> m_starters;
  std::set<Pid> m_furniture;
};

} // namespace vantle::realapps
