// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/power/InhibitorSource.h"

#include <string>
#include <vector>

namespace vantle {

// Who has a request under way with the desktop portal. The portal does not tell what its requests are about:
// most are dialogs, and one to keep the machine awake is among them as long as it is held. Each of them is an
// inhibitor without a name here.
class PortalRequests final : public InhibitorSource {
 public:
  explicit PortalRequests(BusConnection& sessionBus) : InhibitorSource(sessionBus) {}

 private:
  void askFirst() override;
};

} // namespace vantle
