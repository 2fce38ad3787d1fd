// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/Host.h"

namespace vantle {

class LinuxHost final : public Host {
 public:
  Pid selfPID() const override;
  int activeProcessorCount() const override; // those that this program and its children may run on
};

} // namespace vantle
