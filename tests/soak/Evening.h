// SPDX-License-Identifier: MIT
#pragma once

#include "tests/soak/Flood.h"
#include "tests/soak/Machine.h"
#include "tests/soak/MainLoopWatch.h"
#include "tests/support/SoundServer.h"
#include "tests/support/VirtualDesktop.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <sys/types.h>
#include <vector>

namespace vantle::soak {

// One long random evening: a real desktop, apps and games that come and go, the program that is stopped,
// ended and killed; and the whole machine looked at, by what each process on the stage was born with.
class Evening {
 public:
  struct Options {
    std::chrono::seconds length;
    std::uint64_t seed = 0;
    std::optional<uid_t> user = {}; // whose evening it is, where root may choose
    // Waits so long; false as soon as somebody wants the evening to be over.
    std::function<bool(std::chrono::milliseconds)> pause;
  };

  explicit Evening(Options options);
  Evening(const Evening&) = delete;
  Evening& operator=(const Evening&) = delete;

  void run();
  bool holds() const; // nothing was left slowed, nobody else touched, and there was something to see
  void report() const;

 private:
  using Clock = std::chrono::steady_clock;

  struct App {
    int number = 0;
    std::string kind;
    bool isGame = false;
    desktop::Program* program = nullptr;
    std::uint32_t window = 0;
    std::string role() const { return "app:" + std::to_string(number) + ":" + kind; }
  };
  struct Kind {
    const char* name;
    std::string worker; // its arguments; empty for none
    std::vector<std::string> prefix;
    ThreadSettings settings;
    std::size_t most;
  };
  struct Event {
    const char* name;
    unsigned weight;
    bool (Evening::*play)(); // false when there is nothing to do it with
  };
  struct Figure { // of the program's memory and descriptors
    long first = -1;
    long last = -1;
    long most = -1;
    void note(long value);
  };

  // --- the evening
  void prepare();
  void makeKinds();
  void step();
  void tellOfStalls();
  bool play(const std::vector<Event>& events);
  void say(const std::string& what); // into the history
  std::size_t below(std::size_t count) { return static_cast<std::size_t>(m_random() % count); }
  bool chance(unsigned percent) { return m_random() % 100 < percent; }
  bool pause(std::size_t atMost, std::size_t atLeast = 0);
  double seconds() const;

  // --- apps
  desktop::Program& launch(std::vector<std::string> command, const std::string& role,
                           std::optional<uid_t> user = {});
  bool launchApp();
  bool launchGame();
  bool open(const Kind& kind, bool isGame);
  bool endApp() { return endOne(false); }
  bool endGame() { return endOne(true); }
  bool endOne(bool isGame);
  void end(App& app, int signal);
  bool bringGameToFront() { return bringToFront(true); }
  bool bringAppToFront() { return bringToFront(false); }
  bool bringToFront(bool isGame);
  bool stopApp();
  bool continueApps();
  App* anyOf(bool isGame);
  std::uint32_t front() { return m_desktop->windows().active(); }

  // --- the program
  bool startVantle();
  bool endVantle();
  bool killVantle();
  bool killDuringStart();
  bool startSecondCopy();
  bool startSelfTest();
  bool endSelfTest();
  void awaitSelfTest();
  bool stopVantle();
  void sample();

  // --- the desktop's parts
  bool stopPart();
  bool restartBus();
  bool restartSound();
  bool restartWindowManager();
  bool floodProperties();
  bool floodFront();
  bool floodTrays();
  bool floodBus();
  void during(const std::string& what, desktop::Program& stopped, const std::vector<Event>& events);

  // --- what is true
  bool quiet(); // no Boost, everything must come back
  Machine look();
  std::string deviation(const ProcessSettings& process) const;
  ThreadSettings expected(const ProcessSettings& process) const;
  bool isOfAnApp(const ProcessSettings& process) const { return process.role.starts_with("app:"); }
  // Those of one kind (apps, or everybody else) that are not as they were born.
  std::map<Pid, std::string> deviations(const Machine& machine, bool ofApps) const;
  void checkForeign();
  void checkGameInFront(const Machine& machine, std::uint32_t inFront);
  void expectAllBack(const std::string& when, std::chrono::milliseconds limit);
  void violation(long& count, const std::string& what, const ProcessSettings* process = nullptr);
  void holdWorkers(bool hold);
  void killRole(const std::string& role);
  void reapOrphans();

  Options m_options;
  std::mt19937_64 m_random;
  const Clock::time_point m_began = Clock::now();
  double m_beganTicks = 0;
  std::string m_marker;
  std::string m_program; // a copy of its own
  ThreadSettings m_plain;
  std::string m_groups;
  std::vector<Kind> m_kinds;
  std::map<std::string, std::set<std::string>> m_parts; // settings of the desktop's own threads, by name
  std::unique_ptr<desktop::VirtualDesktop> m_desktop;
  std::unique_ptr<desktop::SoundServer> m_sound;
  std::unique_ptr<Flood> m_flood;
  std::unique_ptr<MainLoopWatch> m_watch;
  long m_stallsTold = 0;
  std::set<Pid> m_started; // whose end somebody else asks for
  std::vector<App> m_apps;
  int m_lastNumber = 0;
  std::vector<desktop::Program*> m_stopped;
  desktop::Program* m_vantle = nullptr;
  desktop::Program* m_selfTest = nullptr;
  bool m_hasBusName = false; // a bus that was started again does not know the program
  int m_gameInFront = 0;     // its number, once it was seen untouched

  std::deque<std::string> m_history;
  Clock::time_point m_sampled{};
  bool m_isSlowed = false;
  std::map<std::string, long> m_played;
  long m_events = 0;
  long m_boosts = 0;
  long m_kills = 0;
  long m_ends = 0;
  long m_compared = 0;
  long m_left = 0;
  long m_foreign = 0;
  long m_wrongEnds = 0;
  long m_selfTests = 0;
  double m_longestSettling = 0;
  Figure m_rss;
  Figure m_pss;
  Figure m_descriptors;
};

} // namespace vantle::soak
