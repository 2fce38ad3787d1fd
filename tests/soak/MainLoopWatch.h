// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <string>
#include <thread>

struct sd_bus;

namespace vantle::soak {

// Asks the program on its bus again and again, in a thread of its own, for an answer that its main loop
// gives, and counts those that come late. The time that the program, the bus or this thread waited for a
// processor is not counted: then the machine was late.
class MainLoopWatch {
 public:
  struct Counts {
    long answers = 0;
    long stalls = 0;          // answered later than allowed, with nothing wrong around the program
    long disturbedStalls = 0; // the same while something was stopped or flooded
    long longest = 0;         // ms, undisturbed
    long longestDisturbed = 0;
  };

  static constexpr std::chrono::milliseconds allowed{200};

  explicit MainLoopWatch(std::string address);
  ~MainLoopWatch();
  MainLoopWatch(const MainLoopWatch&) = delete;
  MainLoopWatch& operator=(const MainLoopWatch&) = delete;

  void watch(Pid program, Pid bus); // 0 for nobody
  Counts counts() const;

 private:
  friend class Disturbance;

  void beginDisturbance();
  void endDisturbance();
  void run();
  void ask(sd_bus* bus, Pid program);
  void note(std::chrono::milliseconds late, bool isDisturbed);

  const std::string m_address;
  mutable std::mutex m_mutex;
  Counts m_counts;
  std::atomic<Pid> m_program{0};
  std::atomic<Pid> m_bus{0};
  std::atomic<int> m_disturbances{0};
  std::atomic<bool> m_isDisturbed{false};
  std::atomic<bool> m_isOver{false};
  std::thread m_thread;
};

// Around everything that the program cannot be blamed for; until the first answer in time after it.
class Disturbance {
 public:
  explicit Disturbance(MainLoopWatch& watch) : m_watch(watch) { m_watch.beginDisturbance(); }
  ~Disturbance() { m_watch.endDisturbance(); }
  Disturbance(const Disturbance&) = delete;
  Disturbance& operator=(const Disturbance&) = delete;

 private:
  MainLoopWatch& m_watch;
};

} // namespace vantle::soak
