// SPDX-License-Identifier: MIT
#include "platform/linux/windows/WindowProcesses.h"

#include <limits>
#include <poll.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>
#include <utility>

namespace vantle {

namespace {

int openPidfd(Pid pid) { return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0)); }

// Windows may take a quarter of the descriptors, and the one in front a few more: what puts everybody back
// needs some, and so does the pass that slows.
std::size_t mostProcesses(bool isInFront) {
  rlimit limit{};
  if (::getrlimit(RLIMIT_NOFILE, &limit) != 0) return 0;
  return static_cast<std::size_t>(limit.rlim_cur / 4 + (isInFront ? limit.rlim_cur / 8 : 0));
}

} // namespace

bool hasEnded(const Descriptor& process) {
  pollfd waiting{process.get(), POLLIN, 0};
  return ::poll(&waiting, 1, 0) > 0;
}

std::shared_ptr<Descriptor> WindowProcesses::open(Pid pid, bool isInFront) {
  const auto kept = m_open.find(pid);
  std::shared_ptr<Descriptor> process = kept == m_open.end() ? nullptr : kept->second.lock();
  if (process && !hasEnded(*process)) return process;
  forgetUnused();
  if (m_open.size() >= mostProcesses(isInFront)) return nullptr;
  Descriptor opened(openPidfd(pid));
  if (!opened) return nullptr;
  process = std::make_shared<Descriptor>(std::move(opened));
  m_open[pid] = process;
  return process;
}

WindowOwner WindowProcesses::believe(const Kernel& kernel, std::int64_t told, bool isInFront) {
  constexpr Pid systemManager = 1; // never an app, but what a client in a pid namespace takes itself for
  if (told <= systemManager || told > std::numeric_limits<Pid>::max()) return {};
  const auto pid = static_cast<Pid>(told);
  std::shared_ptr<Descriptor> process = open(pid, isInFront);
  if (!process || !kernel.isOwn(pid) || hasEnded(*process)) return {};
  return {pid, std::move(process)};
}

void WindowProcesses::forgetUnused() {
  std::erase_if(m_open, [](const auto& entry) { return entry.second.expired(); });
}

} // namespace vantle
