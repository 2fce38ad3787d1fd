// SPDX-License-Identifier: MIT
// The Linux band without a desktop: one command a line on standard input, one answer a line. For tests that
// place processes themselves, and for looking at a machine by hand.
//
//   boost PID          the app in front, with its tree
//   enter PID...       each the main process of an app: "1" or "0" for each
//   leave PID          the process and its tree: "1" or "0" for each
//   in PID             "1", "0" or "?"
//   reclaim            what start-up and the end of a Boost do
//   settle             waits for what is under way: "1" when nothing is left
//   quit               ends at once, putting nothing back
//
// usage: band_console [LEDGER [BUS_ADDRESS [BUS_LIMIT_IN_MILLISECONDS]]]
// With the argument "test" alone it runs the self-test instead.
#include "engine/ProcessQueries.h"
#include "engine/SelfTest.h"
#include "platform/linux/LinuxMachine.h"
#include "platform/linux/band/LinuxBand.h"
#include "platform/linux/band/UserManager.h"
#include "platform/linux/files/PosixFileStore.h"
#include "platform/linux/process/BootEpoch.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/shared/PollEventLoop.h"

#include <array>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <unistd.h>

namespace vantle {

namespace {

class Console {
 public:
  Console(const std::string& ledger, const std::string& bus, std::chrono::milliseconds limit)
      : m_epoch(0), m_processes(m_epoch),
        m_band(m_loop, m_files,
               {.manager = std::make_unique<UserManager>(m_loop, bus), .ledger = ledger, .busLimit = limit}) {
  }

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
      m_band.prepareBoostApp(first, processTree(m_processes, first), {first});
      return "ok";
    }
    if (command == "enter") return enter(pids);
    if (command == "leave") {
      std::string text;
      for (const Pid pid : processTree(m_processes, first))
        text += m_band.leaveBackgroundBand(pid) ? "1" : "0";
      return text;
    }
    if (command == "in") {
      const std::optional<bool> isIn = m_band.isInBackgroundBand(first);
      return isIn ? std::to_string(static_cast<int>(*isIn)) : "?";
    }
    if (command == "settle") return m_band.settle(std::chrono::seconds(60)) ? "1" : "0";
    if (command == "reclaim") m_band.reclaim();
    if (command == "quit") m_isDone = true;
    return "ok";
  }

  std::string enter(const std::vector<Pid>& roots) {
    std::vector<BandGroup> groups;
    for (const Pid root : roots) {
      const std::vector<Pid> tree = processTree(m_processes, root);
      groups.push_back({root, tree, tree});
    }
    std::string text;
    for (const std::vector<bool>& app : m_band.enterBackgroundBand(groups, {roots.begin(), roots.end()})) {
      for (const bool entered : app) text += entered ? '1' : '0';
      text += ' ';
    }
    return text;
  }

  PollEventLoop m_loop;
  PosixFileStore m_files{"/nonexistent", PosixFileStore::Sync::none};
  BootEpoch m_epoch;
  ProcfsProcessTable m_processes;
  LinuxBand m_band;
  std::string m_input;
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
  const auto machine = LinuxMachine::forSelfTest(XdgFolders::fromEnvironment());
  Machine ports = machine->machine();
  return SelfTest(ports, [](const std::string& line) { std::puts(line.c_str()); }).run();
}
