// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// One running app, as others are told of it. The words are those of status/Words.h; whoever asks an older or
// a newer copy may meet others.
struct AppStatus {
  std::string name; // "pid N" for an app without a name
  std::optional<std::string> id;
  Pid pid = 0; // of its main process
  std::string state;
  std::string reason;
  std::optional<std::string> lever; // by what it is slowed; absent when it is not
  std::uint64_t processes = 0;      // how many belong to it
  std::uint64_t memory = 0;         // of all of them, in bytes
  // The rule that told which app it is, and for a person why; absent where the system itself knows apps.
  std::optional<std::string> knownBy;
  std::optional<std::string> knownBecause;
};

// What a running copy says of itself and of the apps.
struct Status {
  std::string version;
  bool isActive = false; // a Boost is running …
  std::string boostName; // … and for whom; all three empty or 0 when none is
  std::optional<std::string> boostId;
  Pid boostPid = 0;
  bool isAutomatic = false;
  std::uint64_t pausedUntil = 0; // seconds since the Unix epoch; 0: no pause
  std::string pressure;
  std::vector<AppStatus> apps; // in the order in which they were started
};

// Those that a person means by this text: by the number of their main process, or by name or identifier, in
// any case of the letters A to Z.
std::vector<AppStatus> appsNamed(const Status& status, std::string_view text);

} // namespace vantle
