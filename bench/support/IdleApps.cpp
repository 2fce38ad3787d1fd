// SPDX-License-Identifier: MIT
#include "bench/support/IdleApps.h"

#include <csignal>
#include <fcntl.h>
#include <pthread.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace vantle::bench {

namespace {

void* idle(void* /*unused*/) {
  for (;;) ::pause();
}

[[noreturn]] void live(int threads, int ready) {
  pthread_attr_t small;
  ::pthread_attr_init(&small);
  ::pthread_attr_setstacksize(&small, std::size_t{64} << 10U);
  for (int count = 1; count < threads; ++count) {
    pthread_t thread{};
    if (::pthread_create(&thread, &small, idle, nullptr) != 0) ::_exit(1);
  }
  if (::write(ready, "r", 1) != 1) ::_exit(1);
  ::close(ready);
  idle(nullptr);
  ::_exit(0);
}

// The share of a whole number that falls to one of `count`, so that the shares add up.
int share(int whole, int count, int at) { return whole * (at + 1) / count - whole * at / count; }

} // namespace

IdleApps::IdleApps(Size size) {
  int ends[2];
  if (::pipe2(ends, O_CLOEXEC) != 0) return;
  int process = 0;
  for (int app = 0; app < size.apps; ++app) {
    const int ofApp = share(size.processes, size.apps, app);
    m_apps.push_back(std::make_unique<test::ForkedProcess>(
        [] {
          ::prctl(PR_SET_NAME, "idle-app");
          ::setsid();
        },
        [&] {
          for (int child = 1; child < ofApp; ++child) {
            if (::fork() != 0) continue;
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            live(share(size.threads, size.processes, process + child), ends[1]);
          }
          live(share(size.threads, size.processes, process), ends[1]);
        }));
    m_roots.push_back(m_apps.back()->pid());
    process += ofApp;
  }
  ::close(ends[1]);
  char byte = 0;
  for (int count = 0; count < size.processes && ::read(ends[0], &byte, 1) == 1; ++count) {
  }
  ::close(ends[0]);
}

} // namespace vantle::bench
