// SPDX-License-Identifier: MIT
#pragma once

#include "engine/Engine.h"
#include "engine/ports/Hooks.h"

#include <memory>
#include <string>
#include <vector>

namespace vantle {

// Runs the person's "boost-start" when a Boost has begun and "boost-end" when it is over, with the Boost
// app's VANTLE_APP_NAME, VANTLE_APP_ID and VANTLE_APP_PID. One after the other; a Boost that is over before
// its turn came has neither.
class BoostHooks {
 public:
  // Both outlive it.
  BoostHooks(Engine& engine, Hooks& hooks);
  BoostHooks(const BoostHooks&) = delete;
  BoostHooks& operator=(const BoostHooks&) = delete;

  // At the program's end: the last "boost-end", if one is due, waits for nobody.
  void finish();

 private:
  struct Moment {
    std::string hook;
    Hooks::Variables variables;
  };

  void notice();
  void add(Moment moment);
  void startNext();

  Engine& m_engine;
  Hooks& m_hooks;
  AppRef m_boosted; // as the hooks know it
  std::vector<Moment> m_due;
  bool m_isRunning = false;
  std::unique_ptr<Registration> m_observer;
};

} // namespace vantle
