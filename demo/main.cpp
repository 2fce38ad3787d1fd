// SPDX-License-Identifier: MIT
#include "demo/Demo.h"
#include "tests/support/Isolation.h"
#include "tests/support/User.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>
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
      return vantle::demo::runDemo(*kind, program, folder) ? 0 : 1;
    } catch (const std::exception& failure) {
      std::cerr << "vantle_demo: " << failure.what() << "\n";
      return 1;
    }
  };
  if (!asSomebodyElse) return play();
  std::error_code error; // whatever cannot be made cannot be given away either, which is told
  fs::create_directories(folder, error);
  // That user may run the program already, and this copy must not take what is slowed there for left over.
  return vantle::desktop::runIsolated(play, folder);
}
