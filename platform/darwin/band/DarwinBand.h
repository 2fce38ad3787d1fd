// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"

namespace vantle {

// The system's own background band, process by process. The kernel keeps who is in it but not who put it
// there, so nothing here finds a process that this program has forgotten.
class DarwinBand final : public BackgroundBand {
 public:
  bool enterBackgroundBand(Pid pid) override;
  bool leaveBackgroundBand(Pid pid) override;
  std::optional<bool> isInBackgroundBand(Pid pid) const override;
};

} // namespace vantle
