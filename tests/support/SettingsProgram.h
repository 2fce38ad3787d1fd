// SPDX-License-Identifier: MIT
#pragma once

#include "tests/support/VirtualDesktop.h"

#include <filesystem>
#include <string>

namespace vantle::desktop {

// Drives the program of programs/SettingsWindow.cpp: has it obey lines, and reads what it says.
class SettingsProgram {
 public:
  SettingsProgram(VirtualDesktop& desktop, const std::string& path);

  Program& program() { return m_program; }
  // Has it obey the line, and returns what it has said since the last one.
  std::string tells(const std::string& line);
  void say(const std::string& line) { tells(line); }
  bool isActive() { return tells("state").find(", active") != std::string::npos; }
  std::string log() const; // all that it has said

 private:
  std::filesystem::path m_logs;
  std::filesystem::path m_pipe;
  Program& m_program;
  std::string m_said;
};

} // namespace vantle::desktop
