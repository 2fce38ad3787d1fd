// SPDX-License-Identifier: MIT
#include "engine/MemoryWatch.h"

#include "engine/GameDetection.h"
#include "engine/ProcessQueries.h"
#include "engine/Protection.h"

#include <algorithm>
#include <cstddef>
#include <string_view>
#include <utility>

namespace vantle {

namespace {

constexpr std::uint64_t noticeIntervalMicros = 300'000'000; // the next one only after more than 300 s
constexpr std::size_t namedInNotice = 3;
constexpr const char* noticeIdentifier = "ram";

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) {
    if (&text != &texts.front()) all += ", ";
    all += text;
  }
  return all;
}

std::string filled(std::string text, const std::string& apps) {
  constexpr std::string_view place = "%1";
  if (const std::size_t at = text.find(place); at != std::string::npos) text.replace(at, place.size(), apps);
  return text;
}

} // namespace

MemoryWatch::MemoryWatch(const Machine& machine, const AppSettings& settings,
                         const Backgrounder& backgrounder, Boost boost)
    : m_machine(machine), m_settings(settings), m_backgrounder(backgrounder), m_boost(std::move(boost)) {}

void MemoryWatch::startPressureMonitor() {
  m_pressureSource = m_machine.pressure.watch([this](bool isCritical) { handleMemoryPressure(isCritical); });
}

void MemoryWatch::handleMemoryPressure(bool isCritical) {
  if (!m_boost.isRunning()) return;
  const std::uint64_t now = m_machine.clock.processMicros();
  if (m_lastPressureNotice && now - *m_lastPressureNotice <= noticeIntervalMicros) return;
  if (isCritical && m_settings.ramAction.get() == RAMAction::quitMarked && quitMarkedApps(now)) return;

  const AppTrees trees = m_backgrounder.look();
  std::vector<std::pair<std::string, std::uint64_t>> memoryUsers;
  for (const auto& [pid, app] : m_backgrounder.managed()) {
    if (!isSameLiveProcess(m_machine.processes, app.root)) continue;
    memoryUsers.emplace_back(app.name, appFootprint(m_machine.processes, trees, app.root.pid));
  }
  if (memoryUsers.empty()) return;
  std::stable_sort(memoryUsers.begin(), memoryUsers.end(),
                   [](const auto& left, const auto& right) { return left.second > right.second; });
  m_lastPressureNotice = now;
  std::vector<std::string> texts;
  for (const auto& [name, bytes] : memoryUsers) {
    if (texts.size() == namedInNotice) break;
    texts.push_back(name + " " + byteText(bytes));
  }
  postMemoryNotice(isCritical ? m_words.almostFull : m_words.runningLow,
                   filled(m_words.usingMost, joined(texts)));
}

bool MemoryWatch::quitMarkedApps(std::uint64_t now) {
  const std::vector<std::string>& marked = m_settings.quittableApps.get();
  const std::set<std::string> quittable(marked.begin(), marked.end());
  bool anyAsked = false;
  std::vector<std::string> names;
  for (const AppRef& app : m_machine.workspace.runningApplications()) {
    if (!quitIfAllowed(*app, quittable)) continue;
    anyAsked = true;
    if (std::optional<std::string> name = app->localizedName()) names.push_back(std::move(*name));
  }
  if (!anyAsked) return false;
  m_lastPressureNotice = now;
  postMemoryNotice(m_words.almostFull, filled(m_words.quitting, joined(names)));
  return true;
}

bool MemoryWatch::quitIfAllowed(RunningApplication& app, const std::set<std::string>& quittable) const {
  const std::optional<std::string> key = appListKey(app);
  if (!key || !quittable.contains(*key)) return false;
  if (isProtectedByPerson(m_settings, key) || isSystemApp(key)) return false;
  if (app.isActive() || m_boost.isPartOfIt(app)) return false;
  return app.terminate();
}

void MemoryWatch::postMemoryNotice(const std::string& title, const std::string& body) {
  m_machine.notifications.post(noticeIdentifier, title, body);
}

std::vector<AppUsage> MemoryWatch::usageList() const {
  const auto& managed = m_backgrounder.managed();
  if (managed.empty()) return {};
  return vantle::usageList(m_machine.processes, m_backgrounder.look(), managed);
}

MemoryPressure::Level MemoryWatch::currentPressureLevel() const {
  return vantle::currentPressureLevel(m_machine.pressure);
}

std::uint64_t MemoryWatch::ownFootprint() const {
  return footprint(m_machine.processes, m_machine.host.selfPID());
}

} // namespace vantle
