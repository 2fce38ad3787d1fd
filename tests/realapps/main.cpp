// SPDX-License-Identifier: MIT
#include "tests/realapps/Programs.h"
#include "tests/realapps/Table.h"
#include "tests/realapps/Trial.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/Isolation.h"
#include "tests/support/Kernel.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iostream>
#include <set>
#include <stdexcept>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace {

namespace fs = std::filesystem;
using namespace vantle;
using namespace vantle::realapps;

int usage() {
  std::cerr << "usage: real_apps VANTLE FOLDER [NAME[:WAY]...]\nNames:";
  for (const Program& program : programs()) std::cerr << " " << program.key;
  std::cerr << "\n";
  return 2;
}

struct Choice {
  const Program* program;
  std::vector<Way> ways;
};

bool choose(const std::vector<std::string>& names, std::vector<Choice>& chosen) {
  for (const std::string& name : names) {
    const std::string key = name.substr(0, name.find(':'));
    const auto program = std::find_if(programs().begin(), programs().end(),
                                      [&](const Program& each) { return each.key == key; });
    if (program == programs().end()) return false;
    Choice choice{&*program, {}};
    for (const Way way : allWays)
      if (name == key || name == key + ":" + textOf(way)) choice.ways.push_back(way);
    if (choice.ways.empty()) return false;
    chosen.push_back(std::move(choice));
  }
  if (!names.empty()) return true;
  for (const Program& program : programs()) chosen.push_back({&program, {allWays.begin(), allWays.end()}});
  return true;
}

std::string inWords(const Row& row) {
  return row.program + ", " + row.way + ": " + (row.wrong.empty() ? "right" : "wrong: " + row.wrong) + " [" +
         row.foundAs + " | " + row.name + " | " + row.icon + " | Boost " + row.boost + " | slowed " +
         row.slowedWhole + " | back " + row.backWhole +
         (row.soundSpared.empty() ? "" : " | spared " + row.soundSpared) + "]";
}

// An ordinary user's apps, as people have them: root's processes can be read and changed by nobody else.
void becomeOrdinaryUser(const fs::path& folder) {
  for (const fs::path& each : {folder, folder / "rows"})
    if (::chown(each.c_str(), test::nobody, test::nobody) != 0)
      throw std::runtime_error("cannot give away " + each.string());
  if (!test::becomeUser(test::nobody)) throw std::runtime_error("root cannot become an ordinary user here");
}

int play(const std::vector<Choice>& chosen, const fs::path& vantle, const fs::path& folder) {
  try {
    if (test::runsAsRoot()) becomeOrdinaryUser(folder);
    if (::access(vantle.c_str(), X_OK) != 0 || ::access((folder / "rows").c_str(), W_OK) != 0)
      throw std::runtime_error("this user cannot get at " + vantle.string() + " and " + folder.string());
    for (const auto& [program, ways] : chosen) {
      std::vector<Row> rows = keptRows(folder / "rows" / (program->key + ".json"));
      for (const Way way : ways) {
        const auto begin = std::chrono::steady_clock::now();
        Row row;
        try {
          row = Trial(*program, vantle).play(way);
        } catch (const std::exception& failure) {
          row.program = program->key;
          row.way = textOf(way);
          row.wrong = std::string("the stage: ") + failure.what();
        }
        const std::chrono::duration<double> length = std::chrono::steady_clock::now() - begin;
        std::cout << inWords(row) << " " << static_cast<long>(length.count()) << " s" << std::endl;
        std::erase_if(rows, [&](const Row& kept) { return kept.way == row.way; });
        rows.push_back(std::move(row));
      }
      keepRows(folder / "rows" / (program->key + ".json"), rows);
    }
    std::ofstream page(folder / "real-apps.md");
    writePage(page, folder / "rows");
    std::ofstream record(folder / "real_apps.json");
    writeRecord(record, folder / "rows");
    return 0;
  } catch (const std::exception& failure) {
    std::cerr << "real_apps: " << failure.what() << "\n";
    return 1;
  }
}

// Everything below this process, orphans included, which come to it.
void endDescendants() {
  desktop::waitUntil([] {
    std::set<Pid> below;
    const auto all = test::allProcesses();
    for (bool grew = true; grew;) {
      grew = false;
      for (const auto& [pid, state] : all)
        if (state.parent == ::getpid() || below.contains(state.parent))
          grew = below.insert(pid).second || grew;
    }
    for (const Pid pid : below) {
      ::kill(pid, SIGKILL);
      ::waitpid(pid, nullptr, WNOHANG);
    }
    return below.empty();
  });
}

// In a process of its own, and with all that it makes in one folder, so that nothing is left over when
// somebody interrupts it.
int playInterruptibly(const std::function<int()>& play) {
  sigset_t awaited;
  sigset_t before;
  ::sigemptyset(&awaited);
  for (const int number : {SIGCHLD, SIGINT, SIGTERM, SIGHUP}) ::sigaddset(&awaited, number);
  ::sigprocmask(SIG_BLOCK, &awaited, &before);
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  int status = 0;
  {
    const desktop::TemporaryFolder folder;
    test::ForkedProcess player({}, [&] {
      ::setenv("TMPDIR", folder.path().c_str(), 1);
      ::sigprocmask(SIG_SETMASK, &before, nullptr);
      std::exit(play());
    });
    int number = 0;
    do ::sigwait(&awaited, &number);
    while (number == SIGCHLD && player.isRunning());
    status = number == SIGCHLD ? player.waitForEnd() : player.kill();
    endDescendants();
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

} // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  std::vector<Choice> chosen;
  if (arguments.size() < 2 || !choose({arguments.begin() + 2, arguments.end()}, chosen)) return usage();
  const fs::path vantle = fs::absolute(arguments[0]).lexically_normal();
  const fs::path folder = fs::absolute(arguments[1]).lexically_normal();
  std::error_code error;
  fs::create_directories(folder / "rows", error);
  const auto all = [&] { return play(chosen, vantle, folder); };
  return test::runsAsRoot() ? desktop::runIsolated(all, folder) : playInterruptibly(all);
}
