// SPDX-License-Identifier: MIT
#include "engine/Protection.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace vantle {

bool isProtectedByPerson(const AppSettings& settings, const std::optional<std::string>& bundleID) {
  const std::vector<std::string>& list = settings.protectedApps.get();
  return bundleID && std::find(list.begin(), list.end(), *bundleID) != list.end();
}

std::set<Pid> audioPIDs(AudioActivity& audio) {
  return audio.isAvailable() ? audio.runningOutput() : std::set<Pid>{};
}

std::set<Pid> assertionPIDs(PowerAssertions& power) {
  static const std::set<std::string> preventingSleep{"PreventUserIdleSystemSleep", "PreventSystemSleep",
                                                     "PreventUserIdleDisplaySleep"};
  std::set<Pid> holders;
  for (const PowerAssertions::Assertion& assertion : power.assertions()) {
    if (preventingSleep.contains(assertion.type)) holders.insert(assertion.pid);
  }
  return holders;
}

ShieldedPIDs shieldedPIDs(AudioActivity& audio, PowerAssertions& power) {
  power.ask();
  std::set<Pid> heard = audioPIDs(audio);
  return {std::move(heard), assertionPIDs(power)};
}

} // namespace vantle
