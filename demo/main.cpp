// SPDX-License-Identifier: MIT
#include "demo/Demo.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/Isolation.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <iostream>
#include <stdexcept>
#include <string>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using vantle::demo::Screen;

int usage() {
  std::cerr << "usage: vantle_demo [--desktop NAME] PROGRAM FOLDER\n"
               "Shows a Boost with that build of Vantle, and leaves its report there. Desktops:";
  for (const Screen::Kind& kind : Screen::kinds()) std::cerr << " " << kind.name;
  std::cerr << "\n";
  return 2;
}

// Such a desktop is somebody else's where root runs the demo, and so is everything else of it.
void becomeOrdinaryUser(const fs::path& program, const fs::path& folder) {
  if (::chown(folder.c_str(), vantle::test::nobody, vantle::test::nobody) != 0) {
    throw std::runtime_error("this desktop refuses root, and an ordinary user (nobody) cannot be given " +
                             folder.string());
  }
  if (!vantle::test::becomeUser(vantle::test::nobody)) {
    throw std::runtime_error("this desktop refuses root, and root cannot become an ordinary user here");
  }
  if (::access(program.c_str(), X_OK) != 0 || ::access(folder.c_str(), W_OK | X_OK) != 0) {
    throw std::runtime_error("this desktop refuses root, and an ordinary user (nobody) cannot get at " +
                             program.string() + " and " + folder.string() +
                             ": run this as yourself, or from a folder that everybody may pass through");
  }
}

// The signals that end a process, but for those that it was started deaf to, and that of a child's end.
sigset_t endings() {
  sigset_t set;
  ::sigemptyset(&set);
  ::sigaddset(&set, SIGCHLD);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    struct sigaction action {};
    if (::sigaction(signal, nullptr, &action) == 0 && action.sa_handler != SIG_IGN) ::sigaddset(&set, signal);
  }
  return set;
}

// In a process of its own, and with all that it makes in one folder, so that nothing is left over when
// somebody interrupts it: this one ends it and takes the folder away.
int playInterruptibly(const std::function<int()>& play) {
  const sigset_t awaited = endings();
  sigset_t before;
  ::sigprocmask(SIG_BLOCK, &awaited, &before);
  int signal = 0;
  int status = 0;
  {
    const vantle::desktop::TemporaryFolder folder;
    const auto live = [&] {
      ::setenv("TMPDIR", folder.path().c_str(), 1);
      ::sigprocmask(SIG_SETMASK, &before, nullptr);
      std::exit(play());
    };
    vantle::test::ForkedProcess player({}, live);
    do ::sigwait(&awaited, &signal);
    while (signal == SIGCHLD && player.isRunning());
    status = signal == SIGCHLD ? player.waitForEnd() : player.kill();
  }
  ::sigprocmask(SIG_SETMASK, &before, nullptr);
  if (signal != SIGCHLD) ::raise(signal);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

int main(int argc, char** argv) {
  std::vector<std::string> arguments(argv + 1, argv + argc);
  std::string desktop = Screen::kinds().front().name;
  if (arguments.size() > 1 && arguments.front() == "--desktop") {
    desktop = arguments[1];
    arguments.erase(arguments.begin(), arguments.begin() + 2);
  }
  const auto kind = std::find_if(Screen::kinds().begin(), Screen::kinds().end(),
                                 [&](const Screen::Kind& each) { return each.name == desktop; });
  if (arguments.size() != 2 || kind == Screen::kinds().end()) return usage();
  const fs::path program = fs::absolute(arguments[0]).lexically_normal();
  const fs::path folder = fs::absolute(arguments[1]).lexically_normal();
  const bool asSomebodyElse = kind->refusesRoot && vantle::test::runsAsRoot();
  const auto play = [&] {
    try {
      if (asSomebodyElse) becomeOrdinaryUser(program, folder);
      if (vantle::demo::runDemo(*kind, program, folder)) {
        std::cout << "Report and pictures: " << arguments[1] << std::endl;
        return 0;
      }
      std::cerr << "The demo did not show all it should; see " << arguments[1] << "/report.md." << std::endl;
      return 1;
    } catch (const std::exception& failure) {
      std::cerr << "vantle_demo: " << failure.what() << "\n";
      return 1;
    }
  };
  if (!asSomebodyElse) return playInterruptibly(play);
  std::error_code error; // whatever cannot be made cannot be given away either, which is told
  fs::create_directories(folder, error);
  // That user may run the program already, and this copy must not take what is slowed there for left over.
  return vantle::desktop::runIsolated(play, folder);
}
