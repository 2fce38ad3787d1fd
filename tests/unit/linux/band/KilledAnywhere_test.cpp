// SPDX-License-Identifier: MIT
// The program killed after each single change that it makes to the machine, and then started again.
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/linux/band/BandFixture.h"
#include "tests/unit/linux/band/ForkingApp.h"
#include "tests/unit/linux/band/ProgramOnBand.h"

#include <algorithm>
#include <array>
#include <csignal>
#include <fcntl.h>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <string>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle {

namespace {

using namespace test;

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
  const ForkedProcess process({}, [&] {
    ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
    ::raise(SIGSTOP);
    ::_exit(body() ? 0 : 1);
  });
  const Pid child = process.pid();
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
      const Ending ending =
          runUntilChange(nth, [&] { return ProgramOnBand(data).playGame(game.pid(), apps); });
      ASSERT_NE(ending, Ending::failed) << "at change " << nth;
      if (ending == Ending::byItself) break;
      const State left = stateOf(everybody);
      wasSlowed = wasSlowed || left != before;
      EXPECT_EQ(left.at(stranger.pid()), before.at(stranger.pid())) << "after change " << nth;

      ProgramOnBand next(data);
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

// Children are on their way at every one of these deaths, and sessions wait for their turn.
TEST_F(KilledAnywhere, TheNextStartPutsBackWhatWasBeingBorn) {
  asBoth([] {
    const TestProcess game;
    const std::string letters = "mq";
    std::vector<std::unique_ptr<TestProcess>> apps;
    std::vector<Pid> pids;
    for (const char letter : letters) {
      apps.push_back(std::make_unique<TestProcess>(TestProcess::Session::own, forkingApp));
      pids.push_back(apps.back()->pid());
      apps.back()->ask(letter);
    }
    const std::string before = schedulingState(pids.front()) + ", session " + autogroupLine(pids.front());
    std::size_t slowed = 0;
    constexpr std::size_t step = 53; // no divisor of what one app or one thread takes
    for (std::size_t nth = 5;; nth += step) {
      const desktop::TemporaryFolder folder;
      const std::string data = folder.path().string();
      const Ending ending =
          runUntilChange(nth, [&] { return ProgramOnBand(data).playGame(game.pid(), pids); });
      slowed += differencesIn(pids, before).size();
      ProgramOnBand next(data);
      EXPECT_TRUE(next.band.settle(guard));
      EXPECT_EQ(differencesIn(pids, before), "") << "after change " << nth;
      if (ending != Ending::killed || testing::Test::HasFailure()) break;
    }
    EXPECT_GT(slowed, 0U);
  });
}

} // namespace

} // namespace vantle
