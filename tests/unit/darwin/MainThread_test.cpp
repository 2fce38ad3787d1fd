// SPDX-License-Identifier: MIT
// Real signals, threads and programs, each in a process of its own.
#include "platform/darwin/process/DarwinMainThread.h"

#include "tests/unit/darwin/DarwinFixture.h"
#include "tests/unit/posix/MainThreadCases.h"

#include <csignal>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle {
namespace {

using testing::ExitedWithCode;

class Main : public DarwinTest {
 protected:
  // To be called in the process itself: the kernel in memory knows it by its real pid.
  void liveAs(const char* program) { machine.processes.spawn({.executable = program, .pid = ::getpid()}); }
};

TEST_F(Main, ASignalIsSeenWhileItWaitsForTheMainThread) {
  EXPECT_EXIT(seesASignalThatWaits<DarwinMainThread>(), ExitedWithCode(0), "");
}

TEST_F(Main, ASignalThatCameBeforeReachesItsSourceAndTheWatcher) {
  EXPECT_EXIT(passesOnAnEarlySignal<DarwinMainThread>(), ExitedWithCode(0), "");
}

TEST_F(Main, ASignalThatComesAfterReachesItsSource) {
  EXPECT_EXIT(passesOnALateSignal<DarwinMainThread>(), ExitedWithCode(0), "");
}

TEST_F(Main, WhoeverWatchesIsWokenAndWaitsNoLongerThanItSays) {
  EXPECT_EXIT(wakesTheWatcher<DarwinMainThread>(), ExitedWithCode(0), "");
}

TEST_F(Main, StandsStillWhenItIsFrozenAndForNobodyElse) {
  EXPECT_EXIT(standsStillWhenFrozen<DarwinMainThread>(SIGUSR2), ExitedWithCode(0), "");
}

TEST_F(Main, TheProgramIsRunOnceMore) {
  const std::string folder = testing::TempDir();
  const std::string program = folder + "darwin-main-program";
  const std::string written = folder + "darwin-main-written";
  std::ofstream(program) << "#!/bin/sh\necho \"$1\" >" << written << "\n";
  ::chmod(program.c_str(), 0700);
  EXPECT_EXIT(
      {
        liveAs(program.c_str());
        DarwinMainThread thread;
        thread.runProgram("--put-back", std::chrono::seconds(60));
        thread.say("said");
        leave(true);
      },
      ExitedWithCode(0), "said");
  std::string line;
  std::getline(std::ifstream(written), line);
  EXPECT_EQ(line, "--put-back");
}

TEST_F(Main, AProgramThatDoesNotEndIsWaitedForNoLonger) {
  const std::string folder = testing::TempDir();
  const std::string program = folder + "darwin-main-sleeper";
  const std::string written = folder + "darwin-main-sleeper-pid";
  std::filesystem::remove(written);
  std::ofstream(program) << "#!/bin/sh\necho $$ >" << written << "\nexec sleep 1000\n";
  ::chmod(program.c_str(), 0700);
  EXPECT_EXIT(
      {
        liveAs(program.c_str());
        DarwinMainThread thread;
        thread.runProgram("", std::chrono::milliseconds(1));
        Pid pid = 0;
        while (pid <= 0) std::ifstream(written) >> pid;
        const bool isThere = ::waitpid(pid, nullptr, WNOHANG) == 0;
        ::kill(pid, SIGKILL); // it has inherited that it hears nothing else
        leave(isThere);
      },
      ExitedWithCode(0), "");
}

TEST_F(Main, KnowsWhetherItsOwnProgramStartedIt) {
  machine.processes.spawn({.executable = "/bin/sh", .pid = ::getpid()});
  machine.processes.spawn({.executable = "/bin/cat", .pid = ::getppid()});
  EXPECT_FALSE(isStartedByOwnProgram());
  machine.processes.find(::getppid())->executable = "/bin/sh";
  EXPECT_TRUE(isStartedByOwnProgram());
  machine.processes.find(::getppid())->executable = "/nothing";
  machine.processes.find(::getpid())->executable = "/nothing";
  EXPECT_FALSE(isStartedByOwnProgram()) << "of neither anything is known";
}

} // namespace
} // namespace vantle
