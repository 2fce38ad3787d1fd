// SPDX-License-Identifier: MIT
#include "platform/linux/power/HolderSearch.h"

#include "base/Text.h"
#include "platform/linux/apps/AppEvidence.h"

#include <algorithm>

namespace vantle {

namespace {

// Flatpak's, which other sandboxes use as well: it has the only connection that a bus sees of an app inside.
constexpr std::string_view proxyProgram = "xdg-dbus-proxy";

std::string_view behindLast(std::string_view value, char separator) {
  return value.substr(value.rfind(separator) + 1); // npos + 1 is 0
}

} // namespace

bool isProgramOfApp(std::string_view path, std::string_view appId) {
  const std::string program = asciiLowered(behindLast(path, '/'));
  const std::string whole = asciiLowered(behindLast(appId, '/'));
  for (const std::string_view name : {std::string_view(whole), behindLast(whole, '.')}) {
    if (name.empty() || !std::string_view(program).starts_with(name)) continue;
    if (program.size() == name.size() || program[name.size()] == '-') return true;
  }
  return false;
}

std::set<Pid> HolderSearch::find(const Inhibitor& inhibitor) {
  for (const Pid pid : inhibitor.processes) {
    if (!isProxy(pid)) return {pid};
    if (std::set<Pid> inside = sandboxed(readEvidence(pid).sandboxId); !inside.empty()) return inside;
  }
  std::set<Pid> found = sandboxed(inhibitor.app);
  found.merge(programsCalled(inhibitor.app));
  return found;
}

bool HolderSearch::isProxy(Pid pid) const {
  return behindLast(m_sources.processes.executablePathBytes(pid).value_or(""), '/') == proxyProgram;
}

const std::vector<ProcessRecord>& HolderSearch::scan() {
  if (!m_scan) m_scan = m_sources.processes.scan();
  return *m_scan;
}

std::set<Pid> HolderSearch::sandboxed(const std::string& app) {
  if (app.empty()) return {};
  const std::vector<Pid> inside = m_sources.sandboxes.processesOf(app, scan());
  return {inside.begin(), inside.end()};
}

// By the file of the program, or by the name that its desktop file shows to people.
std::set<Pid> HolderSearch::programsCalled(const std::string& app) {
  std::set<Pid> pids;
  if (app.empty()) return pids;
  std::set<std::string> files;
  if (m_sources.installed) {
    for (const DesktopEntry& entry : m_sources.installed->all()) {
      const bool isMeant = asciiLowered(entry.name) == asciiLowered(app) || entry.id == app;
      if (isMeant && !entry.isScript && !entry.realPath.empty()) files.insert(entry.realPath);
    }
  }
  for (const ProcessRecord& process : scan()) {
    const std::optional<std::string> path = m_sources.processes.executablePathBytes(process.pid);
    if (path && (isProgramOfApp(*path, app) || files.contains(*path))) pids.insert(process.pid);
  }
  return pids;
}

} // namespace vantle
