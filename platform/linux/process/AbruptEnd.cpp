// SPDX-License-Identifier: MIT
#include "platform/linux/process/AbruptEnd.h"

#include "base/Invariant.h"

#include <atomic>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

struct LastDeed {
  pid_t process = 0; // that it belongs to
  std::function<void()> deed;
};

// What the C library calls can reach nothing but globals. Null unless somebody is registered.
std::atomic<const LastDeed*> registered;
std::atomic<pid_t> threadAtIt; // 0 for none

// A child that was forked has a copy of all this, and one that shares its parent's memory even the same; the
// deed is not theirs.
void runLastDeed() {
  const LastDeed* const last = registered;
  if (last == nullptr || last->process != ::getpid()) return;
  pid_t busy = 0;
  if (threadAtIt.compare_exchange_strong(busy, ::gettid())) {
    last->deed();
  } else if (busy != ::gettid()) {
    for (;;) ::pause(); // the other thread ends the program
  }
}

class Registered final : public Registration {
 public:
  explicit Registered(std::function<void()> lastDeed) : m_deed{::getpid(), std::move(lastDeed)} {
    const LastDeed* none = nullptr;
    invariant(registered.compare_exchange_strong(none, &m_deed), "two last deeds");
  }
  ~Registered() override { registered = nullptr; }
  Registered(const Registered&) = delete;
  Registered& operator=(const Registered&) = delete;

 private:
  LastDeed m_deed;
};

} // namespace

std::unique_ptr<Registration> beforeAbruptEnd(std::function<void()> lastDeed) {
  return std::make_unique<Registered>(std::move(lastDeed));
}

} // namespace vantle

// The C library's own, which libraries call instead of it: the program exports this one.
extern "C" void _exit(int status) { // NOLINT(bugprone-reserved-identifier)
  vantle::runLastDeed();
  for (;;) ::syscall(SYS_exit_group, status);
}
