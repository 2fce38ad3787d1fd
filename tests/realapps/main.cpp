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
#include <iterator>
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
  std::cerr
      << "usage: real_apps VANTLE FOLDER [NAME[:WAY]...]\n"
         "       real_apps --user-manager VANTLE FOLDER [NAME[:WAY]...]    in a machine for nothing else\n"
         "       real_apps --units-into PAGE FOLDER    what the last one has found\nNames:";
  for (const Program& program : programs()) std::cerr << " " << program.key;
  std::cerr << "\n";
  return 2;
}

struct Choice {
  const Program* program;
  std::vector<Way> ways;
};

struct Job {
  std::vector<Choice> chosen;
  fs::path vantle;
  fs::path folder;
  Surroundings surroundings = Surroundings::none;

  fs::path rows() const { return folder / (surroundings == Surroundings::none ? "rows" : "rows-of-units"); }
};

std::vector<Way> waysIn(Surroundings surroundings) {
  std::vector<Way> ways(allWays.begin(), allWays.end());
  if (surroundings == Surroundings::none) std::erase_if(ways, isUnit);
  return ways;
}

bool choose(const std::vector<std::string>& names, Surroundings surroundings, std::vector<Choice>& chosen) {
  const std::vector<Way> possible = waysIn(surroundings);
  for (const std::string& name : names) {
    const std::string key = name.substr(0, name.find(':'));
    const auto program = std::find_if(programs().begin(), programs().end(),
                                      [&](const Program& each) { return each.key == key; });
    if (program == programs().end()) return false;
    Choice choice{&*program, {}};
    for (const Way way : possible)
      if (name == key || name == key + ":" + textOf(way)) choice.ways.push_back(way);
    if (choice.ways.empty()) return false;
    chosen.push_back(std::move(choice));
  }
  if (!names.empty()) return true;
  for (const Program& program : programs()) chosen.push_back({&program, possible});
  return true;
}

std::string inWords(const Row& row) {
  return row.program + ", " + row.way + ": " + (row.wrong.empty() ? "right" : "wrong: " + row.wrong) + " [" +
         row.foundAs + " | " + row.name + " | " + row.icon + " | Boost " + row.boost + " | slowed " +
         row.slowedWhole + " | back " + row.backWhole +
         (row.soundSpared.empty() ? "" : " | spared " + row.soundSpared) + "]";
}

// An ordinary user's apps, as people have them: root's processes can be read and changed by nobody else.
void becomeOrdinaryUser(const Job& job) {
  for (const fs::path& each : {job.folder, job.rows()})
    if (::chown(each.c_str(), test::nobody, test::nobody) != 0)
      throw std::runtime_error("cannot give away " + each.string());
  if (!test::becomeUser(test::nobody)) throw std::runtime_error("root cannot become an ordinary user here");
}

// Either part of a page stands without the other's rows, which another machine may have.
void writePart(const fs::path& page, bool isOfUnits, const fs::path& rows) {
  std::ifstream in(page);
  const std::string old{std::istreambuf_iterator<char>(in), {}};
  const std::size_t end = std::min(old.find(headingOfUnits), old.size());
  std::error_code error;
  fs::remove(page, error); // it may be somebody else's
  std::ofstream out(page);
  if (isOfUnits) {
    out << old.substr(0, end) << (end == old.size() ? "\n" : "");
    writeUnits(out, rows);
  } else {
    writePage(out, rows);
    if (end < old.size()) out << "\n" << old.substr(end);
  }
}

int play(const Job& job) {
  try {
    if (test::runsAsRoot()) becomeOrdinaryUser(job);
    if (::access(job.vantle.c_str(), X_OK) != 0 || ::access(job.rows().c_str(), W_OK) != 0)
      throw std::runtime_error("this user cannot get at " + job.vantle.string() + " and " +
                               job.folder.string());
    const char* const machine = std::getenv("REAL_APPS_MACHINE");
    for (const auto& [program, ways] : job.chosen) {
      const fs::path file = job.rows() / (program->key + ".json");
      std::vector<Row> rows = keptRows(file);
      for (const Way way : ways) {
        const auto begin = std::chrono::steady_clock::now();
        Row row;
        try {
          row = Trial(*program, job.vantle, job.surroundings).play(way);
        } catch (const std::exception& failure) {
          row.program = program->key;
          row.way = textOf(way);
          row.wrong = std::string("the stage: ") + failure.what();
        }
        row.machine = machine == nullptr ? "" : machine;
        const std::chrono::duration<double> length = std::chrono::steady_clock::now() - begin;
        std::cout << inWords(row) << " " << static_cast<long>(length.count()) << " s" << std::endl;
        std::erase_if(rows, [&](const Row& kept) { return kept.way == row.way; });
        rows.push_back(std::move(row));
        keepRows(file, rows);
      }
    }
    if (job.surroundings == Surroundings::userManager) return 0;
    writePart(job.folder / "real-apps.md", false, job.rows());
    std::ofstream record(job.folder / "real_apps.json");
    writeRecord(record, job.rows());
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
  std::vector<std::string> arguments(argv + 1, argv + argc);
  if (arguments.size() == 3 && arguments[0] == "--units-into") {
    writePart(arguments[1], true, fs::path(arguments[2]) / "rows-of-units");
    return 0;
  }
  Job job;
  if (!arguments.empty() && arguments[0] == "--user-manager") {
    arguments.erase(arguments.begin());
    job.surroundings = Surroundings::userManager;
  }
  if (arguments.size() < 2 || !choose({arguments.begin() + 2, arguments.end()}, job.surroundings, job.chosen))
    return usage();
  job.vantle = fs::absolute(arguments[0]).lexically_normal();
  job.folder = fs::absolute(arguments[1]).lexically_normal();
  std::error_code error;
  fs::create_directories(job.rows(), error);
  const auto all = [&] { return play(job); };
  return test::runsAsRoot() ? desktop::runIsolated(all, job.folder) : playInterruptibly(all);
}
