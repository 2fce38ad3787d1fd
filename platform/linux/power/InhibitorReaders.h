// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/bus/BusTypes.h"
#include "platform/linux/power/Inhibitor.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// The answers of foreign daemons. Each takes a reply of any shape, null included, and reads of it what it
// understands. Lists are read up to a length that no session comes near.

// logind's ListInhibitors: those that block (a delay only postpones) and that are about sleep or idleness
// (not lids, keys or shutting down).
std::vector<Inhibitor> blockingInhibitors(sd_bus_message* reply);

// The kinds in a colon list such as "idle:sleep:handle-lid-switch", in any order.
InhibitorKinds kindsFromList(std::string_view what);

// The names of the apps in a list of texts, or of pairs of a name and a reason in whichever notation. A text
// may be `Application="name"; Since="…"; Reason="…";` as well.
std::vector<std::string> appsIn(sd_bus_message* reply);

std::vector<std::string> pathsIn(sd_bus_message* reply);
std::optional<std::uint32_t> numberIn(sd_bus_message* reply);
std::optional<bool> truthIn(sd_bus_message* reply);
std::optional<Pid> processIn(sd_bus_message* reply);
std::string textIn(sd_bus_message* reply); // a text or a path

// The bus names of those who have a request under way with the portal, from the description of the object
// that the requests stand below: ":1.42" for a node "1_42".
std::vector<std::string> requestersIn(std::string_view description);

// Whether a text has the form of a name on a bus that a program has chosen: "org.example.Player".
bool isBusName(std::string_view text);

} // namespace vantle
