// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Host.h"

namespace vantle {

class DarwinHost final : public Host {
 public:
  Pid selfPID() const override;
  int activeProcessorCount() const override; // those that are switched on; 1 when the system does not tell
};

} // namespace vantle
