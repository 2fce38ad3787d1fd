// SPDX-License-Identifier: MIT
// How the engine moves apps into the background band and back.
#include "engine/Engine.h"
#include "engine/Protection.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace vantle {

namespace {

struct Candidate {
  AppRef app;
  ProcessIdentity root;
  std::uint64_t changedAtMicros = 0;
  std::vector<ProcessIdentity> processes;
};

std::string nameOf(const RunningApplication& app) {
  return app.localizedName().value_or("pid " + std::to_string(app.processIdentifier()));
}

} // namespace

bool Engine::shouldManage(const RunningApplication& app, const std::set<Pid>& shielded,
                          const ProcessSnapshot& snapshot) const {
  const Pid pid = app.processIdentifier();
  if (!activeGame.get()) return false;
  if (app.activationPolicy() != ActivationPolicy::regular) return false;
  if (app.isTerminated()) return false;
  if (pid == m_selfPID) return false;
  if (m_managed.contains(pid)) return false;
  if (m_foregroundException && m_foregroundException->processIdentifier() == pid) return false;
  if (const std::optional<std::string> bundleID = app.bundleIdentifier()) {
    const std::vector<std::string>& own = settings.protectedApps.get();
    if (std::find(own.begin(), own.end(), *bundleID) != own.end()) return false;
    if (systemBundleIDs().contains(*bundleID)) return false;
  }
  if (profile.isTrigger(app)) return false;
  // Any process of the app counts: a launcher may be a child of its app, and so may the one that is heard.
  const std::vector<Pid> tree = snapshot.processTree(pid);
  return std::none_of(tree.begin(), tree.end(), [&](Pid member) {
    return m_gameAncestors.contains(member) || shielded.contains(member);
  });
}

// An app that another one started (from a terminal, say) is an app of its own: it is slowed, protected or in
// front by itself, not as a part of what happens to stand above it.
std::set<Pid> Engine::everyApp() const {
  std::set<Pid> roots;
  for (const AppRef& app : m_machine.workspace.runningApplications()) roots.insert(app->processIdentifier());
  return roots;
}

void Engine::manage(const AppRef& app) {
  const std::set<Pid> shielded = shieldedPIDs(m_machine.audio, m_machine.power);
  manage({&app, 1}, shielded, ProcessSnapshot(m_machine.processes));
}

void Engine::manage(std::span<const AppRef> apps, const std::set<Pid>& shielded,
                    const ProcessSnapshot& snapshot) {
  std::vector<Candidate> candidates;
  std::vector<BandGroup> groups;
  std::vector<ProcessIdentity> recorded;
  const std::set<Pid> everyApp = this->everyApp();
  std::set<Pid> chosen; // no process twice, even if an app is listed twice
  for (const AppRef& app : apps) {
    const Pid pid = app->processIdentifier();
    if (!shouldManage(*app, shielded, snapshot)) {
      if (!m_managed.contains(pid)) m_machine.band.releaseInherited(pid, everyApp);
      continue;
    }
    const std::optional<ProcessIdentity> root = readIdentity(m_machine.processes, pid);
    if (!root) continue;

    Candidate candidate{app, *root, m_machine.clock.processMicros(), {}};
    BandGroup group{pid, snapshot.processTree(pid, everyApp), {}};
    for (const Pid member : group.tree) {
      // A process that is in the band already was put there by somebody else, who will take it out again.
      if (chosen.contains(member) || m_machine.band.isInBackgroundBand(member) == true) continue;
      const std::optional<ProcessIdentity> identity = readIdentity(m_machine.processes, member);
      if (!identity) continue;
      candidate.processes.push_back(*identity);
      group.candidates.push_back(member);
      chosen.insert(member);
    }
    if (candidate.processes.empty()) continue;
    recorded.insert(recorded.end(), candidate.processes.begin(), candidate.processes.end());
    candidates.push_back(std::move(candidate));
    groups.push_back(std::move(group));
  }

  m_journal.add(recorded);
  const std::vector<std::vector<bool>> entered = m_machine.band.enterBackgroundBand(groups, everyApp);
  std::vector<ProcessIdentity> failed;
  for (std::size_t at = 0; at < candidates.size(); ++at) {
    Candidate& candidate = candidates[at];
    std::vector<ProcessIdentity> members;
    for (std::size_t index = 0; index < candidate.processes.size(); ++index) {
      (entered.at(at).at(index) ? members : failed).push_back(candidate.processes[index]);
    }
    if (members.empty()) continue;
    m_managed.insert_or_assign(candidate.root.pid,
                               ManagedApp{nameOf(*candidate.app), candidate.app->bundleIdentifier(),
                                          candidate.root, std::move(members), candidate.changedAtMicros});
  }
  m_journal.remove(failed);
}

bool Engine::restoreIfManaged(Pid pid) {
  const auto entry = m_managed.find(pid);
  if (entry == m_managed.end()) return false;
  const ManagedApp app = std::move(entry->second);
  m_managed.erase(entry);
  restore({&app, 1});
  return true;
}

void Engine::restore(std::span<const ManagedApp> apps) {
  if (apps.empty()) return;
  const ProcessTable& processes = m_machine.processes;
  BackgroundBand& band = m_machine.band;
  const ProcessSnapshot snapshot(processes);
  // An app that was slowed by itself stays so, whichever app started it.
  std::set<Pid> stillManaged;
  for (const auto& [pid, app] : m_managed) stillManaged.insert(pid);
  std::vector<ProcessIdentity> forgotten;
  for (const ManagedApp& app : apps) {
    // Children that were born slowed are nobody's members: found by their age, while the root still stands.
    if (isSameLiveProcess(processes, app.root)) {
      for (const Pid pid : snapshot.processTree(app.root.pid, stillManaged)) {
        const std::optional<ProcessIdentity> identity = readIdentity(processes, pid);
        if (!identity || startMicros(*identity) < app.changedAtMicros) continue;
        if (band.isInBackgroundBand(pid) == true) band.leaveBackgroundBand(pid);
      }
    }
    for (const ProcessIdentity& member : app.members) {
      if (isSameLiveProcess(processes, member)) band.leaveBackgroundBand(member.pid);
    }
    forgotten.insert(forgotten.end(), app.members.begin(), app.members.end());
  }
  m_journal.remove(forgotten);
}

} // namespace vantle
