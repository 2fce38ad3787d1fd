// SPDX-License-Identifier: MIT
// What the settings window costs: own memory before, while every pane has been looked at, and after it was
// closed; and the time from the wish to the first picture. Five rounds with a fresh program each.
#include "platform/linux/process/ProcfsProcessTable.h"
#include "tests/desktop/harness/SettingsProgram.h"
#include "tests/desktop/harness/Wait.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <string>
#include <vector>

namespace vantle::bench {
namespace {

constexpr int rounds = 5;

struct Figures {
  std::vector<double> before; // MB
  std::vector<double> open;
  std::vector<double> closed;
  std::vector<double> firstPicture; // ms
};

double median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

double ownMemory(Pid pid) {
  const ProcfsProcessTable table(BootEpoch(0));
  return static_cast<double>(table.footprint(pid).value_or(0)) / (1024 * 1024);
}

double millisecondsIn(const std::string& text) {
  const std::string label = "first frame after ";
  const std::size_t at = text.find(label);
  return at == std::string::npos ? -1 : std::atof(text.c_str() + at + label.size());
}

void measureOnce(Figures& figures) {
  desktop::VirtualDesktop desktop;
  desktop::SettingsProgram settings(desktop, VANTLE_TEST_SETTINGS);
  const Pid pid = settings.program().pid();
  settings.say("release-after 0");
  figures.before.push_back(ownMemory(pid));

  std::string said = settings.tells("show");
  desktop::require("the window is in front", [&] {
    said += settings.tells("state");
    return said.find(", active") != std::string::npos && millisecondsIn(said) >= 0;
  });
  figures.firstPicture.push_back(millisecondsIn(said));
  for (const char* pane : {"0", "2", "3", "4", "1"}) {
    settings.say(std::string("pane ") + pane);
    settings.say("state");
  }
  figures.open.push_back(ownMemory(pid));

  settings.say("close");
  desktop::require("it is let go", [&] { return settings.tells("state").rfind("no window", 0) == 0; });
  figures.closed.push_back(ownMemory(pid));
}

int run() {
  Figures figures;
  for (int round = 0; round < rounds; ++round) measureOnce(figures);
  const double before = median(figures.before);
  std::printf("medians of %d rounds, own memory (anonymous + swapped):\n", rounds);
  std::printf("  never opened    %5.2f MB\n", before);
  std::printf("  open            %5.2f MB\n", median(figures.open));
  std::printf("  closed again    %5.2f MB (%.2f MB above never opened)\n", median(figures.closed),
              median(figures.closed) - before);
  std::printf("first picture after %.0f ms\n", median(figures.firstPicture));
  return 0;
}

} // namespace
} // namespace vantle::bench

int main() {
  try {
    return vantle::bench::run();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
