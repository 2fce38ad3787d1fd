// SPDX-License-Identifier: MIT
#include "engine/Protection.h"

namespace vantle {

const std::set<std::string>& systemBundleIDs() {
  static const std::set<std::string> identifiers{"com.apple.finder",
                                                 "com.apple.dock",
                                                 "com.apple.systemuiserver",
                                                 "com.apple.controlcenter",
                                                 "com.apple.notificationcenterui",
                                                 "com.apple.ActivityMonitor",
                                                 "com.apple.loginwindow"};
  return identifiers;
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

std::set<Pid> shieldedPIDs(AudioActivity& audio, PowerAssertions& power) {
  std::set<Pid> shielded = audioPIDs(audio);
  shielded.merge(assertionPIDs(power));
  return shielded;
}

} // namespace vantle
