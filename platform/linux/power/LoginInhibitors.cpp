// SPDX-License-Identifier: MIT
#include "platform/linux/power/LoginInhibitors.h"

#include "platform/linux/power/InhibitorReaders.h"

namespace vantle {

void LoginInhibitors::askFirst() {
  ask({"org.freedesktop.login1", "/org/freedesktop/login1", "org.freedesktop.login1.Manager",
       "ListInhibitors"},
      [this](sd_bus_message* reply) {
        for (Inhibitor& inhibitor : blockingInhibitors(reply)) add(std::move(inhibitor));
      });
}

} // namespace vantle
