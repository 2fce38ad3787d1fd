// SPDX-License-Identifier: MIT
// What an app of a soak does beside showing its window.
//
//   forks MB RATE     touches so many megabytes, then forks RATE times a second; its newest hundred children
//                     live, and every fourth of them has a child of its own
//   orphans           five children that outlive it
//   sessions          what runs in a terminal: three children, each leads a session and has a child
//   threads           threads that are made and end at full speed
//
// SIGUSR2 holds it: who is born stays, and nobody is born. SIGUSR1 lets it go on.
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <deque>
#include <iostream>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

volatile std::sig_atomic_t isHeld = 0;

constexpr std::size_t mostChildren = 100;
constexpr unsigned longestLife = 300; // of an orphan, in seconds, should nobody end it

void hold(int number) { isHeld = number == SIGUSR2 ? 1 : 0; }

void sleepFor(long milliseconds) {
  const timespec time{milliseconds / 1000, milliseconds % 1000 * 1'000'000};
  ::nanosleep(&time, nullptr);
}

[[noreturn]] void live() {
  for (;;) ::pause();
}

// The child's number; the child itself dies with its parent.
pid_t forkLiving(const auto& first) {
  const pid_t child = ::fork();
  if (child != 0) return child;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  first();
  live();
}

void fork(std::size_t megabytes, long rate) {
  std::vector<char> memory(megabytes << 20, 1);
  std::deque<pid_t> children;
  for (unsigned count = 0;; ++count) {
    sleepFor(1000 / rate);
    if (isHeld != 0) continue;
    children.push_back(forkLiving([count] {
      if (count % 4 == 0) forkLiving([] {});
    }));
    if (children.size() <= mostChildren) continue;
    ::kill(children.front(), SIGKILL);
    ::waitpid(children.front(), nullptr, 0);
    children.pop_front();
  }
}

void leaveOrphans() {
  for (int count = 0; count < 5; ++count) {
    if (::fork() != 0) continue;
    ::prctl(PR_SET_PDEATHSIG, 0);
    ::alarm(longestLife);
    live();
  }
  live();
}

void openSessions() {
  for (int count = 0; count < 3; ++count) {
    forkLiving([] {
      ::setsid();
      forkLiving([] {});
    });
  }
  live();
}

void makeThreads() {
  for (;;) {
    if (isHeld != 0) sleepFor(10);
    std::thread one([] { sleepFor(1); });
    std::thread other([] {});
    one.join();
    other.join();
  }
}

} // namespace

int main(int argc, char** argv) {
  const std::vector<std::string> words(argv + 1, argv + argc);
  ::signal(SIGUSR1, hold);
  ::signal(SIGUSR2, hold);
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (words.size() == 3 && words[0] == "forks") fork(std::stoul(words[1]), std::stol(words[2]));
  if (words.size() == 1 && words[0] == "orphans") leaveOrphans();
  if (words.size() == 1 && words[0] == "sessions") openSessions();
  if (words.size() == 1 && words[0] == "threads") makeThreads();
  std::cerr << "soak_worker: not known: " << (words.empty() ? "nothing" : words[0]) << '\n';
  return 2;
}
