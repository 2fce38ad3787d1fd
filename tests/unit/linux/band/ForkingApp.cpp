// SPDX-License-Identifier: MIT
#include "tests/unit/linux/band/ForkingApp.h"

#include "tests/support/Kernel.h"
#include "tests/support/Program.h"
#include "tests/unit/linux/band/TestProcess.h"

#include <algorithm>
#include <csignal>
#include <filesystem>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <system_error>
#include <thread>
#include <unistd.h>

namespace vantle::test {

namespace {

void takeMemory(std::size_t megabytes) {
  const std::size_t bytes = megabytes << 20U;
  void* const memory = ::mmap(nullptr, bytes, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) ::_exit(1);
  ::madvise(memory, bytes, MADV_NOHUGEPAGE); // each page is copied by itself
  for (std::size_t at = 0; at < bytes; at += 4096) static_cast<volatile char*>(memory)[at] = 1;
}

[[noreturn]] void live(int seconds) {
  ::alarm(static_cast<unsigned>(seconds));
  for (;;) ::pause();
}

// Twenty children a second; those live on for a while, and every fourth of them forks on.
[[noreturn]] void forkForEver(int pauseMs) {
  std::signal(SIGCHLD, SIG_IGN);
  for (int count = 0;; ++count) {
    if (::fork() == 0) {
      std::signal(SIGALRM, SIG_DFL);
      if (count % 4 == 0 && ::fork() == 0) live(2);
      live(1);
    }
    ::usleep(static_cast<useconds_t>(pauseMs) * 1000);
  }
}

// Never asleep between two forks.
[[noreturn]] void forkAndCompute() {
  std::signal(SIGCHLD, SIG_IGN);
  for (unsigned long work = 0;; ++work) {
    if (work % 20'000'000 == 0 && ::fork() == 0) live(3);
  }
}

// As terminals do: a shell that starts programs. It is nobody's child, because a program below one of this
// program's own is taken for what another copy looks after.
[[noreturn]] void spawnForEver() {
  if (::fork() != 0) ::_exit(0);
  ::execl("/bin/sh", "sh", "-c", "while :; do sleep 1 & sleep 0.02; done", nullptr);
  ::_exit(1);
}

// One process after the other, each with a single child. The first one stays and buries them: with nobody to
// do so they would soon leave no number to anybody else on the machine.
[[noreturn]] void forkAndEndForEver() {
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  std::signal(SIGCHLD, SIG_IGN);
  if (::fork() != 0) {
    for (;;) ::pause();
  }
  for (;;) {
    if (::fork() != 0) ::_exit(0);
  }
}

// Threads as fast as they can be started, of which some live on for a while.
[[noreturn]] void startThreadsForEver() {
  for (unsigned count = 0;; ++count) {
    try {
      std::thread([stays = count % 400 == 0] {
        if (stays) ::sleep(2);
      }).detach();
    } catch (const std::system_error&) {
      ::usleep(1000);
    }
  }
}

} // namespace

int forkingApp(char letter) {
  if (::fork() != 0) return 0; // the app's own process answers
  if (letter == 'm') {
    takeMemory(400);
    forkForEver(50);
  }
  if (letter == 'q') forkForEver(20);
  if (letter == 'c') {
    takeMemory(50);
    forkAndCompute();
  }
  if (letter == 'p') spawnForEver();
  if (letter == 'T') startThreadsForEver();
  if (letter == 'e') forkAndEndForEver();
  return 0;
}

namespace {

bool isIn(const std::vector<Pid>& sessions, const ProcessState& process) {
  return process.isAlive() && std::find(sessions.begin(), sessions.end(), process.session) != sessions.end();
}

// One that has given its memory back is on its way out, which takes long where processors are scarce.
bool hasMemory(Pid pid) {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/" + std::to_string(pid) + "/exe", error);
  return !program.empty();
}

} // namespace

std::string differencesIn(const std::vector<Pid>& sessions, const std::string& before) {
  std::string differences;
  for (const auto& [pid, process] : allProcesses()) {
    if (!isIn(sessions, process) || !hasMemory(pid)) continue;
    for (const Pid tid : threadsOf(pid)) {
      const std::string state = schedulingState(tid) + ", session " + autogroupLine(pid);
      // A thread that has ended meanwhile tells nothing.
      if (state == before || !desktop::isAlive(tid)) continue;
      differences += "process " + std::to_string(pid) + " thread " + std::to_string(tid) + ", a child of " +
                     std::to_string(process.parent) + ": " + state + "\n";
    }
  }
  return differences;
}

} // namespace vantle::test
