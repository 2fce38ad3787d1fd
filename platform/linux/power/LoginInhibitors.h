// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/power/InhibitorSource.h"

namespace vantle {

// logind's own list, which names the process of each holder. Those of other users count as well: an app's
// helper may run as root, and it is the app's tree that the answer is compared with, where a stranger's
// process never is.
class LoginInhibitors final : public InhibitorSource {
 public:
  explicit LoginInhibitors(BusConnection& systemBus) : InhibitorSource(systemBus) {}

 private:
  void askFirst() override;
};

} // namespace vantle
