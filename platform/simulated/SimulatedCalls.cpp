// SPDX-License-Identifier: MIT
#include "platform/simulated/SimulatedCalls.h"

namespace vantle {

std::string_view name(Operation operation) {
  switch (operation) {
  case Operation::readRecord:
    return "processes.record";
  case Operation::scanProcesses:
    return "processes.scan";
  case Operation::readExecutablePath:
    return "processes.executablePath";
  case Operation::readFootprint:
    return "processes.footprint";
  case Operation::readCpuTime:
    return "processes.cpuTime";
  case Operation::readPriority:
    return "processes.priority";
  case Operation::enterBand:
    return "band.enter";
  case Operation::leaveBand:
    return "band.leave";
  case Operation::isInBand:
    return "band.isIn";
  case Operation::makeRoom:
    return "band.makeRoom";
  case Operation::reclaimBand:
    return "band.reclaim";
  case Operation::settleBand:
    return "band.settle";
  case Operation::listApps:
    return "workspace.list";
  case Operation::frontmostApp:
    return "workspace.frontmost";
  case Operation::findApp:
    return "workspace.find";
  case Operation::observeEvents:
    return "workspace.observe";
  case Operation::terminateApp:
    return "app.terminate";
  case Operation::bringToFront:
    return "app.front";
  case Operation::probeAudio:
    return "audio.probe";
  case Operation::probeAssertions:
    return "power.probe";
  case Operation::watchPressure:
    return "pressure.watch";
  case Operation::watchGames:
    return "games.watch";
  case Operation::readPressureLevel:
    return "pressure.level";
  case Operation::requestAuthorization:
    return "notifications.authorize";
  case Operation::postNotice:
    return "notifications.post";
  case Operation::readDefault:
    return "defaults.read";
  case Operation::writeDefault:
    return "defaults.write";
  case Operation::removeDefault:
    return "defaults.remove";
  case Operation::copyDefault:
    return "defaults.copy";
  case Operation::openSuite:
    return "defaults.open";
  case Operation::readFile:
    return "files.read";
  case Operation::fileExists:
    return "files.exists";
  case Operation::writeFile:
    return "files.write";
  case Operation::renameFile:
    return "files.rename";
  case Operation::createFolders:
    return "files.createFolders";
  case Operation::removeFolder:
    return "files.removeFolder";
  case Operation::readClock:
    return "clock.read";
  case Operation::sleep:
    return "clock.sleep";
  case Operation::launchProgram:
    return "launcher.launch";
  case Operation::setIoPriority:
    return "kernel.setIoPriority";
  case Operation::setScheduling:
    return "kernel.setScheduling";
  case Operation::setAffinity:
    return "kernel.setAffinity";
  case Operation::weighSession:
    return "kernel.weighSession";
  case Operation::weighUnit:
    return "manager.weigh";
  case Operation::startScope:
    return "manager.startScope";
  case Operation::attachProcess:
    return "manager.attach";
  case Operation::askManager:
    return "manager.ask";
  }
  return "unknown";
}

bool changesMachine(Operation operation) {
  switch (operation) {
  case Operation::enterBand:
  case Operation::leaveBand:
  case Operation::makeRoom:
  case Operation::reclaimBand:
  case Operation::terminateApp:
  case Operation::bringToFront:
  case Operation::requestAuthorization:
  case Operation::postNotice:
  case Operation::writeDefault:
  case Operation::removeDefault:
  case Operation::copyDefault:
  case Operation::writeFile:
  case Operation::renameFile:
  case Operation::createFolders:
  case Operation::removeFolder:
  case Operation::launchProgram:
  case Operation::setIoPriority:
  case Operation::setScheduling:
  case Operation::setAffinity:
  case Operation::weighSession:
  case Operation::weighUnit:
  case Operation::startScope:
  case Operation::attachProcess:
    return true;
  default:
    return false;
  }
}

void SimulatedCalls::refuse(Operation operation) { m_refused.insert(operation); }

void SimulatedCalls::refuse(Operation operation, Pid pid) { m_refusedPids.emplace(operation, pid); }

void SimulatedCalls::refuseNext(Operation operation, std::size_t nth) {
  m_refusedNext[operation].insert(nth);
}

void SimulatedCalls::grant(Operation operation, Pid pid) { m_refusedPids.erase({operation, pid}); }

void SimulatedCalls::grantAll() {
  m_refused.clear();
  m_refusedPids.clear();
  m_refusedNext.clear();
}

void SimulatedCalls::startTrace() {
  m_tracing = true;
  m_trace.clear();
}

std::vector<std::string> SimulatedCalls::takeTrace() { return std::exchange(m_trace, {}); }

void SimulatedCalls::crashAt(std::size_t step, CrashMoment moment) { m_crash = Crash{step, moment}; }

bool SimulatedCalls::admit(const SimulatedCall& call) {
  if (m_tracing) {
    std::string line(name(call.operation));
    if (call.pid != 0) line += " " + std::to_string(call.pid);
    if (!call.about.empty()) line.append(" ").append(call.about);
    if (!call.detail.empty()) line.append(" ").append(call.detail);
    m_trace.push_back(std::move(line));
  }
  bool admitted = !m_refused.contains(call.operation) && !m_refusedPids.contains({call.operation, call.pid});
  if (const auto next = m_refusedNext.find(call.operation); next != m_refusedNext.end()) {
    std::set<std::size_t> later;
    for (const std::size_t nth : next->second) {
      if (nth == 1) {
        admitted = false;
      } else {
        later.insert(nth - 1);
      }
    }
    if (later.empty()) {
      m_refusedNext.erase(next);
    } else {
      next->second = std::move(later);
    }
  }
  return admitted;
}

void SimulatedCalls::crashIfDue(CrashMoment moment) {
  if (!m_crash || m_crash->step != m_steps || m_crash->moment != moment) return;
  m_crash.reset();
  throw SimulatedCrash{m_steps};
}

} // namespace vantle
