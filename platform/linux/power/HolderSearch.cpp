// SPDX-License-Identifier: MIT
#include "platform/linux/power/HolderSearch.h"

#include "base/Text.h"
#include "platform/linux/apps/AppEvidence.h"

#include <utility>

namespace vantle {

namespace {

// Flatpak's, which other sandboxes use as well: it has the only connection that a bus sees of an app inside.
constexpr std::string_view proxyProgram = "xdg-dbus-proxy";

std::string_view behindLast(std::string_view value, char separator) {
  return value.substr(value.rfind(separator) + 1); // npos + 1 is 0
}

// What an app calls itself, in lower case: an id, a path or a name.
class AppName {
 public:
  explicit AppName(std::string_view app) : m_whole(asciiLowered(behindLast(app, '/'))) {}

  // The name of a program's file, in lower case.
  bool fits(std::string_view program) const {
    const std::string_view whole = m_whole;
    return isStartOf(program, whole) || isStartOf(program, behindLast(whole, '.'));
  }

 private:
  // "firefox" is "firefox-esr" as well.
  static bool isStartOf(std::string_view program, std::string_view name) {
    if (name.empty() || !program.starts_with(name)) return false;
    return program.size() == name.size() || program[name.size()] == '-';
  }

  std::string m_whole;
};

} // namespace

bool isProgramOfApp(std::string_view path, std::string_view appId) {
  return AppName(appId).fits(asciiLowered(behindLast(path, '/')));
}

std::set<Pid> HolderSearch::find(const Inhibitor& inhibitor) {
  for (const Pid pid : inhibitor.processes) {
    if (!isProxy(pid)) return {pid};
    if (std::set<Pid> inside = sandboxed(readEvidence(pid).sandboxId); !inside.empty()) return inside;
  }
  return called(inhibitor.app);
}

bool HolderSearch::isProxy(Pid pid) const {
  return behindLast(m_sources.processes.executablePathBytes(pid).value_or(""), '/') == proxyProgram;
}

const std::vector<ProcessRecord>& HolderSearch::scan() {
  if (!m_scan) m_scan = m_sources.processes.scan();
  return *m_scan;
}

const std::set<Pid>& HolderSearch::called(const std::string& app) {
  const auto [place, isNew] = m_called.try_emplace(app);
  if (isNew && !app.empty()) {
    place->second = sandboxed(app);
    place->second.merge(programsCalled(app));
  }
  return place->second;
}

std::set<Pid> HolderSearch::sandboxed(const std::string& app) {
  std::set<Pid> pids;
  if (!m_sandboxes) m_sandboxes = flatpakInstances(m_sources.flatpakFolder);
  for (const FlatpakInstance& instance : *m_sandboxes) {
    if (instance.app != app) continue;
    const std::vector<Pid> inside = processesInside(instance, scan());
    pids.insert(inside.begin(), inside.end());
  }
  return pids;
}

// By the file of the program, or by the name that its desktop file shows to people.
std::set<Pid> HolderSearch::programsCalled(const std::string& app) {
  if (!m_programs) {
    m_programs.emplace();
    for (const ProcessRecord& process : scan()) {
      const std::optional<std::string> path = m_sources.processes.executablePathBytes(process.pid);
      if (path) m_programs->push_back({process.pid, *path, asciiLowered(behindLast(*path, '/'))});
    }
  }
  const AppName name(app);
  const std::set<std::string> files = filesInMenus(app);
  std::set<Pid> pids;
  for (const Program& program : *m_programs) {
    if (name.fits(program.name) || files.contains(program.path)) pids.insert(program.pid);
  }
  return pids;
}

std::set<std::string> HolderSearch::filesInMenus(const std::string& app) {
  std::set<std::string> files;
  if (!m_sources.installed) return files;
  if (m_menus == nullptr) m_menus = &m_sources.installed->all();
  const std::string name = asciiLowered(app);
  for (const DesktopEntry& entry : *m_menus) {
    const bool isMeant =
        entry.id == app || (entry.name.size() == app.size() && asciiLowered(entry.name) == name);
    if (isMeant && !entry.isScript && !entry.realPath.empty()) files.insert(entry.realPath);
  }
  return files;
}

} // namespace vantle
