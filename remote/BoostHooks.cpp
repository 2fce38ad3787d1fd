// SPDX-License-Identifier: MIT
#include "remote/BoostHooks.h"

#include "base/PlainText.h"

#include <utility>

namespace vantle {
namespace {

constexpr const char* start = "boost-start";
constexpr const char* end = "boost-end";

Hooks::Variables variablesOf(const RunningApplication& app) {
  // They end up in notices, logs and terminals.
  return {{"VANTLE_APP_NAME", plainText(app.localizedName().value_or(std::string()))},
          {"VANTLE_APP_ID", plainText(app.bundleIdentifier().value_or(std::string()))},
          {"VANTLE_APP_PID", std::to_string(app.processIdentifier())}};
}

} // namespace

BoostHooks::BoostHooks(Engine& engine, Hooks& hooks)
    : m_engine(engine), m_hooks(hooks), m_observer(engine.activeGame.observe([this] { notice(); })) {
  notice(); // the engine starts a Boost as it is made, if a Boost app is in front
}

void BoostHooks::notice() {
  const AppRef& now = m_engine.activeGame.get();
  const AppRef before = std::exchange(m_boosted, now);
  if (before == now) return;
  if (before) add({end, variablesOf(*before)});
  if (now) add({start, variablesOf(*now)});
  startNext();
}

void BoostHooks::add(Moment moment) {
  if (moment.hook == end && !m_due.empty() && m_due.back().hook == start) {
    m_due.pop_back();
  } else {
    m_due.push_back(std::move(moment));
  }
}

void BoostHooks::startNext() {
  while (!m_isRunning && !m_due.empty()) {
    const Moment next = std::move(m_due.front());
    m_due.erase(m_due.begin());
    m_isRunning = m_hooks.start(next.hook, next.variables, [this] {
      m_isRunning = false;
      startNext();
    });
  }
}

void BoostHooks::finish() {
  if (m_due.empty()) return;
  m_hooks.cut();
  m_isRunning = false;
  startNext();
}

} // namespace vantle
