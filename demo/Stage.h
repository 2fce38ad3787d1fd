// SPDX-License-Identifier: MIT
#pragma once

#include "demo/Scheduling.h"
#include "demo/Screen.h"
#include "tests/support/Logind.h"
#include "tests/support/NotificationDaemon.h"
#include "tests/support/SoundServer.h"

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

  explicit Stage(const Screen::Kind& kind);

  Screen& screen() { return *m_screen; }
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

  // On a desktop with native apps it is one, or an X client.
  void startGame(bool native);
  void startVantle(const std::string& program);
  desktop::Program& vantle() { return *m_vantle; }
  std::string journal() const;

  long soundBreaks() const { return toneSaid("break"); } // of the tone, so far; none without sound
  desktop::NotificationDaemon& notices() { return m_notices; }
  desktop::Program& startMemoryPressure(); // of the whole machine, in the kernel's eyes

  std::map<std::string, AppState> states() const; // of the apps, by name
  // How much of one processor each used over the time, by name; the game included.
  std::map<std::string, double> processorShares(std::chrono::milliseconds duration) const;

 private:
  App start(const std::string& name, const Screen::Place& place, std::vector<std::string> command);
  void startSound();
  void startLoginDaemon();
  void startMusic();
  void startDownload();
  long toneSaid(const std::string& word) const;

  std::unique_ptr<Screen> m_screen;
  desktop::PrivateSession& m_session;
  std::optional<desktop::SoundServer> m_sound; // absent where none starts
  desktop::NotificationDaemon m_notices{m_session};
  std::optional<desktop::Logind> m_logind; // absent as well where the machine's own serves
  std::string m_whyNoLoginDaemon;
  std::string m_whyNoSound;
  std::vector<App> m_apps;
  std::vector<App> m_usefulApps;
  App m_game;
  desktop::Program* m_vantle = nullptr;
};

} // namespace vantle::demo
