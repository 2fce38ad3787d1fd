// SPDX-License-Identifier: MIT
// What the panel costs in the program itself: own memory (anonymous and swapped) never opened, open and
// closed again; the time from the wish, over the bus, to its picture on the screen; and how often any thread
// wakes up while it is open and nothing changes. Medians of rounds with a fresh program each.
//
//   panel [ROUNDS]
#include "bench/support/Series.h"
#include "bench/support/ShellUnderTest.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
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
};

void measureOnce(Figures& figures) {
  ShellUnderTest shell(VANTLE_PROGRAM);
  figures.never.push_back(shell.ownMegabytes());
  figures.first.push_back(shell.openPanel().count());
  shell.comeToRest();
  figures.open.push_back(shell.ownMegabytes());
  const long before = shell.wakeUps();
  std::this_thread::sleep_for(watched);
  figures.wakeUps.push_back(static_cast<double>(shell.wakeUps() - before));
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
  std::printf("%-28s %6.1f %s   (%.1f to %.1f)\n", what, median(values), unit, *least, *most);
}

int run(int rounds) {
  Figures figures;
  for (int round = 0; round < rounds; ++round) measureOnce(figures);
  std::printf("medians of %d rounds, the program itself\n", rounds);
  print("own memory, never opened", figures.never, "MB");
  print("own memory, open", figures.open, "MB");
  print("own memory, closed again", figures.closed, "MB");
  print("own memory, closed 5 times", figures.closedLast, "MB");
  print("first opening", figures.first, "ms");
  print("opening again", figures.again, "ms");
  print("opening after a release", figures.anew, "ms");
  print("wake-ups in 20 s open", figures.wakeUps, "");
  return 0;
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) { return vantle::bench::runRounds(argc, argv, vantle::bench::run); }
