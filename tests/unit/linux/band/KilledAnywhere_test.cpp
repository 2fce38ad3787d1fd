// SPDX-License-Identifier: MIT
// The program killed after each single change that it makes to the machine, and then started again.
#include "engine/Engine.h"
#include "platform/linux/process/BootClock.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/simulated/SimulatedMachine.h"
#include "tests/desktop/harness/TemporaryFolder.h"
#include "tests/unit/linux/band/BandFixture.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <map>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle {

namespace {

using namespace test;

// The whole program but for the desktop: that one is in memory, and its apps are real processes.
struct Program {
  explicit Program(const std::string& folder)
      : files(folder, PosixFileStore::Sync::none), epoch(BootEpoch::load(files, {folder + "/boot.json"})),
        processes(epoch, kernel), clock(epoch),
        band(loop, files, {.kernel = kernel, .ledgers = {folder + "/band.json"}}), settings(desktop.defaults),
        engine(ports(), settings) {}

  Machine ports() {
    desktop.host.self = ::getpid();
    return {desktop.host,
            processes,
            band,
            desktop.workspace,
            desktop.audio,
            desktop.power,
            desktop.pressure,
            desktop.notifications,
            desktop.defaults,
            files,
            clock,
            desktop.launcher,
            desktop.text};
  }
  SimulatedAppRef add(Pid pid, bool isGame) {
    AppSpec spec{.name = std::to_string(pid)};
    if (isGame) spec.bundlePath = "/games/steamapps/game";
    auto app = std::make_shared<SimulatedApp>(desktop.workspace, desktop.calls, pid, spec);
    desktop.workspace.add(app);
    return app;
  }
  // A Boost from its beginning to its end.
  bool playGame(Pid game, std::span<const Pid> apps) {
    for (const Pid app : apps) add(app, false);
    desktop.workspace.setFrontmost(add(game, true));
    desktop.workspace.deliverAll();
    const bool slowed = engine.managedNames.get().size() == apps.size() && band.settle(guard);
    desktop.workspace.markTerminated(game);
    desktop.workspace.deliverAll();
    return slowed && !engine.activeGame.get() && band.settle(guard);
  }

  SimulatedMachine desktop;
  PollEventLoop loop;
  PosixFileStore files;
  BootEpoch epoch;
  std::shared_ptr<ProcKernel> kernel = std::make_shared<ProcKernel>();
  ProcfsProcessTable processes;
  BootClock clock;
  LinuxBand band;
  AppSettings settings;
  Engine engine;
};

using SystemCall = __ptrace_syscall_info; // the C library's name for the kernel's structure

// Calls that leave the machine as it is: dying after one is like dying before it.
bool changesNothing(const SystemCall& call) {
  static constexpr std::array looks{SYS_read,
                                    SYS_pread64,
                                    SYS_close,
                                    SYS_getdents64,
                                    SYS_newfstatat,
                                    SYS_fstat,
                                    SYS_statx,
                                    SYS_lseek,
                                    SYS_readlinkat,
                                    SYS_faccessat,
                                    SYS_faccessat2,
                                    SYS_mmap,
                                    SYS_munmap,
                                    SYS_mprotect,
                                    SYS_brk,
                                    SYS_madvise,
                                    SYS_futex,
                                    SYS_poll,
                                    SYS_ppoll,
                                    SYS_ioprio_get,
                                    SYS_getpriority,
                                    SYS_sched_getattr,
                                    SYS_sched_getaffinity,
                                    SYS_sched_getscheduler,
                                    SYS_clock_nanosleep,
                                    SYS_getrandom,
                                    SYS_rt_sigprocmask,
                                    SYS_fcntl,
                                    SYS_epoll_wait};
  if (call.entry.nr == SYS_openat) return (call.entry.args[2] & (O_CREAT | O_TRUNC)) == 0;
  return std::find(looks.begin(), looks.end(), static_cast<long>(call.entry.nr)) != looks.end();
}

enum class Ending { killed, byItself, failed };

// Runs the function in a process that dies right after its nth change, counted from 1.
Ending runUntilChange(std::size_t nth, const std::function<bool()>& body) {
  const Pid child = ::fork();
  if (child == 0) {
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::raise(SIGSTOP);
    ::_exit(body() ? 0 : 1);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  ::ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
  std::size_t changes = 0;
  bool isChange = false;
  int signal = 0;
  for (;;) {
    ::ptrace(PTRACE_SYSCALL, child, nullptr, signal);
    ::waitpid(child, &status, 0);
    if (WIFEXITED(status)) return WEXITSTATUS(status) == 0 ? Ending::byItself : Ending::failed;
    if (WIFSIGNALED(status)) return Ending::failed;
    signal = WSTOPSIG(status) == (SIGTRAP | 0x80) ? 0 : WSTOPSIG(status);
    if (signal != 0) continue;
    SystemCall call{};
    ::ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof call, &call);
    if (call.op == PTRACE_SYSCALL_INFO_ENTRY) isChange = !changesNothing(call);
    if (call.op == PTRACE_SYSCALL_INFO_EXIT && isChange && ++changes == nth) break;
  }
  ::kill(child, SIGKILL);
  ::waitpid(child, &status, 0);
  return Ending::killed;
}

using State = std::map<Pid, std::string>;

State stateOf(std::span<const Pid> processes) {
  State state;
  for (const Pid pid : processes) {
    for (const Pid tid : threadsOf(pid))
      state[tid] = schedulingState(tid) + ", session " + autogroupLine(pid);
  }
  return state;
}

// An ordinary user waits a tenth of a second for each session that changes, so not every change is tried.
std::size_t stride() { return runsAsRoot() ? 1 : 3; }

class KilledAnywhere : public LinuxBandTest {};

TEST_F(KilledAnywhere, TheNextStartPutsEverythingBackAsItWas) {
  asBoth([] {
    const TestProcess game;
    const TestProcess plain;
    const TestProcess particular(TestProcess::Session::own, [](char) {
      ::setpriority(PRIO_PROCESS, 0, 5);
      return ::setpriority(PRIO_PROCESS, 0, 6) == 0 ? 1 : 0;
    });
    const TestProcess stranger; // no app
    particular.ask('!');
    plain.ask('t');
    const std::array<Pid, 5> everybody{game.pid(), plain.pid(), plain.ask('f'), particular.pid(),
                                       stranger.pid()};
    const std::array<Pid, 2> apps{plain.pid(), particular.pid()};
    const State before = stateOf(everybody);

    std::size_t tried = 0;
    bool wasSlowed = false;
    for (std::size_t nth = 1;; nth += stride(), ++tried) {
      const desktop::TemporaryFolder folder;
      const std::string data = folder.path().string();
      const Ending ending = runUntilChange(nth, [&] { return Program(data).playGame(game.pid(), apps); });
      ASSERT_NE(ending, Ending::failed) << "at change " << nth;
      if (ending == Ending::byItself) break;
      const State left = stateOf(everybody);
      wasSlowed = wasSlowed || left != before;
      EXPECT_EQ(left.at(stranger.pid()), before.at(stranger.pid())) << "after change " << nth;

      Program next(data);
      EXPECT_TRUE(next.band.settle(guard));
      EXPECT_EQ(stateOf(everybody), before) << "after change " << nth;
      std::ifstream journal(data + "/Vantle/journal.json");
      EXPECT_EQ(std::string(std::istreambuf_iterator<char>(journal), {}), "[]") << "after change " << nth;
      if (testing::Test::HasFailure()) return;
    }
    EXPECT_EQ(stateOf(everybody), before);
    EXPECT_TRUE(wasSlowed);
    EXPECT_GE(tried * stride(), 50U);
  });
}

} // namespace

} // namespace vantle
