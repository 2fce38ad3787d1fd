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

// What follows the name in a process's stat file; null when it is gone.
using StatText = std::array<char, 2048>;
const char* readStat(pid_t pid, StatText& text) {
  std::array<char, 32> path{};
  std::snprintf(path.data(), path.size(), "/proc/%d/stat", pid);
  const int file = ::open(path.data(), O_RDONLY | O_CLOEXEC);
  const ssize_t got = file < 0 ? -1 : ::read(file, text.data(), text.size() - 1);
  if (file >= 0) ::close(file);
  if (got <= 0) return nullptr;
  text[static_cast<std::size_t>(got)] = '\0';
  const char* rest = std::strrchr(text.data(), ')');
  return rest != nullptr && std::strlen(rest) > 4 ? rest : nullptr;
}

// 0 when the process is gone.
unsigned long startOf(pid_t pid) {
  StatText text;
  const char* at = readStat(pid, text);
  for (int field = 2; at != nullptr && field < 22; ++field) at = std::strchr(at + 1, ' ');
  return at != nullptr ? std::strtoul(at, nullptr, 10) : 0;
}

} // namespace

BarePass::BarePass(std::vector<pid_t> roots, const std::string& userBus, std::string journal)
    : m_roots(std::move(roots)), m_journal(std::move(journal)),
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
    StatText text;
    const char* rest = readStat(pid, text);
    if (rest != nullptr) m_processes.push_back({pid, std::atoi(rest + 4)});
  });
}

std::vector<pid_t> BarePass::treeOf(pid_t root) const {
  std::vector<pid_t> tree{root};
  for (const Process& process : m_processes) {
    if (process.parent == root) tree.push_back(process.pid);
  }
  return tree;
}

void BarePass::enterProcess(pid_t pid) {
  if (isOrdered() && startOf(pid) == 0) return;
  change(pid, true);
  if (isOrdered() && startOf(pid) == 0) {
    std::erase_if(m_recorded, [pid](const Identity& identity) { return identity.pid == pid; });
  }
}

void BarePass::leaveProcess(pid_t pid) {
  for (int reads = isOrdered() ? 2 : 0; reads > 0; --reads) {
    if (startOf(pid) == 0) return;
  }
  change(pid, false);
}

void BarePass::change(pid_t pid, bool enter) const {
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
  if (isOrdered() && enter) record();
  for (const pid_t root : m_roots) {
    for (const pid_t pid : treeOf(root)) enter ? enterProcess(pid) : leaveProcess(pid);
    if (!m_manager) weighSession(root, enter);
  }
  if (m_manager) weighUnits(enter);
  if (!isOrdered()) return;
  if (!enter) m_recorded.clear();
  writeJournal();
}

void BarePass::record() {
  for (const pid_t root : m_roots) {
    for (const pid_t pid : treeOf(root)) m_recorded.push_back({pid, startOf(pid)});
  }
  writeJournal();
}

void BarePass::writeJournal() const {
  std::string text = "[";
  for (const Identity& identity : m_recorded) {
    std::array<char, 96> entry{};
    std::snprintf(entry.data(), entry.size(), R"(%s{"pid":%d,"startSec":%lu,"startUsec":%lu})",
                  text.size() > 1 ? "," : "", identity.pid, identity.startTicks / 100,
                  identity.startTicks % 100 * 10'000);
    text += entry.data();
  }
  text += "]";
  const std::string temporary = m_journal + ".new";
  const int file = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (file < 0) return;
  (void)!::write(file, text.data(), text.size());
  ::close(file);
  ::rename(temporary.c_str(), m_journal.c_str());
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
