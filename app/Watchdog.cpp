// SPDX-License-Identifier: MIT
#include "app/Watchdog.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <utility>

namespace vantle {

namespace {

using Steady = std::chrono::steady_clock;

constexpr std::chrono::seconds longestStart{30};
constexpr std::chrono::seconds longestSilence{3}; // of a main loop that is to hear a signal
constexpr std::chrono::seconds longestPuttingBack{20};
constexpr std::chrono::seconds longestTeardown{2};

enum class Phase { recovering, starting, slowing, ending, over };

} // namespace

struct Watchdog::State {
  explicit State(std::unique_ptr<MainThread> thread) : mainThread(std::move(thread)) {}

  const std::unique_ptr<MainThread> mainThread;
  std::mutex mutex; // held while the program is ended, so that no step is taken meanwhile
  Phase phase = Phase::recovering;
  Steady::time_point phaseBegan = Steady::now();
  std::optional<Steady::time_point> asked; // when the first signal came
  std::optional<Steady::time_point> heard; // when the main loop began to answer it

  void enter(Phase next) {
    const std::lock_guard lock(mutex);
    phase = next;
    phaseBegan = Steady::now();
    mainThread->wakeWatcher();
  }

  void watch();
  void noteSignals();
  std::optional<Steady::time_point> deadline() const;
  void endIfDue() const;
  void putBackWithoutMain() const;
};

void Watchdog::State::watch() {
  for (;;) {
    std::optional<std::chrono::milliseconds> wait;
    {
      const std::lock_guard lock(mutex);
      noteSignals();
      endIfDue();
      if (const auto end = deadline()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(*end - Steady::now());
        wait = std::max(left, std::chrono::milliseconds(0));
      }
    }
    mainThread->await(wait);
  }
}

void Watchdog::State::noteSignals() {
  if (!asked && mainThread->isAskedToEnd()) asked = Steady::now();
  if (!heard && mainThread->isAnswering()) heard = Steady::now();
}

std::optional<Steady::time_point> Watchdog::State::deadline() const {
  switch (phase) {
  case Phase::recovering:
    return asked ? std::optional(*asked + longestPuttingBack) : std::nullopt;
  case Phase::starting:
    return asked ? *asked : phaseBegan + longestStart;
  case Phase::slowing:
    if (heard) return *heard + longestPuttingBack;
    return asked ? std::optional(std::max(*asked, phaseBegan) + longestSilence) : std::nullopt;
  case Phase::ending:
    return phaseBegan + longestTeardown;
  case Phase::over:
    break;
  }
  return std::nullopt;
}

void Watchdog::State::endIfDue() const {
  const auto end = deadline();
  if (!end || Steady::now() < *end) return;
  if (phase == Phase::recovering) {
    mainThread->say("vantle: what an earlier run left slowed could not be put back in time.\n");
    std::_Exit(EXIT_FAILURE);
  }
  if (phase == Phase::starting && !asked) {
    mainThread->say("vantle: the desktop session does not answer.\n");
    std::_Exit(EXIT_FAILURE);
  }
  if (phase == Phase::slowing) putBackWithoutMain();
  std::_Exit(EXIT_SUCCESS);
}

// The main thread may not wake up in the middle and slow what has just been put back. Until the other process
// is done this one holds the lock on the single copy.
void Watchdog::State::putBackWithoutMain() const {
  mainThread->freeze();
  mainThread->runProgram(helperArgument, longestPuttingBack);
}

Watchdog::Watchdog(std::unique_ptr<MainThread> mainThread)
    : m_state(std::make_shared<State>(std::move(mainThread))) {
  m_state->mainThread->watchFrom([state = m_state] { state->watch(); });
}

Watchdog::~Watchdog() { m_state->enter(Phase::over); }

void Watchdog::recovered() { m_state->enter(Phase::starting); }
void Watchdog::maySlow() { m_state->enter(Phase::slowing); }

void Watchdog::stillAtIt() {
  const std::lock_guard lock(m_state->mutex);
  for (auto* since : {&m_state->asked, &m_state->heard}) {
    if (*since) *since = Steady::now();
  }
  m_state->mainThread->wakeWatcher();
}

void Watchdog::putBackWithoutMain() {
  const std::lock_guard lock(m_state->mutex);
  m_state->putBackWithoutMain();
}

void Watchdog::putBack() { m_state->enter(Phase::ending); }

} // namespace vantle
