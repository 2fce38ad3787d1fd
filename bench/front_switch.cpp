// SPDX-License-Identifier: MIT
// How long after somebody has turned to another app the kernel has it at full speed again, during a Boost:
// from the request to the desktop to the change of its first thread, with everything in between.
//
//   front_switch [x11|sway|kwin|gnome] [ROUNDS]
#include "tests/support/GnomeDesktop.h"
#include "tests/support/KWinDesktop.h"
#include "tests/support/Kernel.h"
#include "tests/support/Props.h"
#include "tests/support/ShellDesktop.h"
#include "tests/support/SwayDesktop.h"
#include "tests/support/VirtualDesktop.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace vantle::bench {
namespace {

using SteadyClock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

constexpr const char* gameFile = "[Desktop Entry]\nType=Application\nExec=true\nCategories=Game;\nName=Game\n"
                                 "StartupWMClass=Game\n";

bool isSlowed(Pid pid) {
  const auto state = test::threadState(pid);
  return state && test::isIdleClass(*state);
}

// From the call to the kernel's answer.
Milliseconds timed(const std::function<void()>& turn, const std::function<bool()>& isDone) {
  const SteadyClock::time_point begin = SteadyClock::now();
  turn();
  while (!isDone()) {
    if (SteadyClock::now() - begin > desktop::guardLimit) throw std::runtime_error("nothing has changed");
    std::this_thread::yield();
  }
  return SteadyClock::now() - begin;
}

void print(const char* what, std::vector<Milliseconds> times) {
  std::sort(times.begin(), times.end());
  const auto at = [&](std::size_t percent) { return times.at((times.size() - 1) * percent / 100).count(); };
  std::printf("%-28s p50 %6.2f ms  p95 %6.2f ms  longest %6.2f ms\n", what, at(50), at(95), at(100));
}

// What differs between desktops is how an app is brought to the front.
void measure(desktop::PrivateSession& desktop, const desktop::Program& game, const desktop::Program& app,
             const std::function<void(const desktop::Program&)>& bringToFront, int rounds) {
  bringToFront(app);
  desktop.launch({VANTLE_PROGRAM}, {{"QT_QPA_PLATFORM", "xcb"}});
  desktop.waitForBusName("com.halvo.vantle");
  std::vector<Milliseconds> faster;
  std::vector<Milliseconds> slower;
  const auto isAppSlowed = [pid = app.pid()] { return isSlowed(pid); };
  for (int round = 0; round < rounds; ++round) {
    slower.push_back(timed([&] { bringToFront(game); }, isAppSlowed));
    faster.push_back(timed([&] { bringToFront(app); }, [&] { return !isAppSlowed(); }));
  }
  slower.erase(slower.begin()); // the Boost's own start
  print("to the front: at full speed", std::move(faster));
  print("behind the game: slowed", std::move(slower));
}

void measureOnX11(int rounds) {
  desktop::VirtualDesktop desktop;
  desktop.installDesktopFile("org.example.Game", gameFile);
  const desktop::Program& game = desktop.launch({desktop::testWindow(), "--class", "Game"});
  const desktop::Program& app = desktop.launch({desktop::testWindow()});
  const auto bringToFront = [&](const desktop::Program& program) {
    desktop.windows().activate(desktop.waitForWindow(program.pid()).id);
  };
  measure(desktop, game, app, bringToFront, rounds);
}

void measureOnSway(int rounds) {
  desktop::SwayDesktop desktop;
  desktop.installDesktopFile("org.example.Game", gameFile);
  const desktop::Program& game = desktop.launch({"foot", "--app-id", "org.example.Game", "sleep", "1000"});
  const desktop::Program& app = desktop.launch({"foot", "sleep", "1000"});
  for (const desktop::Program* program : {&game, &app}) desktop.waitForWindow(program->pid());
  const auto bringToFront = [&](const desktop::Program& program) {
    desktop.command("[pid=" + std::to_string(program.pid()) + "] focus");
  };
  measure(desktop, game, app, bringToFront, rounds);
}

// What the desktop is asked with is a script; KWin takes its time to load it.
void measureOn(desktop::ShellDesktop&& desktop, int rounds) {
  desktop.installDesktopFile("org.freedesktop.weston.flower", gameFile);
  const desktop::Program& game = desktop.launch({"weston-flower"});
  const desktop::Program& app = desktop.launch({"weston-terminal", "--shell=/bin/cat"});
  desktop.focus(game);
  desktop.focus(app);
  measure(
      desktop, game, app, [&](const desktop::Program& program) { desktop.activate(program); }, rounds);
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) {
  const std::string_view where = argc > 1 ? argv[1] : "x11";
  const int rounds = argc > 2 ? std::max(std::atoi(argv[2]), 2) : 50;
  try {
    if (where == "x11") vantle::bench::measureOnX11(rounds);
    if (where == "sway") vantle::bench::measureOnSway(rounds);
    if (where == "kwin") vantle::bench::measureOn(vantle::desktop::KWinDesktop(), rounds);
    if (where == "gnome") {
      vantle::bench::measureOn(vantle::desktop::GnomeDesktop(VANTLE_GNOME_EXTENSIONS, "vantle@halvo.com"),
                               rounds);
    }
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
