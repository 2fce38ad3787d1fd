// SPDX-License-Identifier: MIT
#include "remote/StatusOfEngine.h"

#include "engine/AppTrees.h"
#include "engine/Protection.h"
#include "status/Words.h"

#include <cstddef>
#include <utility>

namespace vantle {
namespace {

struct Judged {
  AppState state;
  Reason reason;
};

Reason reasonOf(const std::optional<BandRefusal>& refusal) {
  if (!refusal) return Reason::alreadySlow;
  switch (*refusal) {
  case BandRefusal::notAllowed:
    return Reason::notAllowed;
  case BandRefusal::shared:
    return Reason::sharedPlace;
  case BandRefusal::noLever:
    return Reason::noLever;
  case BandRefusal::noWayBack:
    return Reason::noWayBack;
  case BandRefusal::gone:
    break;
  }
  return Reason::alreadySlow;
}

Judged judgedAs(const AppVerdict& verdict) {
  switch (verdict.verdict) {
  case Verdict::notAnApp:
    return {AppState::leftAlone, Reason::notAnApp};
  case Verdict::ownProcess:
    return {AppState::leftAlone, Reason::ownProcess};
  case Verdict::inFront:
    return {AppState::inFront, Reason::inFront};
  case Verdict::protectedByPerson:
    return {AppState::leftAlone, Reason::isProtected};
  case Verdict::systemApp:
    return {AppState::leftAlone, Reason::systemApp};
  case Verdict::boostApp:
    return {AppState::leftAlone, Reason::boostApp};
  case Verdict::launcher:
    return {AppState::leftAlone, Reason::launcher};
  case Verdict::heard:
    return {AppState::leftAlone, Reason::playsAudio};
  case Verdict::keepsAwake:
    return {AppState::leftAlone, Reason::keepsAwake};
  case Verdict::refused:
    return {AppState::notSlowed, reasonOf(verdict.refusal)};
  case Verdict::slowed:
  case Verdict::slowedAlready:
  case Verdict::noBoost:
  case Verdict::ended:
    break;
  }
  return {AppState::notSlowed, Reason::notJudged};
}

Judged judged(const Engine& engine, const RunningApplication& app) {
  const Pid pid = app.processIdentifier();
  const AppRef& game = engine.activeGame.get();
  if (!game) {
    if (app.isActive()) return {AppState::inFront, Reason::inFront};
    return {AppState::notSlowed, Reason::noBoost};
  }
  if (game->processIdentifier() == pid) return {AppState::boostApp, Reason::boostApp};
  if (engine.managed().contains(pid)) return {AppState::inBackground, Reason::slowed};
  // What the last look decided may have been overtaken by the person's own list.
  if (isProtectedByPerson(engine.settings, app.bundleIdentifier())) {
    return {app.isActive() ? AppState::inFront : AppState::leftAlone, Reason::isProtected};
  }
  const auto verdict = engine.verdicts().find(pid);
  if (verdict == engine.verdicts().end()) return {AppState::notSlowed, Reason::notJudged};
  const Judged last = judgedAs(verdict->second);
  if (app.isActive()) return {AppState::inFront, last.reason};
  // It was in front, and this was all there was to it.
  return last.state == AppState::inFront ? Judged{AppState::notSlowed, Reason::notJudged} : last;
}

std::optional<std::string> leverOf(const Engine& engine, Pid pid) {
  const auto verdict = engine.verdicts().find(pid);
  if (verdict == engine.verdicts().end() || !verdict->second.lever) return std::nullopt;
  return std::string(leverWords.at(static_cast<std::size_t>(*verdict->second.lever)));
}

std::string nameOf(const RunningApplication& app) {
  return app.localizedName().value_or("pid " + std::to_string(app.processIdentifier()));
}

AppStatus statusOf(const Engine& engine, const Machine& machine, const AppTrees& trees,
                   const RunningApplication& app) {
  const Judged how = judged(engine, app);
  AppStatus status;
  status.pid = app.processIdentifier();
  status.name = nameOf(app);
  status.id = app.bundleIdentifier();
  status.state = wordOf(how.state);
  status.reason = wordOf(how.reason);
  status.processes = trees.processesOf(status.pid).size();
  if (std::optional<KnownBy> known = app.knownBy()) {
    status.knownBy = std::move(known->rule);
    status.knownBecause = std::move(known->reason);
  }
  if (how.state == AppState::inBackground) {
    status.lever = leverOf(engine, status.pid);
    status.memory = appFootprint(machine.processes, trees, status.pid);
  }
  return status;
}

} // namespace

Status statusOf(const Engine& engine, const Machine& machine, const std::string& version) {
  Status status;
  status.version = version;
  if (const AppRef& game = engine.activeGame.get()) {
    status.isActive = true;
    status.boostName = nameOf(*game);
    status.boostId = game->bundleIdentifier();
    status.boostPid = game->processIdentifier();
  }
  status.isAutomatic = engine.automatic.get();
  const std::optional<Pause>& pause = engine.pause.get();
  if (pause && machine.clock.processMicros() < pause->endMicros) {
    status.pausedUntil = static_cast<std::uint64_t>(std::chrono::system_clock::to_time_t(pause->end));
  }
  status.pressure = pressureWords.at(static_cast<std::size_t>(engine.currentPressureLevel()));
  const AppTrees trees = engine.look();
  for (const AppRef& app : machine.workspace.runningApplications()) {
    if (!app->isTerminated()) status.apps.push_back(statusOf(engine, machine, trees, *app));
  }
  return status;
}

} // namespace vantle
