// SPDX-License-Identifier: MIT
// How often a tone breaks off while a game and two other apps keep every processor busy: with nothing done,
// during a Boost, and during a Boost of a Vantle that does not hear the tone and so slows its player down.
// Every two seconds the person turns to another app, or back to the game; breaks of the first quarter of a
// second after that are told apart: an eighth would fall there by chance. It also tells after how many turns
// the player was slowed down. The desktop, the sound server and the program are real; the player has 50 ms of
// sound ahead. The last of the three, for comparison, is tried in the first round alone.
//
// usage: tone [ROUNDS [SECONDS [AHEAD]]]    milliseconds of sound ahead; with less than 50 it breaks off
//                                           more often, so that a difference shows sooner
#include "tests/support/Kernel.h"
#include "tests/support/Props.h"
#include "tests/support/SoundServer.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iterator>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace vantle::bench {
namespace {

using desktop::Environment;
using desktop::Program;
using desktop::require;

bool isSlowed(Pid pid) {
  const auto state = test::threadState(pid);
  return state && isIdleClass(*state);
}

struct Breaks {
  long all = 0;
  long afterTurns = 0;
  long slowedTurns = 0;

  Breaks& operator+=(const Breaks& other) {
    all += other.all;
    afterTurns += other.afterTurns;
    slowedTurns += other.slowedTurns;
    return *this;
  }
};

class Stage {
 public:
  explicit Stage(const std::string& ahead) : m_log(m_desktop.logs() / "tone") {
    m_desktop.installDesktopFile("org.example.Game",
                                 "[Desktop Entry]\nType=Application\nName=Game\nExec=true\n"
                                 "Categories=Game;\nStartupWMClass=Game\n");
    // The one that plays is a child of the app, as in a browser.
    m_music = &app({"xterm", "-e", "/bin/sh", "-c",
                    "exec '" + desktop::tonePlayer() + "' " + ahead + " >'" + m_log + "'"});
    require("the tone", [this] { return said("playing") > 0; });
  }

  void startBusyApps() {
    for (int count = 0; count < 2; ++count) m_busy = &app({desktop::testWindow(), "--burn"});
    m_game = &app({desktop::testWindow(), "--class", "Game", "--burn"});
  }

  long breaksIn(std::chrono::seconds time) const {
    const long before = said("break");
    std::this_thread::sleep_for(time);
    return said("break") - before;
  }

  Breaks breaksInPlay(std::chrono::seconds time) {
    constexpr std::chrono::milliseconds turn{250};
    constexpr std::chrono::milliseconds look{1750};
    const long before = said("break");
    Breaks breaks;
    const auto end = std::chrono::steady_clock::now() + time;
    for (Program* front = m_busy; std::chrono::steady_clock::now() < end;
         front = front == m_game ? m_busy : m_game) {
      const long atTurn = said("break");
      m_desktop.activate(*front);
      std::this_thread::sleep_for(turn);
      breaks.afterTurns += said("break") - atTurn;
      std::this_thread::sleep_for(look);
      if (isSlowed(m_music->pid())) ++breaks.slowedTurns;
    }
    breaks.all = said("break") - before;
    return breaks;
  }

  // During a Boost of a Vantle with that environment; it must come about, and the player be where it should.
  Breaks breaksInBoost(std::chrono::seconds time, const Environment& environment, bool isHeard) {
    m_desktop.activate(*m_music);
    Program& vantle = m_desktop.launch({VANTLE_PROGRAM}, environment);
    m_desktop.waitForBusName("com.halvo.vantle");
    m_desktop.activate(*m_game);
    require("the Boost", [&] { return isSlowed(m_busy->pid()) && isSlowed(m_music->pid()) != isHeard; });
    const Breaks breaks = breaksInPlay(time);
    vantle.signal(SIGTERM);
    vantle.waitForEnd();
    return breaks;
  }

 private:
  Program& app(std::vector<std::string> command) {
    Program& program = m_desktop.launch(std::move(command));
    m_desktop.waitForWindow(program.pid());
    return program;
  }
  long said(const std::string& word) const {
    std::ifstream file(m_log);
    return std::count(std::istream_iterator<std::string>(file), {}, word);
  }

  desktop::VirtualDesktop m_desktop;
  desktop::SoundServer m_sound{m_desktop};
  std::string m_log;
  Program* m_music = nullptr;
  Program* m_busy = nullptr;
  Program* m_game = nullptr;
};

void run(int rounds, std::chrono::seconds time, int ahead) {
  Stage stage(std::to_string(ahead));
  while (stage.breaksIn(std::chrono::seconds(1)) > 0) continue; // those of the beginning
  const long alone = stage.breaksIn(time);
  stage.startBusyApps();
  Breaks nothing;
  Breaks boost;
  Breaks unheard;
  std::string byRound;
  for (int round = 0; round < rounds; ++round) {
    const Breaks before = stage.breaksInPlay(time);
    const Breaks during = stage.breaksInBoost(time, {}, true);
    byRound += " " + std::to_string(before.all) + "/" + std::to_string(during.all);
    nothing += before;
    boost += during;
    if (round > 0) continue;
    unheard = stage.breaksInBoost(
        time, {{"PULSE_SERVER", "unix:/nonexistent"}, {"PIPEWIRE_REMOTE", "/nonexistent"}}, false);
  }
  const auto print = [](const char* what, const Breaks& breaks, long seconds) {
    std::printf("%-36s %4ld times in %ld s, %ld of them right after a turn; slowed down after %ld turns\n",
                what, breaks.all, seconds, breaks.afterTurns, breaks.slowedTurns);
  };
  const long seconds = rounds * time.count();
  std::printf("the tone, %d ms ahead, broke off, with a game and two busy apps on %u processors:\n", ahead,
              std::thread::hardware_concurrency());
  std::printf("%-36s %4ld times in %ld s\n", "alone, without them", alone, time.count());
  print("nothing done", nothing, seconds);
  print("Boost", boost, seconds);
  print("Boost that slows the player as well", unheard, time.count());
  std::printf("nothing done/Boost, by round:%s\n", byRound.c_str());
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) {
  try {
    vantle::bench::run(argc > 1 ? std::max(std::atoi(argv[1]), 1) : 3,
                       std::chrono::seconds(argc > 2 ? std::max(std::atoi(argv[2]), 1) : 10),
                       argc > 3 ? std::max(std::atoi(argv[3]), 1) : 50);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
