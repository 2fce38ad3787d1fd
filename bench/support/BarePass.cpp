// SPDX-License-Identifier: MIT
#include "bench/support/BarePass.h"

#include "platform/linux/kernel/ProcKernel.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sched.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace vantle::bench {

namespace {

struct Entry { // linux_dirent64
  unsigned long inode;
  long offset;
  unsigned short length;
  unsigned char type;
  char name[1];
};

template <class Callback> void forEachNumber(const char* path, Callback call) {
  const int folder = ::open(path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (folder < 0) return;
  alignas(Entry) std::array<char, std::size_t{32} << 10U> buffer{};
  long got = 0;
  while ((got = ::syscall(SYS_getdents64, folder, buffer.data(), buffer.size())) > 0) {
    for (long at = 0; at < got;) {
      const auto* entry = reinterpret_cast<const Entry*>(buffer.data() + at);
      if (entry->name[0] >= '1' && entry->name[0] <= '9') call(std::atoi(entry->name));
      at += entry->length;
    }
  }
  ::close(folder);
}

} // namespace

BarePass::BarePass(std::vector<pid_t> roots, const std::string& userBus)
    : m_roots(std::move(roots)),
      m_online((1UL << static_cast<unsigned>(::sysconf(_SC_NPROCESSORS_ONLN))) - 1),
      m_chosen(m_online & ~(m_online >> 1U)), m_isRoot(::geteuid() == 0) {
  if (userBus.empty()) return;
  m_manager.emplace(m_loop, userBus);
  const ProcKernel kernel;
  for (const pid_t root : m_roots) {
    const std::string path = kernel.unifiedPath(root);
    m_units.push_back(path.substr(path.rfind('/') + 1));
  }
}

void BarePass::scan() {
  m_processes.clear();
  forEachNumber("/proc", [this](pid_t pid) {
    std::array<char, 32> path{};
    std::array<char, 2048> text{};
    std::snprintf(path.data(), path.size(), "/proc/%d/stat", pid);
    const int file = ::open(path.data(), O_RDONLY | O_CLOEXEC);
    const ssize_t got = file < 0 ? -1 : ::read(file, text.data(), text.size() - 1);
    if (file >= 0) ::close(file);
    if (got <= 0) return;
    text[static_cast<std::size_t>(got)] = '\0';
    const char* rest = std::strrchr(text.data(), ')');
    if (rest != nullptr && std::strlen(rest) > 4) m_processes.push_back({pid, std::atoi(rest + 4)});
  });
}

void BarePass::change(pid_t pid, bool enter) {
  std::array<char, 32> path{};
  std::snprintf(path.data(), path.size(), "/proc/%d/task", pid);
  forEachNumber(path.data(), [this, enter](pid_t tid) {
    constexpr int oneThread = 1;
    constexpr int idle = 3 << 13;
    const sched_param none{};
    if (enter) ::syscall(SYS_ioprio_set, oneThread, tid, idle);
    if (m_isRoot) ::sched_setscheduler(tid, enter ? SCHED_IDLE : SCHED_OTHER, &none);
    ::syscall(SYS_sched_setaffinity, tid, sizeof m_online, enter ? &m_chosen : &m_online);
    if (!enter) ::syscall(SYS_ioprio_set, oneThread, tid, 0);
  });
}

void BarePass::run(bool enter) {
  scan();
  for (const pid_t root : m_roots) {
    change(root, enter);
    for (const Process& process : m_processes) {
      if (process.parent == root) change(process.pid, enter);
    }
    if (!m_manager) weighSession(root, enter);
  }
  if (m_manager) weighUnits(enter);
}

void BarePass::weighSession(pid_t root, bool enter) const {
  std::array<char, 32> path{};
  std::snprintf(path.data(), path.size(), "/proc/%d/autogroup", root);
  const int file = ::open(path.data(), O_WRONLY | O_CLOEXEC);
  if (file < 0) return;
  // An ordinary user gets one of these through in 100 ms, so there it is made without changing anything.
  const bool lower = enter && m_isRoot;
  (void)!::write(file, lower ? "19" : "0", lower ? 2 : 1);
  ::close(file);
}

void BarePass::weighUnits(bool enter) {
  for (const std::string& unit : m_units) {
    m_manager->setWeight(unit, enter ? UserManager::idleWeight : UserManager::noWeight, [](bool) {});
  }
  m_manager->finish(std::chrono::steady_clock::now() + std::chrono::minutes(1));
}

} // namespace vantle::bench
