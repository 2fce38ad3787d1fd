// SPDX-License-Identifier: MIT
#pragma once

#include "status/Status.h"

#include <systemd/sd-bus.h>
#include <vector>

namespace vantle {

// What the message holds next; false when it is not that. Entries that are not known are passed over.
bool readStatus(sd_bus_message* message, Status& status); // a{sv}; what is left out stays as it was
bool readApps(sd_bus_message* message, std::vector<AppStatus>& apps); // aa{sv}

} // namespace vantle
