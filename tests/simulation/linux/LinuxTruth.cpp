// SPDX-License-Identifier: MIT
// What is true on a simulated Linux, told without a look at how the band works.
#include "tests/simulation/linux/SimulatedLinux.h"

#include <algorithm>
#include <sched.h>
#include <set>

namespace vantle {

namespace {

template <class Value> std::string fromTo(const Value& own, const Value& now) {
  return std::to_string(own) + " to " + std::to_string(now);
}

std::string weightName(std::uint64_t weight) {
  return weight == SimulatedUnits::noWeight ? "not set" : std::to_string(weight);
}

// The idle I/O class with one of the patterns above its lowest nine bits that nobody else uses: of what is in
// the band, and of what is on its way out.
bool isInBand(int ioPriority) { return ioPriority >> 9 == 0b0111011; }
bool isMark(int ioPriority) { return isInBand(ioPriority) || ioPriority >> 9 == 0b0111101; }

} // namespace

bool SimulatedLinux::isSlowedByClass(const LinuxProcess& process) const {
  return std::any_of(process.threads.begin(), process.threads.end(), [](const LinuxThread& thread) {
    return thread.state.now.policy == SCHED_IDLE && thread.state.own.policy != SCHED_IDLE;
  });
}

bool SimulatedLinux::isNarrowed(const LinuxProcess& process) const {
  return std::any_of(process.threads.begin(), process.threads.end(), [this](const LinuxThread& thread) {
    return running(thread.state.now) != running(thread.state.own);
  });
}

bool SimulatedLinux::isSlowedBySession(Pid pid, const LinuxProcess& process) const {
  const auto nice = m_sessionNice.find(process.autogroup);
  if (nice == m_sessionNice.end() || nice->second.now <= nice->second.own) return false;
  // A session's weight means nothing inside a control group that has one.
  return options.hasAutogroups && !isWeighed(pid);
}

std::string SimulatedLinux::slowingUnit(Pid pid) const {
  const std::string* path = units.pathOf(pid);
  if (path == nullptr || !options.hasControlGroups) return {};
  for (const std::string& folder : foldersOnTheWay(*path)) {
    if (units.isIdle(folder) && units.units().at(folder).own != 0)
      return folder.substr(folder.rfind('/') + 1);
  }
  return {};
}

bool SimulatedLinux::isSlow(Pid pid) const {
  const LinuxProcess* process = find(pid);
  return process != nullptr && (isSlowedByClass(*process) || isNarrowed(*process) ||
                                isSlowedBySession(pid, *process) || !slowingUnit(pid).empty());
}

bool SimulatedLinux::isHeldBack(Pid pid) const {
  const LinuxProcess* process = find(pid);
  return process != nullptr &&
         (isSlowedByClass(*process) || isSlowedBySession(pid, *process) || !slowingUnit(pid).empty());
}

bool SimulatedLinux::isMarkedIn(Pid pid) const {
  const LinuxProcess* process = find(pid);
  return process != nullptr &&
         std::any_of(process->threads.begin(), process->threads.end(),
                     [](const LinuxThread& thread) { return isInBand(thread.state.now.ioPriority); });
}

bool SimulatedLinux::carriesMark(Pid pid) const {
  const LinuxProcess* process = find(pid);
  return process != nullptr &&
         std::any_of(process->threads.begin(), process->threads.end(),
                     [](const LinuxThread& thread) { return isMark(thread.state.now.ioPriority); });
}

std::string SimulatedLinux::effectOf(Pid pid) const {
  const LinuxProcess* process = find(pid);
  if (process == nullptr) return {};
  std::string words;
  const auto add = [&words](const std::string& word) { words += (words.empty() ? "" : ", ") + word; };
  if (isSlowedByClass(*process)) add("class");
  if (isSlowedBySession(pid, *process)) add("session");
  if (const std::string unit = slowingUnit(pid); !unit.empty()) add("unit " + unit);
  if (isNarrowed(*process)) add("processors");
  if (carriesMark(pid)) add("mark");
  return words;
}

std::vector<std::string> SimulatedLinux::differences() const {
  std::vector<std::string> all;
  std::set<long> sessions; // that somebody is in
  for (const auto& [pid, entry] : m_machine.processes.all()) {
    const LinuxProcess* process = find(pid);
    if (process == nullptr) continue;
    sessions.insert(process->autogroup);
    for (const LinuxThread& thread : process->threads) {
      const ThreadState& now = thread.state.now;
      const ThreadState& own = thread.state.own;
      std::string words;
      if (now.ioPriority != own.ioPriority)
        words += " I/O priority " + fromTo(own.ioPriority, now.ioPriority);
      if (now.policy != own.policy) words += " policy " + fromTo(own.policy, now.policy);
      if (now.resetsOnFork != own.resetsOnFork) words += " reset on fork";
      if ((now.processors & online()) != (own.processors & online())) {
        words += " processors " + fromTo(own.processors & online(), now.processors & online());
      }
      if (words.empty()) continue;
      const std::string name = thread.tid == pid ? "" : " thread " + std::to_string(thread.tid);
      all.push_back("process " + std::to_string(pid) + name + ":" + words);
    }
  }
  for (const auto& [id, nice] : m_sessionNice) {
    if (nice.now == nice.own || !sessions.contains(id)) continue;
    all.push_back("session group " + std::to_string(id) + ": nice " + fromTo(nice.own, nice.now));
  }
  for (const auto& [path, unit] : units.units()) {
    if (unit.weight == unit.own && (unit.inKernel == unit.own || !units.hasFolder(path))) continue;
    all.push_back("unit " + path.substr(path.rfind('/') + 1) + ": weight " + weightName(unit.own) + " to " +
                  weightName(unit.weight) + ", in the kernel " + weightName(unit.inKernel));
  }
  return all;
}

} // namespace vantle
