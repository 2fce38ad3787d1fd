// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

namespace vantle {

class Host {
 public:
  virtual ~Host() = default;

  virtual Pid selfPID() const = 0;
  virtual int activeProcessorCount() const = 0; // at least 1
};

} // namespace vantle
