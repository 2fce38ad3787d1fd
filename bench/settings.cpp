// SPDX-License-Identifier: MIT
// What the settings window costs in the program itself: own memory (anonymous and swapped) before, with every
// pane looked at, and after it was closed; and the time from the wish, over the bus, to its picture on the
// screen. Medians of rounds with a fresh program each.
//
//   settings [ROUNDS [x11|sway]]
#include "bench/support/Series.h"
#include "bench/support/ShellUnderTest.h"

#include <cstdio>
#include <string>
#include <vector>

namespace vantle::bench {
namespace {

struct Figures {
  std::vector<double> before; // MB
  std::vector<double> open;
  std::vector<double> closed;
  std::vector<double> first; // ms
  std::vector<double> again;
};

void measureOnce(Figures& figures, const std::string& desktop) {
  ShellUnderTest shell(VANTLE_PROGRAM, BareDesktop::make(desktop));
  figures.before.push_back(shell.ownMegabytes());
  figures.first.push_back(shell.openSettings().count());
  shell.comeToRest();
  // Through all panes: to the sidebar, to its first row, down to the last, and back to the largest.
  for (const char* key : {"Tab", "Home", "Down", "Down", "Down", "Down", "Home", "Down"}) shell.press(key);
  shell.comeToRest();
  figures.open.push_back(shell.ownMegabytes());
  shell.closeSettings();
  figures.again.push_back(shell.openSettings().count());
  shell.closeSettings();
  shell.waitForRelease();
  figures.closed.push_back(shell.ownMegabytes());
}

int run(int rounds, const std::string& desktop) {
  Figures figures;
  for (int round = 0; round < rounds; ++round) measureOnce(figures, desktop);
  const double before = median(figures.before);
  std::printf("medians of %d rounds, the program itself\n", rounds);
  std::printf("own memory, never opened   %6.2f MB\n", before);
  std::printf("own memory, open           %6.2f MB\n", median(figures.open));
  std::printf("own memory, closed again   %6.2f MB (%.2f MB above never opened)\n", median(figures.closed),
              median(figures.closed) - before);
  std::printf("first opening              %6.1f ms\n", median(figures.first));
  std::printf("opening again              %6.1f ms\n", median(figures.again));
  return 0;
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) { return vantle::bench::runRounds(argc, argv, vantle::bench::run); }
