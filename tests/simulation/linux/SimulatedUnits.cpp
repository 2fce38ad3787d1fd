// SPDX-License-Identifier: MIT
#include "tests/simulation/linux/SimulatedUnits.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

bool isAtOrBelow(std::string_view path, std::string_view folder) {
  return path.starts_with(folder) && (path.size() == folder.size() || path[folder.size()] == '/');
}

} // namespace

std::vector<std::string> foldersOnTheWay(std::string_view path) {
  std::vector<std::string> folders;
  for (std::size_t at = path.find('/', 1); at != std::string_view::npos; at = path.find('/', at + 1)) {
    folders.emplace_back(path.substr(0, at));
  }
  if (path.size() > 1) folders.emplace_back(path);
  return folders;
}

bool SimulatedUnits::isManaged(std::string_view path) const {
  return path.size() > m_managerPath.size() && isAtOrBelow(path, m_managerPath);
}

void SimulatedUnits::addUnitsOn(const std::string& path) {
  if (!isManaged(path)) return;
  for (const std::string& folder : foldersOnTheWay(path)) {
    if (!isManaged(folder)) continue;
    m_units.try_emplace(folder);
    if (!folder.ends_with(".slice")) return; // what lies further in was made by the app itself
  }
}

void SimulatedUnits::endScope(const std::string& path) {
  for (const std::string& folder : foldersOnTheWay(path)) {
    const bool isService = folder.ends_with(".service");
    if (!(folder.ends_with(".scope") || isService) || !isManaged(folder)) continue;
    const bool isEmpty = std::none_of(m_places.begin(), m_places.end(), [&folder](const auto& place) {
      return isAtOrBelow(place.second, folder);
    });
    if (!isEmpty) continue;
    if (!isService) {
      m_units.erase(folder);
    } else if (const auto unit = m_units.find(folder); unit != m_units.end()) {
      unit->second.inKernel = unit->second.weight; // its folder goes, and the next one is made by the manager
    }
  }
}

void SimulatedUnits::move(Pid pid, const std::string& path) {
  std::string& place = m_places[pid];
  const std::string before = std::exchange(place, path);
  addUnitsOn(path);
  if (before != path) endScope(before);
  if (onMove) onMove(pid, path);
}

std::string SimulatedUnits::appUnitOn(std::string_view path) const {
  if (!isManaged(path)) return {};
  for (const std::string& folder : foldersOnTheWay(path)) {
    if (!isManaged(folder) || folder.ends_with(".slice")) continue;
    const std::string name = folder.substr(folder.rfind('/') + 1);
    const bool isApps = name.ends_with(".scope") ? name != "init.scope"
                                                 : name.ends_with(".service") && (name.starts_with("app-") ||
                                                                                  name.starts_with("dbus-:"));
    return isApps ? folder : std::string();
  }
  return {};
}

void SimulatedUnits::remove(Pid pid) {
  const auto found = m_places.find(pid);
  if (found == m_places.end()) return;
  const std::string path = std::move(found->second);
  m_places.erase(found);
  endScope(path);
}

const std::string* SimulatedUnits::pathOf(Pid pid) const {
  const auto found = m_places.find(pid);
  return found == m_places.end() ? nullptr : &found->second;
}

std::optional<std::string> SimulatedUnits::pathOfUnit(std::string_view name) const {
  for (const auto& [path, unit] : m_units) {
    if (path.ends_with(name) && path[path.size() - name.size() - 1] == '/') return path;
  }
  return std::nullopt;
}

bool SimulatedUnits::hasFolder(const std::string& path) const {
  if (path.empty() || isAtOrBelow(m_managerPath, path) || path == appSlice()) return true;
  if (path.ends_with(".slice") && m_units.contains(path)) return true;
  return std::any_of(m_places.begin(), m_places.end(),
                     [&path](const auto& place) { return isAtOrBelow(place.second, path); });
}

// The manager switches the controller on where one of its units has a weight, and off with the last of them;
// above and beside the manager it is on from the start where it is delegated at all.
bool SimulatedUnits::hasCpu(const std::string& path) const {
  if (!m_isDelegated || path.empty() || !hasFolder(path)) return false;
  if (!isManaged(path)) return true;
  const std::string_view parent = std::string_view(path).substr(0, path.rfind('/'));
  return std::any_of(m_units.begin(), m_units.end(), [parent](const auto& unit) {
    return unit.second.inKernel != noWeight && unit.first.size() > parent.size() &&
           isAtOrBelow(unit.first, parent);
  });
}

bool SimulatedUnits::isIdle(const std::string& path) const {
  const auto unit = m_units.find(path);
  return unit != m_units.end() && unit->second.inKernel == 0 && hasCpu(path);
}

bool SimulatedUnits::isWeighed(std::string_view path) const {
  const std::vector<std::string> folders = foldersOnTheWay(path);
  return std::any_of(folders.begin(), folders.end(), [this](const auto& folder) { return hasCpu(folder); });
}

std::vector<Pid> SimulatedUnits::processesIn(const std::string& path) const {
  std::vector<Pid> pids;
  for (const auto& [pid, place] : m_places) {
    if (place == path) pids.push_back(pid);
  }
  return pids;
}

std::vector<Pid> SimulatedUnits::processesBelow(const std::string& path) const {
  std::vector<Pid> pids;
  for (const auto& [pid, place] : m_places) {
    if (isAtOrBelow(place, path)) pids.push_back(pid);
  }
  return pids;
}

std::vector<std::string> SimulatedUnits::foldersIn(const std::string& path) const {
  std::set<std::string> names;
  const auto add = [&](const std::string& below) {
    if (below.size() <= path.size() || !isAtOrBelow(below, path)) return;
    const std::string rest = below.substr(path.size() + 1);
    names.insert(rest.substr(0, rest.find('/')));
  };
  for (const auto& [pid, place] : m_places) add(place);
  for (const auto& [unit, state] : m_units) {
    if (hasFolder(unit)) add(unit);
  }
  return {names.begin(), names.end()};
}

} // namespace vantle
