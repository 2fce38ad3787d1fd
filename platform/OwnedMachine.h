// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Machine.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// A machine, with all that stands behind its ports.
class OwnedMachine {
 public:
  virtual ~OwnedMachine() = default;

  virtual Machine machine() = 0; // valid as long as this object
  // Where it sees the apps and the one in front, for a person to read; empty when it does not look for them.
  virtual std::string desktop() const = 0;
  // What a report of a problem needs to know of it: subjects, and a sentence about each. Names no app.
  virtual std::vector<std::pair<std::string, std::string>> facts() const = 0;
};

// The processes, the band, the clock and the launcher, which starts programs as apps stand on this desktop;
// everything else is absent, and nothing is kept on disk. A source of each system defines it.
std::unique_ptr<OwnedMachine> selfTestMachine();

} // namespace vantle
