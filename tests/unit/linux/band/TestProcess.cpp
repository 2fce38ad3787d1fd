// SPDX-License-Identifier: MIT
#include "tests/unit/linux/band/TestProcess.h"

#include "platform/linux/kernel/ProcKernel.h"

#include <array>
#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <grp.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <set>
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

void killTree(const std::vector<ProcessStat>& all, Pid root) {
  std::set<Pid> tree{root};
  for (std::size_t before = 0; before != tree.size();) {
    before = tree.size();
    for (const ProcessStat& process : all) {
      if (tree.contains(process.parent)) tree.insert(process.pid);
    }
  }
  for (const Pid pid : tree) ::kill(pid, SIGKILL);
}

} // namespace

TestProcess::TestProcess(Session session, const Act& act) {
  // Orphans come to the tests, which end them.
  ::prctl(PR_SET_CHILD_SUBREAPER, 1);
  std::array<int, 2> sockets{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0) std::abort();
  m_channel = sockets[0];
  const Pid tests = ::getpid();
  m_pid = ::fork();
  if (m_pid == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (::getppid() != tests) ::_exit(1);
    ::close(sockets[0]);
    if (session == Session::own) ::setsid();
    serve(sockets[1], act);
  }
  ::close(sockets[1]);
  ask('?'); // it has its place now
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
  if (m_pid <= 0) return;
  killTree(ProcKernel().scan(), m_pid); // as long as it is the parent of those in other sessions
  ::kill(-m_pid, SIGKILL);              // who forks and ends is on no list long enough
  const std::vector<ProcessStat> all = ProcKernel().scan();
  ::waitpid(m_pid, nullptr, 0);
  // What it left behind in its session, of which this process has become the parent.
  for (const ProcessStat& process : all) {
    if (process.session != m_pid || process.parent != ::getpid() || process.pid == m_pid) continue;
    ::kill(process.pid, SIGKILL);
    ::waitpid(process.pid, nullptr, 0);
  }
  m_pid = 0;
}

bool runsAsRoot() { return ::geteuid() == 0; }

bool asOrdinaryUser(const std::function<void()>& body) {
  if (!runsAsRoot()) {
    body();
    return !testing::Test::HasFailure();
  }
  const Pid child = ::fork();
  if (child == 0) {
    constexpr unsigned nobody = 65534;
    if (::setgroups(0, nullptr) != 0 || ::setgid(nobody) != 0 || ::setuid(nobody) != 0) ::_exit(2);
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_NICE, &none);
    ::prctl(PR_SET_DUMPABLE, 1); // a program that changed its user hides from /proc otherwise
    body();
    std::fflush(nullptr);
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

std::string schedulingState(Pid tid) {
  const auto scheduling = ProcKernel().scheduling(tid);
  const auto io = ProcKernel().ioPriority(tid);
  const auto processors = ProcKernel().affinity(tid);
  std::string mask;
  for (std::size_t cpu = 0; processors && cpu < 64; ++cpu) {
    if (processors->contains(cpu)) mask += ' ' + std::to_string(cpu);
  }
  return "policy " + std::to_string(scheduling ? scheduling->policy : -1) + " nice " +
         std::to_string(::getpriority(PRIO_PROCESS, static_cast<id_t>(tid))) + " io " +
         std::to_string(io.value_or(-1)) + " on" + mask;
}

std::string autogroupLine(Pid pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/autogroup");
  std::string line;
  std::getline(file, line);
  return line.substr(line.find(' ') + 1); // without the number: "nice 0"
}

std::vector<Pid> threadsOf(Pid pid) { return ProcKernel().threads(pid); }

} // namespace vantle::test
