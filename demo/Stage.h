// SPDX-License-Identifier: MIT
#pragma once

#include "demo/Scheduling.h"
#include "engine/ports/ProcessTable.h"
#include "tests/desktop/harness/VirtualDesktop.h"

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace vantle::demo {

// The desktop of the demo with its apps, each started as a desktop starts one: in a session of its own.
class Stage {
 public:
  struct App {
    std::string name;
    desktop::Program* program = nullptr;
    Pid pid() const { return program->pid(); }
  };

  explicit Stage(const ProcessTable& processes);

  desktop::VirtualDesktop& screen() { return m_desktop; }
  const std::vector<App>& apps() const { return m_apps; } // the game is none of them
  const App& app(const std::string& name) const;
  App& game() { return m_game; }

  void startGame();
  void startVantle(const std::string& program);
  desktop::Program& vantle() { return *m_vantle; }
  std::string journal() const;

  std::map<std::string, AppState> states() const; // of the apps, by name
  // How much of one processor each used over the time, by name; the game included.
  std::map<std::string, double> processorShares(std::chrono::milliseconds duration) const;

 private:
  void start(const std::string& name, std::vector<std::string> command,
             const desktop::Environment& added = {});

  const ProcessTable& m_processes;
  desktop::VirtualDesktop m_desktop;
  std::vector<App> m_apps;
  App m_game;
  desktop::Program* m_vantle = nullptr;
};

} // namespace vantle::demo
