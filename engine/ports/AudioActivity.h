// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <set>

namespace vantle {

// Who is heard right now.
class AudioActivity {
 public:
  virtual ~AudioActivity() = default;

  // Whether this system can tell at all; when not, `runningOutput` is not asked.
  virtual bool isAvailable() const = 0;

  // The processes with running audio output. Empty on any failure; bounded in time (200 ms).
  virtual std::set<Pid> runningOutput() = 0;
};

} // namespace vantle
