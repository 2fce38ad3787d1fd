// SPDX-License-Identifier: MIT
#include "tests/unit/linux/band/TestProcess.h"

#include "tests/support/InChild.h"
#include "tests/support/Kernel.h"
#include "tests/support/Program.h"
#include "tests/support/User.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vantle::test {

namespace {

[[noreturn]] void waitForEver() {
  for (;;) ::pause();
}

int startThread() {
  std::array<int, 2> channel{};
  if (::pipe(channel.data()) != 0) return -1;
  std::thread([write = channel[1]] {
    const Pid tid = ::gettid();
    (void)!::write(write, &tid, sizeof tid);
    waitForEver();
  }).detach();
  Pid tid = -1;
  (void)!::read(channel[0], &tid, sizeof tid);
  ::close(channel[0]);
  ::close(channel[1]);
  return tid;
}

// Answers only once the child stands where it should.
int startChild(bool ownSession, bool orphan, bool daemon) {
  std::array<int, 2> channel{};
  if (::pipe(channel.data()) != 0) return -1;
  const Pid first = ::fork();
  if (first == 0) {
    if ((orphan || daemon) && ::fork() != 0) ::_exit(0);
    if (ownSession || daemon) ::setsid();
    const Pid pid = ::getpid();
    (void)!::write(channel[1], &pid, sizeof pid);
    waitForEver();
  }
  if (orphan || daemon) ::waitpid(first, nullptr, 0);
  Pid pid = -1;
  (void)!::read(channel[0], &pid, sizeof pid);
  ::close(channel[0]);
  ::close(channel[1]);
  return pid;
}

[[noreturn]] void serve(int channel, const TestProcess::Act& act) {
  char letter = 0;
  while (::read(channel, &letter, 1) == 1) {
    std::int32_t answer = 0;
    if (letter == 't') {
      answer = startThread();
    } else if (letter == 'f' || letter == 's' || letter == 'o' || letter == 'd') {
      answer = startChild(letter == 's', letter == 'o', letter == 'd');
    } else if (act) {
      answer = act(letter);
    }
    (void)!::write(channel, &answer, sizeof answer);
  }
  ::_exit(0);
}

} // namespace

TestProcess::TestProcess(Session session, const Act& act) {
  // Orphans come to the tests, which end them.
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  std::array<int, 2> sockets{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) std::abort();
  m_channel = sockets[0];
  m_process.emplace(
      [&] {
        ::close(sockets[0]);
        if (session == Session::own) ::setsid();
      },
      [&] { serve(sockets[1], act); });
  ::close(sockets[1]);
}

TestProcess::~TestProcess() {
  end();
  ::close(m_channel);
}

int TestProcess::ask(char letter) const {
  std::int32_t answer = -1;
  if (::write(m_channel, &letter, 1) != 1 || ::read(m_channel, &answer, sizeof answer) != sizeof answer) {
    return -1;
  }
  return answer;
}

void TestProcess::end() {
  if (!m_process) return;
  // As long as it is the parent of those in other sessions.
  for (const Pid member : desktop::processesOf({pid()})) ::kill(member, SIGKILL);
  ::kill(-pid(), SIGKILL); // who forks and ends is on no list long enough
  desktop::endProcessesOf({pid()});
  m_process.reset();
}

bool passesAsOrdinaryUser(const std::function<void()>& body) {
  const auto passes = [&]() -> std::string {
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_NICE, &none);
    body();
    return testing::Test::HasFailure() ? "failed" : "";
  };
  if (runsAsRoot())
    return inChild([&]() -> std::string { return becomeUser(nobody) ? passes() : notPossibleHere; }).empty();
  body();
  return !testing::Test::HasFailure();
}

std::string schedulingState(Pid thread) {
  const auto state = threadState(thread);
  return state ? text(*state) : "";
}

std::string autogroupLine(Pid pid) {
  const auto nice = sessionNice(pid);
  return nice ? "nice " + std::to_string(*nice) : "";
}

std::vector<Pid> threadsOf(Pid pid) {
  std::vector<Pid> threads;
  for (const auto& [thread, state] : threadStates(pid)) threads.push_back(thread);
  return threads;
}

} // namespace vantle::test
