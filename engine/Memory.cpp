// SPDX-License-Identifier: MIT
// What the engine does about memory: the notices, the polite quitting, and the figures it shows.
#include "engine/Engine.h"
#include "engine/GameDetection.h"
#include "engine/Protection.h"

#include <algorithm>
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

} // namespace

void Engine::startPressureMonitor() {
  m_pressureSource = m_machine.pressure.watch([this](bool isCritical) { handleMemoryPressure(isCritical); });
}

void Engine::handleMemoryPressure(bool isCritical) {
  if (!activeGame.get()) return;
  const std::uint64_t now = m_machine.clock.processMicros();
  if (m_lastPressureNotice && now - *m_lastPressureNotice <= noticeIntervalMicros) return;

  if (isCritical && settings.ramAction.get() == RAMAction::quitMarked) {
    const std::vector<std::string>& marked = settings.quittableApps.get();
    const std::vector<std::string>& own = settings.protectedApps.get();
    const std::set<std::string> quittable(marked.begin(), marked.end());
    std::set<std::string> protectedKeys(own.begin(), own.end());
    protectedKeys.insert(systemBundleIDs().begin(), systemBundleIDs().end());

    bool anyAsked = false;
    std::vector<std::string> names;
    for (const AppRef& app : m_machine.workspace.runningApplications()) {
      if (!quitIfAllowed(*app, quittable, protectedKeys)) continue;
      anyAsked = true;
      if (std::optional<std::string> name = app->localizedName()) names.push_back(std::move(*name));
    }
    if (anyAsked) {
      m_lastPressureNotice = now;
      postMemoryNotice("Memory almost full", "Quit " + joined(names) + " to free up memory.");
      return;
    }
  }

  const ProcessSnapshot snapshot(m_machine.processes);
  std::vector<std::pair<std::string, std::uint64_t>> memoryUsers;
  for (const auto& [pid, app] : m_managed) {
    if (!isSameLiveProcess(m_machine.processes, app.root)) continue;
    memoryUsers.emplace_back(app.name, appFootprint(m_machine.processes, snapshot, app.root.pid));
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
  postMemoryNotice(isCritical ? "Memory almost full" : "Memory is running low",
                   "Using the most memory: " + joined(texts) + ". Quitting them will free up memory.");
}

bool Engine::quitIfAllowed(RunningApplication& app, const std::set<std::string>& quittable,
                           const std::set<std::string>& protectedKeys) const {
  const std::optional<std::string> key = appListKey(app);
  if (!key || !quittable.contains(*key) || protectedKeys.contains(*key)) return false;
  if (profile.isTrigger(app)) return false;
  if (app.isActive()) return false;
  const AppRef& game = activeGame.get();
  if (game && game->processIdentifier() == app.processIdentifier()) return false;
  if (m_gameAncestors.contains(app.processIdentifier())) return false;
  return app.terminate();
}

void Engine::postMemoryNotice(const std::string& title, const std::string& body) {
  m_machine.notifications.post(noticeIdentifier, title, body);
}

std::vector<std::string> Engine::protectedInUse() {
  const std::set<Pid> heard = audioPIDs(m_machine.audio);
  const std::vector<std::string>& own = settings.protectedApps.get();
  std::vector<std::string> names;
  for (const AppRef& app : m_machine.workspace.runningApplications()) {
    const std::optional<std::string> bundleID = app->bundleIdentifier();
    if (!bundleID || std::find(own.begin(), own.end(), *bundleID) == own.end()) continue;
    std::optional<std::string> name = app->localizedName();
    if (!name) continue;
    if (heard.contains(app->processIdentifier())) *name += " \u00B7 playing audio";
    names.push_back(std::move(*name));
  }
  return sortedByScalars(std::move(names));
}

std::vector<AppUsage> Engine::usageList() const { return vantle::usageList(m_machine.processes, m_managed); }

MemoryPressure::Level Engine::currentPressureLevel() const {
  return vantle::currentPressureLevel(m_machine.pressure);
}

std::uint64_t Engine::ownFootprint() const { return footprint(m_machine.processes, m_selfPID); }

} // namespace vantle
