// SPDX-License-Identifier: MIT
// What Vantle costs while nothing happens: how often any of its threads wakes up, and its own memory.
//
//   idle [SECONDS]       starts Vantle in a private desktop with two apps that do nothing
//   idle SECONDS sway    the same on sway, as an ordinary user
//   idle SECONDS kwin    the same on KWin
//   idle SECONDS gnome   the same on GNOME, with the extension in its shell
//   idle SECONDS PID     looks at a copy that runs already
#include "tests/support/GnomeDesktop.h"
#include "tests/support/KWinDesktop.h"
#include "tests/support/Props.h"
#include "tests/support/ShellDesktop.h"
#include "tests/support/SwayDesktop.h"
#include "tests/support/VirtualDesktop.h"

#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/posix/files/PosixFileStore.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <thread>

namespace vantle::bench {
namespace {

using namespace std::chrono_literals;

struct Switches {
  std::string thread;
  long voluntary = 0; // each is the end of a sleep
  long forced = 0;
};

long numberBehind(const std::string& text, const std::string& label) {
  const std::size_t at = text.find(label);
  return at == std::string::npos ? 0 : std::atol(text.c_str() + at + label.size());
}

std::map<int, Switches> switchesOf(Pid pid) {
  const PosixFileStore files("/", PosixFileStore::Sync::none);
  std::map<int, Switches> threads;
  std::error_code gone;
  for (const auto& entry :
       std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task", gone)) {
    const auto status = files.read(entry.path() / "status", 65536);
    const auto name = files.read(entry.path() / "comm", 64);
    if (!status || !name) continue;
    threads[std::stoi(entry.path().filename())] = {name->substr(0, name->find('\n')),
                                                   numberBehind(*status, "\nvoluntary_ctxt_switches:"),
                                                   numberBehind(*status, "\nnonvoluntary_ctxt_switches:")};
  }
  return threads;
}

long voluntarySum(const std::map<int, Switches>& threads) {
  long sum = 0;
  for (const auto& [tid, switches] : threads) sum += switches.voluntary;
  return sum;
}

// Starting up is something happening: waits until three seconds went by without a wake-up.
void letSettle(Pid pid) {
  long last = -1;
  for (int round = 0; round < 20; ++round) {
    const long now = voluntarySum(switchesOf(pid));
    if (now == last) return;
    last = now;
    std::this_thread::sleep_for(3s);
  }
  std::printf("note: it has not come to rest within a minute\n");
}

int measure(Pid pid, int seconds) {
  const ProcfsProcessTable table(BootEpoch(0));
  letSettle(pid);
  const std::map<int, Switches> before = switchesOf(pid);
  const auto cpuBefore = table.cpuTime(pid);
  std::this_thread::sleep_for(std::chrono::seconds(seconds));
  const std::map<int, Switches> after = switchesOf(pid);
  const auto memory = table.footprint(pid);
  if (after.empty() || !memory) {
    std::fprintf(stderr, "process %d has ended\n", pid);
    return 1;
  }
  std::printf("voluntary context switches of all %zu threads in %d s: %ld\n", after.size(), seconds,
              voluntarySum(after) - voluntarySum(before));
  for (const auto& [tid, switches] : after) {
    const auto earlier = before.find(tid);
    const Switches start = earlier == before.end() ? Switches{} : earlier->second;
    if (switches.voluntary == start.voluntary && switches.forced == start.forced) continue;
    std::printf("  %-16s %ld voluntary, %ld forced\n", switches.thread.c_str(),
                switches.voluntary - start.voluntary, switches.forced - start.forced);
  }
  std::printf("processor time meanwhile: %llu ticks of 10 ms\n",
              static_cast<unsigned long long>(table.cpuTime(pid).value_or(0) - cpuBefore.value_or(0)));
  std::printf("own memory (anonymous + swapped): %.2f MB\n", static_cast<double>(*memory) / (1024 * 1024));
  return 0;
}

int measureInPrivateDesktop(int seconds) {
  desktop::VirtualDesktop desktop;
  for (int app = 0; app < 2; ++app) desktop.waitForWindow(desktop.launch({desktop::testWindow()}).pid());
  desktop::Program& vantle = desktop.launch({VANTLE_PROGRAM});
  return measure(vantle.pid(), seconds);
}

int measureOnSway(int seconds) {
  desktop::SwayDesktop desktop;
  for (const char* app : {"first", "second"}) {
    desktop.waitForWindow(desktop.launch({"foot", "--app-id", app, "sleep", "100000"}).pid());
  }
  desktop::Program& vantle = desktop.launch({VANTLE_PROGRAM}, {{"QT_QPA_PLATFORM", "xcb"}});
  return measure(vantle.pid(), seconds);
}

int measureOn(desktop::ShellDesktop&& desktop, int seconds) {
  for (int app = 0; app < 2; ++app) desktop.focus(desktop.launch({"weston-terminal", "--shell=/bin/cat"}));
  desktop::Program& vantle = desktop.launch({VANTLE_PROGRAM}, {{"QT_QPA_PLATFORM", "xcb"}});
  return measure(vantle.pid(), seconds);
}

} // namespace
} // namespace vantle::bench

int main(int argc, char** argv) {
  const int seconds = argc > 1 ? std::max(std::atoi(argv[1]), 1) : 60;
  try {
    if (argc > 2 && std::string_view(argv[2]) == "sway") return vantle::bench::measureOnSway(seconds);
    if (argc > 2 && std::string_view(argv[2]) == "kwin")
      return vantle::bench::measureOn(vantle::desktop::KWinDesktop(), seconds);
    if (argc > 2 && std::string_view(argv[2]) == "gnome") {
      return vantle::bench::measureOn(
          vantle::desktop::GnomeDesktop(VANTLE_GNOME_EXTENSIONS, "vantle@halvo.com"), seconds);
    }
    if (argc > 2) return vantle::bench::measure(std::atoi(argv[2]), seconds);
    return vantle::bench::measureInPrivateDesktop(seconds);
  } catch (const std::exception& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
