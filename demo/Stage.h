// SPDX-License-Identifier: MIT
#pragma once

#include "demo/Scheduling.h"
#include "tests/support/Logind.h"
#include "tests/support/NotificationDaemon.h"
#include "tests/support/SoundServer.h"
#include "tests/support/VirtualDesktop.h"

#include <chrono>
#include <map>
#include <memory>
#include <optional>
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

  Stage();

  desktop::VirtualDesktop& screen() { return m_desktop; }
  // Neither of these has the game.
  const std::vector<App>& apps() const { return m_apps; }
  const std::vector<App>& usefulApps() const {
    return m_usefulApps;
  }                                              // one that is heard, one that keeps awake
  const App& app(const std::string& name) const; // one of either
  // Why this machine shows no app that keeps it awake, or none that is heard; empty where it does.
  const std::string& whyNoLoginDaemon() const { return m_whyNoLoginDaemon; }
  const std::string& whyNoSound() const { return m_whyNoSound; }
  App& game() { return m_game; }

  void startGame();
  void startVantle(const std::string& program);
  desktop::Program& vantle() { return *m_vantle; }
  std::string journal() const;
  bool showPanel(); // as an app menu does; true when it can be seen
  void hidePanel();

  long soundBreaks() const { return toneSaid("break"); } // of the tone, so far; none without sound
  desktop::NotificationDaemon& notices() { return m_notices; }
  desktop::Program& startMemoryPressure(); // of the whole machine, in the kernel's eyes

  std::map<std::string, AppState> states() const; // of the apps, by name
  // How much of one processor each used over the time, by name; the game included.
  std::map<std::string, double> processorShares(std::chrono::milliseconds duration) const;

 private:
  App start(const std::string& name, std::vector<std::string> command);
  // A terminal window that is an app of its own, with its own desktop file.
  App startInTerminal(const std::string& name, const std::string& place, const std::string& script);
  void startSound();
  void startLoginDaemon();
  void startMusic();
  void startDownload();
  long toneSaid(const std::string& word) const;

  desktop::VirtualDesktop m_desktop;
  std::optional<desktop::SoundServer> m_sound; // absent where none starts
  desktop::NotificationDaemon m_notices{m_desktop};
  std::optional<desktop::Logind> m_logind; // absent as well where the machine's own serves
  std::string m_whyNoLoginDaemon;
  std::string m_whyNoSound;
  std::vector<App> m_apps;
  std::vector<App> m_usefulApps;
  App m_game;
  desktop::Program* m_vantle = nullptr;
};

} // namespace vantle::demo
