// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"

#include <optional>

namespace vantle {

// What was decided about an app when it was last looked at, and why.
enum class Verdict {
  slowed,
  noBoost,           // no Boost is running
  notAnApp,          // a part of the desktop, or without ordinary windows
  ended,             //
  ownProcess,        // this program, or what it was started from
  slowedAlready,     //
  inFront,           // in front during the Boost
  protectedByPerson, // on the person's own list
  systemApp,         // file manager, settings and the like
  boostApp,          // a Boost app itself, this or another one
  launcher,          // it started the Boost app
  heard,             // it plays audio
  keepsAwake,        // it keeps the machine awake on purpose
  refused            // nothing here can slow it down so that it could be undone
};

// What can be held against slowing an app down. What costs much need not be found out once something before
// it has decided.
struct AppFacts {
  bool noBoost = false;
  bool isNotRegular = false;
  bool hasEnded = false;
  bool isOwnProcess = false;
  bool isSlowed = false;
  bool isInFront = false;
  bool isProtectedByPerson = false;
  bool isSystemApp = false;
  bool isBoostApp = false;
  bool isLauncher = false;
  bool isHeard = false;
  bool keepsAwake = false;
};

// The same with what the band said about the app's processes.
struct AppVerdict {
  Verdict verdict = Verdict::noBoost;
  std::optional<BandLever> lever;     // by what it was slowed; absent when it was not
  std::optional<BandRefusal> refusal; // why the first process that could not be slowed could not

  bool operator==(const AppVerdict&) const = default;
};

// The rules in their order; the first that matches decides.
Verdict judge(const AppFacts& facts);

} // namespace vantle
