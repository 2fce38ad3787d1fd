// SPDX-License-Identifier: MIT
// The Linux band without a desktop: one command a line on standard input, one answer a line. For tests that
// place processes themselves, and for looking at a machine by hand.
//
//   boost PID          the app in front, with its tree
//   apps PID...        main processes of other apps, each with its tree
//   enter PID...       each the main process of an app: "1" or "0" for each of its processes
//   leave PID          the main process of an app: "1" or "0" for each of its processes, then who lost its
//                      place with them
//   in PID             "1", "0" or "?"
//   reclaim            what start-up and the end of a Boost do
//   settle             waits for what is under way: "1" when nothing is left
//   quit               ends at once, putting nothing back
//
// usage: band_console [LEDGER [BUS_ADDRESS [BUS_LIMIT_IN_MILLISECONDS]]]
// With the argument "test" alone it runs the self-test instead.
#include "engine/AppTrees.h"
#include "engine/SelfTest.h"
#include "platform/OwnedMachine.h"
#include "platform/linux/band/LinuxBand.h"
#include "platform/linux/band/UserManager.h"
#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/process/BootEpoch.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/shared/PollEventLoop.h"

#include <array>
#include <cstdio>
#include <iostream>
#include <memory>
#include <optional>
#include <set>
#include <sstream>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace vantle {

namespace {

class Console {
 public:
  Console(const std::string& ledger, const std::string& bus, std::chrono::milliseconds limit)
      : m_processes(BootEpoch(0), m_kernel),
        m_band(m_loop, m_files,
               {.kernel = m_kernel,
                .manager = std::make_unique<UserManager>(m_loop, bus),
                .ledgers = ledger.empty() ? std::vector<std::string>{} : std::vector{ledger},
                .busLimit = limit}) {}

  int run() {
    const auto input = m_loop.watch(STDIN_FILENO, EventLoop::Readiness::readable, [this] { readInput(); });
    while (!m_loop.runUntil([this] { return m_isDone; }, std::chrono::hours(1))) {
    }
    return 0;
  }

 private:
  void readInput() {
    std::array<char, 4096> buffer{};
    const ssize_t got = ::read(STDIN_FILENO, buffer.data(), buffer.size());
    if (got <= 0) m_isDone = true;
    if (got > 0) m_input.append(buffer.data(), static_cast<std::size_t>(got));
    for (std::size_t end = 0; !m_isDone && (end = m_input.find('\n')) != std::string::npos;) {
      const std::string line = m_input.substr(0, end);
      m_input.erase(0, end + 1);
      std::cout << answer(line) << std::endl; // NOLINT(performance-avoid-endl): the other side waits for it
    }
  }

  std::string answer(const std::string& line) {
    std::istringstream words(line);
    std::string command;
    words >> command;
    std::vector<Pid> pids;
    for (Pid pid = 0; words >> pid;) pids.push_back(pid);
    const Pid first = pids.empty() ? 0 : pids.front();
    if (command == "boost") {
      m_boostApp = first;
      std::optional<AppTrees> trees;
      m_band.makeRoomFor(first, [&]() -> const ProcessView& { return trees.emplace(look({})); });
      return "ok";
    }
    if (command == "apps") {
      m_others.insert(pids.begin(), pids.end());
      return "ok";
    }
    if (command == "enter") return enter(pids);
    if (command == "leave") return leave(first);
    if (command == "in") {
      const std::optional<bool> isIn = m_band.isInBackgroundBand(first);
      return isIn ? std::to_string(static_cast<int>(*isIn)) : "?";
    }
    if (command == "settle") return m_band.settle(std::chrono::seconds(60)) ? "1" : "0";
    if (command == "reclaim") m_band.reclaim(nullptr);
    if (command == "quit") m_isDone = true;
    return "ok";
  }

  AppTrees look(const std::vector<Pid>& roots) const {
    std::set<Pid> apps(roots.begin(), roots.end());
    apps.insert(m_slowed.begin(), m_slowed.end());
    apps.insert(m_others.begin(), m_others.end());
    if (m_boostApp != 0) apps.insert(m_boostApp);
    return {m_processes, {.apps = std::move(apps), .self = ::getpid(), .members = {}}};
  }

  std::string enter(const std::vector<Pid>& roots) {
    const AppTrees trees = look(roots);
    std::vector<BandApp> apps;
    for (const Pid root : roots) apps.push_back({root, trees.processesOf(root)});
    const auto answers = m_band.enter({trees, m_boostApp, apps, m_slowed});
    std::string text;
    for (std::size_t at = 0; at < apps.size(); ++at) {
      for (const BandAnswer& answer : answers.at(at)) {
        text += answer.entered() ? '1' : '0';
        if (answer.entered()) m_slowed.insert(apps[at].root);
      }
      text += ' ';
    }
    return text;
  }

  std::string leave(Pid root) {
    const AppTrees trees = look({root});
    const auto leaving = m_band.leaving(trees);
    std::string text;
    for (const Pid pid : trees.processesOf(root)) text += leaving->leave(pid) ? '1' : '0';
    for (const Pid pid : leaving->finish()) text += ' ' + std::to_string(pid);
    m_slowed.erase(root);
    return text;
  }

  PollEventLoop m_loop;
  PosixFileStore m_files{"/nonexistent", PosixFileStore::Sync::none};
  std::shared_ptr<ProcKernel> m_kernel = std::make_shared<ProcKernel>();
  ProcfsProcessTable m_processes;
  LinuxBand m_band;
  std::string m_input;
  Pid m_boostApp = 0;
  std::set<Pid> m_others;
  std::set<Pid> m_slowed; // main processes of apps
  bool m_isDone = false;
};

} // namespace

} // namespace vantle

int main(int count, char** arguments) {
  using namespace vantle;
  const std::string first = count > 1 ? arguments[1] : "";
  if (first != "test") {
    const std::string bus = count > 2 ? arguments[2] : "";
    const long limit = count > 3 ? std::stol(arguments[3]) : 200;
    return Console(first, bus, std::chrono::milliseconds(limit)).run();
  }
  const auto machine = selfTestMachine();
  Machine ports = machine->machine();
  return SelfTest(ports, [](const std::string& line) { std::puts(line.c_str()); }).run();
}
