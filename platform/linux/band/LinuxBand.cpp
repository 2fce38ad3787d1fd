// SPDX-License-Identifier: MIT
#include "platform/linux/band/LinuxBand.h"

#include "platform/linux/band/AppOwners.h"
#include "platform/linux/band/BandPass.h"
#include "platform/linux/band/UnitPass.h"
#include "platform/linux/band/UserManager.h"
#include "platform/linux/kernel/ProcKernel.h"

#include <utility>

namespace vantle {

namespace {

// The path stands for a neighbour of all apps, for when no app in front is known.
std::string anyAppPath(const UnitWeights& units) { return units.appSlice() + "/-"; }

std::string bootId(const Kernel& kernel) {
  const std::string text = kernel.read("/proc/sys/kernel/random/boot_id").value_or("");
  return text.substr(0, text.find('\n'));
}

std::unique_ptr<ServiceManager> managerOrNone(EventLoop& loop, std::unique_ptr<ServiceManager> manager) {
  return manager ? std::move(manager) : std::make_unique<UserManager>(loop, "");
}

} // namespace

LinuxBand::LinuxBand(EventLoop& loop, FileStore& files, BandParts parts)
    : m_shared(parts.kernel ? std::move(parts.kernel) : std::make_shared<ProcKernel>()), m_kernel(*m_shared),
      m_busLimit(parts.busLimit), m_threads(m_kernel), m_controlGroups(controlGroupMount(m_kernel)),
      m_sessions(loop, m_kernel),
      m_units(loop, files, m_kernel, managerOrNone(loop, std::move(parts.manager)),
              {m_controlGroups, std::move(parts.ledger), bootId(m_kernel)}),
      m_frontPath(anyAppPath(m_units)) {
  m_sessions.onRaised([this](const std::vector<Pid>& members) {
    for (const Pid pid : members) m_threads.leave(pid, false);
  });
}

LinuxBand::~LinuxBand() = default;

bool LinuxBand::enterBackgroundBand(Pid pid) {
  const BandGroup group{pid, {pid}, {pid}};
  return enterBackgroundBand(std::span(&group, 1), {pid}).front().front();
}

std::vector<std::vector<bool>> LinuxBand::enterBackgroundBand(std::span<const BandGroup> groups,
                                                              const std::set<Pid>& everyApp) {
  if (groups.empty()) return {};
  m_threads.refresh();
  TaskGroups taskGroups(m_kernel, m_controlGroups);
  UnitPass units(m_units, m_kernel, m_frontPath, m_kernel.now() + m_busLimit);
  BandPass pass({m_kernel, m_threads, m_sessions, taskGroups, m_units.isUsable() ? &units : nullptr, m_units},
                groups, m_boostApp, everyApp);
  std::vector<std::vector<bool>> entered = pass.run();
  for (std::size_t at = 0; at < groups.size(); ++at) {
    for (const ProcessStat& process : pass.companions()[at]) {
      m_companions[groups[at].root].push_back({process.pid, process.startTicks});
    }
  }
  return entered;
}

bool LinuxBand::leaveBackgroundBand(Pid pid) {
  leaveCompanions(pid);
  return leaveProcess(pid);
}

void LinuxBand::leaveCompanions(Pid root) {
  const auto found = m_companions.find(root);
  if (found == m_companions.end()) return;
  const std::vector<Companion> companions = std::move(found->second);
  m_companions.erase(found);
  for (const Companion& companion : companions) {
    const std::optional<ProcessStat> now = m_kernel.stat(companion.pid);
    if (now && now->startTicks == companion.startTicks) leaveProcess(companion.pid);
  }
}

bool LinuxBand::leaveProcess(Pid pid) {
  const std::optional<ProcessStat> process = m_kernel.stat(pid);
  if (!process || !process->isAlive() || process->isKernelThread() || !m_kernel.isOwn(pid)) return false;
  const std::optional<ThreadMark> mark = markOf(*process);
  if (!mark) return true;

  if (m_units.hasLowered()) m_units.raise(m_kernel.unifiedPath(pid));
  // The session's weight goes back before the mark that remembers it.
  auto session = SessionWeights::Outcome::done;
  if (mark->sessionLowered) session = m_sessions.raise({pid});
  if (session == SessionWeights::Outcome::impossible) session = m_sessions.raise(sessionOf(*process));
  const bool out = m_threads.leave(pid, session != SessionWeights::Outcome::done);
  return out && session != SessionWeights::Outcome::impossible;
}

std::optional<ThreadMark> LinuxBand::markOf(const ProcessStat& process) const {
  const std::optional<ThreadMark> mark = m_threads.mark(process.pid);
  return mark || process.threads <= 1 ? mark : m_threads.anyMark(process.pid);
}

std::vector<Pid> LinuxBand::sessionOf(const ProcessStat& process) const {
  std::vector<Pid> members;
  for (const ProcessStat& other : m_kernel.scan()) {
    if (other.session == process.session) members.push_back(other.pid);
  }
  return members;
}

std::optional<bool> LinuxBand::isInBackgroundBand(Pid pid) const { return m_threads.isIn(pid); }

void LinuxBand::prepareBoostApp(Pid root, std::span<const Pid> tree, const std::set<Pid>& everyApp) {
  m_boostApp.assign(tree.begin(), tree.end());
  m_boostApp.push_back(root);
  m_frontPath = anyAppPath(m_units);
  const std::optional<ProcessStat> app = m_kernel.stat(root);
  if (!app || !m_units.isUsable()) return;
  // Weights are compared between neighbours only: an app in front that stands elsewhere would share its
  // processor with all of them together, however low each of them is.
  if (!m_kernel.unifiedPath(root).starts_with(m_units.appSlice() + "/")) {
    giveUnit(*app, m_boostApp, everyApp, m_kernel.now() + m_busLimit / 2);
  }
  m_frontPath = m_kernel.unifiedPath(root);
}

void LinuxBand::releaseInherited(Pid root, const std::set<Pid>& everyApp) {
  if (!m_threads.mark(root)) return; // as nearly always, and told by one call
  const ProcessScan scan(m_kernel.scan());
  for (const Pid pid : AppOwners(scan, everyApp).processesOf(root)) leaveProcess(pid);
}

void LinuxBand::placeAsApp(Pid pid) {
  const std::optional<ProcessStat> app = m_kernel.stat(pid);
  if (!app || !m_units.isUsable()) return;
  giveUnit(*app, {pid}, {pid}, m_kernel.now() + m_busLimit);
}

void LinuxBand::giveUnit(const ProcessStat& root, std::vector<Pid> tree, const std::set<Pid>& everyApp,
                         UnitWeights::Deadline deadline) {
  auto adoption = UnitPass::adoptionOf(m_units, m_kernel, root, std::move(tree), everyApp);
  if (!adoption) return;
  std::vector<UnitWeights::Adoption> adoptions;
  adoptions.push_back(std::move(*adoption));
  m_units.adopt(adoptions, deadline);
}

void LinuxBand::reclaim() {
  m_boostApp.clear();
  m_frontPath = anyAppPath(m_units);
  m_companions.clear();
  // Only a program that was killed leaves a process marked in part.
  const bool inPart = !std::exchange(m_hasReclaimed, true);
  for (const ProcessStat& process : m_kernel.recentScan()) {
    if (process.isKernelThread() || !process.isAlive()) continue;
    if (inPart ? markOf(process) : m_threads.mark(process.pid)) leaveProcess(process.pid);
  }
  m_units.raiseAll();
}

bool LinuxBand::settle(std::chrono::milliseconds limit) {
  const auto end = m_kernel.now() + limit;
  const bool sessions = m_sessions.settle(limit);
  const auto left = end - m_kernel.now();
  return m_units.settle(std::chrono::duration_cast<std::chrono::milliseconds>(left)) && sessions;
}

} // namespace vantle
