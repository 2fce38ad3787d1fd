// SPDX-License-Identifier: MIT
#include "remote/RemoteControl.h"

#include "base/PlainText.h"
#include "engine/AppTrees.h"
#include "engine/Protection.h"
#include "remote/Report.h"
#include "remote/StatusOfEngine.h"

#include <algorithm>
#include <charconv>
#include <iterator>

namespace vantle {
namespace {

constexpr std::chrono::milliseconds freshFor{100};
constexpr std::chrono::hours longestPause{24};

// The number of the process that the text names; 0 for none.
Pid pidIn(const std::string& text) {
  Pid pid = 0;
  const char* const end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, pid);
  return error == std::errc() && rest == end ? pid : 0;
}

// As much of it as whoever asked needs to know it again.
std::string quoted(const std::string& target) { return "'" + plainText(target, 100) + "'"; }

std::string noSuchApp(const std::string& target) { return "there is no running app " + quoted(target) + "."; }

} // namespace

RemoteControl::RemoteControl(EventLoop& loop, Engine& engine, const Machine& machine, RemoteDoor& door,
                             About about)
    : m_loop(loop), m_engine(engine), m_machine(machine), m_about(std::move(about)),
      m_door(door.open(answers())) {
  followEngine();
}

RemoteDoor::Answers RemoteControl::answers() {
  return {
      .status = [this] { return status(); },
      .why = [this](const std::string& target, std::vector<AppStatus>& apps) { return why(target, apps); },
      .boost = [this](const std::string& target) { return boost(target); },
      .off = [this] { m_engine.turnOffBoost(); },
      .pause = [this](std::chrono::seconds duration) { return pause(duration); },
      .report = [this](bool withNames) { return report(withNames); }};
}

void RemoteControl::followEngine() {
  const auto notice = [this] { changed(); };
  m_observers.push_back(m_engine.activeGame.observe(notice));
  m_observers.push_back(m_engine.managedNames.observe(notice));
  m_observers.push_back(m_engine.lastFrontmost.observe(notice));
  m_observers.push_back(m_engine.automatic.observe(notice));
  m_observers.push_back(m_engine.pause.observe(notice));
  for (const auto event : {WorkspaceEvent::launched, WorkspaceEvent::terminated}) {
    m_observers.push_back(m_machine.workspace.observe(event, [this](const AppRef&) { changed(); }));
  }
}

void RemoteControl::changed() {
  m_status.reset();
  if (m_telling) return;
  m_telling = m_loop.after(std::chrono::milliseconds(0), [this] {
    m_telling.reset();
    m_door->tell();
  });
}

const Status& RemoteControl::status() {
  const auto now = std::chrono::steady_clock::now();
  if (!m_status || now - m_lookedAt > freshFor) {
    m_status = statusOf(m_engine, m_machine, m_about.version);
    m_lookedAt = now;
  }
  return *m_status;
}

std::vector<AppStatus> RemoteControl::find(const std::string& target) {
  std::vector<AppStatus> found = appsNamed(status(), target);
  const Pid pid = pidIn(target);
  if (!found.empty() || pid == 0) return found;
  const AppTrees trees = m_engine.look();
  std::copy_if(status().apps.begin(), status().apps.end(), std::back_inserter(found),
               [&](const AppStatus& app) {
                 const std::vector<Pid>& owned = trees.processesOf(app.pid);
                 return std::find(owned.begin(), owned.end(), pid) != owned.end();
               });
  return found;
}

RemoteDoor::Refusal RemoteControl::why(const std::string& target, std::vector<AppStatus>& apps) {
  apps = find(target);
  return apps.empty() ? RemoteDoor::Refusal(noSuchApp(target)) : std::nullopt;
}

RemoteDoor::Refusal RemoteControl::boost(const std::string& target) {
  AppRef app = m_engine.lastFrontmost.get();
  if (!target.empty()) {
    const std::vector<AppStatus> found = find(target);
    if (found.empty()) return noSuchApp(target);
    if (found.size() > 1)
      return "several apps are called " + quoted(target) + ": name one by its process number.";
    app = m_engine.runningApplication(found.front().pid);
  }
  if (!app || app->isTerminated()) return target.empty() ? "no app is in front." : noSuchApp(target);
  const AppRef& game = m_engine.activeGame.get();
  if (game) {
    if (game->processIdentifier() == app->processIdentifier()) return std::nullopt;
    return "a Boost is running already; 'vantle off' ends it.";
  }
  if (app->activationPolicy() != ActivationPolicy::regular || isSystemApp(app->bundleIdentifier())) {
    return "a part of the desktop cannot be a Boost app.";
  }
  m_engine.boostNow(app);
  return std::nullopt;
}

RemoteDoor::Refusal RemoteControl::pause(std::chrono::seconds duration) {
  if (duration > longestPause) return "a pause lasts a day at most.";
  m_pauseEnd.reset();
  if (duration.count() == 0) {
    m_engine.endPause();
    return std::nullopt;
  }
  m_engine.startPause(duration);
  m_pauseEnd = m_loop.after(duration, [this] { m_engine.endPause(); });
  return std::nullopt;
}

std::string RemoteControl::report(bool withNames) {
  return reportText(status(), m_about.machineFacts(), withNames);
}

} // namespace vantle
