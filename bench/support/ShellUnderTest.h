// SPDX-License-Identifier: MIT
#pragma once

#include "bench/support/BareDesktop.h"

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <systemd/sd-bus.h>
#include <vector>

namespace vantle::bench {

// The program itself on a private desktop with a few apps, asked over the bus as an app menu asks, and looked
// at from outside: its own memory (anonymous and swapped), its wake-ups, and the pixels of the screen.
class ShellUnderTest {
 public:
  using Milliseconds = std::chrono::duration<double, std::milli>;

  ShellUnderTest(const std::string& program, std::unique_ptr<BareDesktop> desktop);
  ~ShellUnderTest();
  ShellUnderTest(const ShellUnderTest&) = delete;
  ShellUnderTest& operator=(const ShellUnderTest&) = delete;

  double ownMegabytes() const;
  long wakeUps() const;    // of all threads, since their start
  void comeToRest() const; // until there was none for two seconds

  // Each opens from the wish to the first picture on the screen, which is waited for.
  Milliseconds openPanel();
  Milliseconds openSettings();
  void closePanel();
  void closeSettings();
  // A key to whatever is in front.
  void press(const std::string& key);
  // Until the memory is given back, or has not been for half a minute.
  void waitForRelease() const;

 private:
  struct Point {
    int x = 0;
    int y = 0;
  };

  void ask(const char* method, const char* action);
  std::uint32_t pixel(Point point);
  Milliseconds shownAfter(const char* method, const char* action, Point point);
  void waitUntilBare(Point point);

  std::unique_ptr<BareDesktop> m_desktop;
  desktop::Program* m_vantle = nullptr;
  sd_bus* m_bus = nullptr;
  std::chrono::steady_clock::time_point m_lastWish{};
  std::uint32_t m_bare = 0; // the colour of the empty desktop
};

// What the main function of a bench of the shell does: the rounds are its first argument, or 5, and the kind
// of desktop its second, or X11; a desktop that does not come up is said, and is status 1.
int runRounds(int argc, char** argv, int (*run)(int rounds, const std::string& desktop));

} // namespace vantle::bench
