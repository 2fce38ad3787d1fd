// SPDX-License-Identifier: MIT
// What the panel costs in the program itself: own memory (anonymous and swapped) never opened, open and
// closed again; the time from the wish, over the bus, to its picture on the screen; and how often any thread
// wakes up before it is opened, and while it is open and nothing changes. Medians of rounds with a fresh
// program each.
//
//   panel [ROUNDS [x11|sway]]
#include "bench/support/Series.h"
#include "bench/support/ShellUnderTest.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

namespace vantle::bench {
namespace {

constexpr int reopenings = 9;
constexpr int releases = 4; // times it is made anew
constexpr std::chrono::seconds watched{20};

struct Figures {
  std::vector<double> never; // MB
  std::vector<double> open;
  std::vector<double> closed;
  std::vector<double> closedLast; // after the last release
  std::vector<double> first;      // ms
  std::vector<double> again;
  std::vector<double> anew; // the memory had been given back
  std::vector<double> wakeUps;
  std::vector<double> wakeUpsNever;
};

double wakeUpsOf(const ShellUnderTest& shell) {
  const long before = shell.wakeUps();
  std::this_thread::sleep_for(watched);
  return static_cast<double>(shell.wakeUps() - before);
}

void measureOnce(Figures& figures, const std::string& desktop) {
  ShellUnderTest shell(VANTLE_PROGRAM, BareDesktop::make(desktop));
  figures.never.push_back(shell.ownMegabytes());
  figures.wakeUpsNever.push_back(wakeUpsOf(shell));
  figures.first.push_back(shell.openPanel().count());
  shell.comeToRest();
  figures.open.push_back(shell.ownMegabytes());
  figures.wakeUps.push_back(wakeUpsOf(shell));
  for (int i = 0; i < reopenings; ++i) {
    shell.closePanel();
    figures.again.push_back(shell.openPanel().count());
  }
  shell.closePanel();
  shell.waitForRelease();
  figures.closed.push_back(shell.ownMegabytes());
  for (int i = 0; i < releases; ++i) {
    figures.anew.push_back(shell.openPanel().count());
    shell.closePanel();
    shell.waitForRelease();
  }
  figures.closedLast.push_back(shell.ownMegabytes());
}

void print(const char* what, const std::vector<double>& values, const char* unit) {
  const auto [least, most] = std::minmax_element(values.begin(), values.end());
  std::printf("%-29s %6.1f %s   (%.1f to %.1f)\n", what, median(values), unit, *least, *most);
}

int run(int rounds, const std::string& desktop) {
  Figures figures;
  for (int round = 0; round < rounds; ++round) measureOnce(figures, desktop);
  std::printf("medians of %d rounds, the program itself\n", rounds);
  print("own memory, never opened", figures.never, "MB");
  print("own memory, open", figures.open, "MB");
  print("own memory, closed again", figures.closed, "MB");
  print("own memory, closed 5 times", figures.closedLast, "MB");
  print("first opening", figures.first, "ms");
  print("opening again", figures.again, "ms");
  print("opening after a release", figures.anew, "ms");
  print("wake-ups in 20 s never opened", figures.wakeUpsNever, "");
  print("wake-ups in 20 s open", figures.wakeUps, "");
  return 0;
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) { return vantle::bench::runRounds(argc, argv, vantle::bench::run); }
