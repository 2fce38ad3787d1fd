// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <memory>
#include <string>

namespace vantle {

class Subprocess {
 public:
  virtual ~Subprocess() = default; // leaves a running process alone

  virtual Pid processIdentifier() const = 0;
  virtual bool isRunning() = 0;
  virtual void terminate() = 0;
  virtual void waitUntilExit() = 0;
};

class SubprocessLauncher {
 public:
  virtual ~SubprocessLauncher() = default;

  // Starts a program without arguments, its output discarded, placed in the system as the desktop places an
  // app of its own. Null when it could not be started.
  virtual std::unique_ptr<Subprocess> launch(const std::string& executablePath) = 0;
};

} // namespace vantle
