// SPDX-License-Identifier: MIT
// What the app in front gets while other apps keep every processor busy: how long each frame of a 60 Hz
// program with 8 ms of work a frame waits for a processor, how long the frame takes, and the program's share
// of a processor when it wants one whole. Each row is one way of slowing
// the others down; all are measured in one run, taking turns, each round in another order, so that whatever
// else the machine does meets them all alike. What else it does can be more than what is looked for, on a
// virtual machine above all, whose own processor is away at times. The wait does not see that, so it comes
// first: its mean, its 99th percentile, and its mean against that of the row alone. Among the times
// "p99/alone" is the middle of the rounds, each against its own round alone, with the quarters below and
// above it; what a second row alone gets there is what the figure is worth.
//
// usage: front_app [ROUNDS [SECONDS]]     (as root, VANTLE_BENCH_USER=UID runs it as that user)
#include "bench/support/BenchUser.h"
#include "bench/support/FrontApp.h"
#include "bench/support/Series.h"
#include "engine/AppTrees.h"
#include "platform/linux/band/LinuxBand.h"
#include "platform/linux/band/UserManager.h"
#include "platform/linux/bus/BusBatch.h"
#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/files/XdgFolders.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/Program.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <numeric>
#include <optional>
#include <sched.h>
#include <string>
#include <sys/resource.h>
#include <unistd.h>
#include <vector>

namespace vantle::bench {
namespace {

using Apps = std::vector<std::unique_ptr<BusyApp>>;
using std::chrono::milliseconds;

struct Placement {
  const char* name;
  OwnSession session;
  bool ownUnit;
};

// The game daemon of Debian's package "gamemode", on a bus of its own and with its own default settings.
class GameDaemon {
 public:
  explicit GameDaemon(EventLoop& loop) {
    if (::access("/usr/bin/gamemoded", X_OK) != 0) return;
    m_bus.emplace();
    m_daemon.emplace(desktop::Start{
        .command = {"/usr/bin/gamemoded"},
        .environment = {{"PATH", "/usr/bin:/bin"}, {"DBUS_SESSION_BUS_ADDRESS", m_bus->address()}}});
    m_connection = std::make_unique<BusConnection>(loop, m_bus->address());
    m_isThere = desktop::waitUntil([this] { return call("QueryStatus", ::getpid()); });
  }

  bool isThere() const { return m_isThere; }
  bool call(const char* member, pid_t game) {
    BusMessage message =
        m_connection->methodCall({"com.feralinteractive.GameMode", "/com/feralinteractive/GameMode",
                                  "com.feralinteractive.GameMode", member});
    if (!message || sd_bus_message_append(message.get(), "i", game) < 0) return false;
    BusBatch batch(*m_connection);
    const std::size_t place = batch.add(std::move(message));
    batch.wait(std::chrono::steady_clock::now() + std::chrono::seconds(5));
    return batch.reply(place) != nullptr;
  }

 private:
  std::optional<desktop::PrivateBus> m_bus;
  std::optional<desktop::Program> m_daemon;
  std::unique_ptr<BusConnection> m_connection;
  bool m_isThere = false;
};

// One way of making the app in front faster. `begin` is false where it could do nothing.
struct Way {
  const char* name;
  bool hasOthers = true;
  std::function<bool(const FrontApp&, const Apps&)> begin = [](const FrontApp&, const Apps&) { return true; };
  std::function<void(const FrontApp&, const Apps&)> end = [](const FrontApp&, const Apps&) {};
};

std::vector<Way> waysOf(LinuxBand& band, GameDaemon& games) {
  const auto everyApp = [](const auto& change) {
    return [change](const FrontApp&, const Apps& apps) {
      return std::all_of(apps.begin(), apps.end(), [&](const auto& app) { return change(app->pid()) == 0; });
    };
  };
  std::vector<Way> all;
  all.push_back({"alone", false});
  all.push_back({"alone again", false});
  all.push_back({"nothing done"});
  all.push_back({"SCHED_IDLE", true, everyApp([](pid_t pid) {
                   const sched_param none{};
                   return ::sched_setscheduler(pid, SCHED_IDLE, &none);
                 })});
  all.push_back({"nice 19", true, everyApp([](pid_t pid) {
                   return ::setpriority(PRIO_PROCESS, static_cast<id_t>(pid), 19);
                 })});
  all.push_back(
      {"gamemode", true,
       [&games](const FrontApp& front, const Apps&) {
         return games.isThere() && games.call("RegisterGame", front.pid());
       },
       [&games](const FrontApp& front, const Apps&) { games.call("UnregisterGame", front.pid()); }});
  all.push_back({"Vantle", true,
                 [&band](const FrontApp& front, const Apps& apps) {
                   AppTrees::Known known;
                   known.self = ::getpid();
                   known.apps.insert(front.pid());
                   std::vector<BandApp> entering;
                   for (const auto& app : apps) {
                     known.apps.insert(app->pid());
                     entering.push_back({app->pid(), {app->pid()}});
                   }
                   const ProcfsProcessTable table(BootEpoch(0));
                   const AppTrees trees(table, known);
                   band.makeRoomFor(front.pid(), [&]() -> const ProcessView& { return trees; });
                   bool every = true;
                   for (const auto& answers :
                        band.enter({.view = trees, .boostApp = front.pid(), .apps = entering, .slowed = {}}))
                     every = every && answers.front().entered();
                   return band.settle(std::chrono::seconds(10)) && every;
                 },
                 [&band](const FrontApp&, const Apps& apps) {
                   for (const auto& app : apps) band.leaveBackgroundBand(app->pid());
                   band.reclaim(nullptr);
                   band.settle(std::chrono::seconds(10));
                 }});
  return all;
}

struct Result {
  bool couldDoIt = true;
  std::vector<double> waits;  // microseconds
  std::vector<double> frames; // milliseconds
  std::vector<double> shares;
  std::vector<double> roundP99s;
};

double percentile(std::vector<double> values, double part) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  return values[std::min(values.size() - 1,
                         static_cast<std::size_t>(static_cast<double>(values.size()) * part))];
}

double mean(const std::vector<double>& values) {
  return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

void print(const Placement& placement, const std::vector<Way>& all, const std::vector<Result>& results) {
  std::printf("\n%s\n  %-14s %27s   %s\n", placement.name, "", "wait for a processor, us",
              "time of a frame, ms");
  std::printf("  %-14s %9s %9s %7s   %7s %7s %7s %8s %7s   %s\n", "", "mean", "p99", "/alone", "p50", "p95",
              "p99", "late", "share", "p99/alone");
  const double limit = std::chrono::duration<double, std::milli>(FrontApp::frame).count();
  for (std::size_t at = 0; at < all.size(); ++at) {
    const Result& result = results[at];
    const auto late = std::count_if(result.frames.begin(), result.frames.end(),
                                    [limit](double frame) { return frame > limit; });
    std::vector<double> ratios;
    for (std::size_t round = 0; round < result.roundP99s.size(); ++round)
      ratios.push_back(result.roundP99s[round] / results.front().roundP99s[round]);
    std::printf("  %-14s %9.1f %9.1f %7.2f   ", all[at].name, mean(result.waits),
                percentile(result.waits, 0.99), mean(result.waits) / mean(results.front().waits));
    std::printf("%7.1f %7.1f %7.1f %6.1f %% %5.1f %%   %4.2f (%.2f to %.2f)%s\n",
                percentile(result.frames, 0.5), percentile(result.frames, 0.95),
                percentile(result.frames, 0.99),
                100.0 * static_cast<double>(late) /
                    static_cast<double>(std::max<std::size_t>(1, result.frames.size())),
                100 * median(result.shares), median(ratios), percentile(ratios, 0.25),
                percentile(ratios, 0.75), result.couldDoIt ? "" : "  (could do nothing)");
  }
}

void measure(const Placement& placement, LinuxBand& band, GameDaemon& games, int rounds, milliseconds time) {
  const std::vector<Way> all = waysOf(band, games);
  std::vector<Result> results(all.size());
  const FrontApp front(placement.session);
  if (placement.ownUnit) band.placeAsApp(front.pid());
  const long processors = ::sysconf(_SC_NPROCESSORS_ONLN);
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t turn = 0; turn < all.size(); ++turn) {
      const std::size_t at = (turn + static_cast<std::size_t>(round)) % all.size();
      // New ones each time: not every way can be undone by everybody.
      Apps apps;
      for (long count = 0; all[at].hasOthers && count < processors; ++count) {
        apps.push_back(std::make_unique<BusyApp>(placement.session));
        if (placement.ownUnit) band.placeAsApp(apps.back()->pid());
      }
      const bool done = all[at].begin(front, apps);
      results[at].couldDoIt = results[at].couldDoIt && done;
      const FrontFigures figures = front.measure(time, time / 2);
      if (done) all[at].end(front, apps);
      std::vector<double> times;
      for (const Frame& frame : figures.frames) {
        times.push_back(frame.millis);
        results[at].waits.push_back(frame.waitMicros);
      }
      results[at].roundP99s.push_back(percentile(times, 0.99));
      results[at].frames.insert(results[at].frames.end(), times.begin(), times.end());
      results[at].shares.push_back(figures.share);
    }
  }
  print(placement, all, results);
}

std::string userBus() {
  const std::optional<std::string> runtime = XdgFolders::fromEnvironment().runtime;
  return runtime && ::access((*runtime + "/bus").c_str(), F_OK) == 0 ? "unix:path=" + *runtime + "/bus" : "";
}

int run(int rounds, milliseconds time) {
  PollEventLoop loop;
  PosixFileStore files("/nonexistent", PosixFileStore::Sync::none);
  const std::string bus = userBus();
  LinuxBand band(loop, files,
                 {.manager = std::make_unique<UserManager>(loop, bus), .busLimit = std::chrono::seconds(5)});
  GameDaemon games(loop);
  std::printf("%ld processors, each with a busy app; user %d; %d rounds of %.0f s a row\n",
              ::sysconf(_SC_NPROCESSORS_ONLN), static_cast<int>(::geteuid()), rounds,
              std::chrono::duration<double>(time).count());
  measure({"all in one session", OwnSession::no, false}, band, games, rounds, time);
  measure({"each in its own session", OwnSession::yes, false}, band, games, rounds, time);
  if (bus.empty()) {
    std::printf("\neach in its own unit: there is no user manager here\n");
  } else {
    measure({"each in its own unit", OwnSession::yes, true}, band, games, rounds, time);
  }
  return 0;
}

} // namespace
} // namespace vantle::bench

int main(int count, char** arguments) {
  if (!vantle::bench::becomeBenchUser()) return 1;
  const int rounds = count > 1 ? std::atoi(arguments[1]) : 3;
  const int seconds = count > 2 ? std::atoi(arguments[2]) : 4;
  return vantle::bench::run(rounds, std::chrono::seconds(seconds));
}
