// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/PowerAssertions.h"
#include "engine/ports/ProcessTable.h"
#include "platform/linux/bus/BusBatch.h"
#include "platform/linux/bus/BusConnection.h"
#include "platform/linux/power/SessionInhibitors.h"

#include <optional>
#include <string_view>
#include <vector>

namespace vantle {

// Who keeps the machine awake, through logind's inhibitors: those that block (a delay only postpones) and
// that are about sleep or idleness (not lids, keys or shutting down). And through the session manager's,
// which stands in logind's list under its own process, if at all.
//
// The holders of other users count as well: an app's helper may run as root, and it is the app's tree that
// the answer is compared with, where a stranger's process never is.
class LogindPowerAssertions final : public PowerAssertions {
 public:
  // Both buses may be used by others too.
  LogindPowerAssertions(BusConnection& systemBus, BusConnection& sessionBus, const ProcessTable& processes);

  // Waits 200 ms at most in all; a daemon that did not answer the last question is not waited for again.
  std::vector<Assertion> assertions() override;

 private:
  std::vector<InhibitorHolder> inhibitors(BusDeadline deadline);

  BusConnection& m_systemBus;
  SessionInhibitors m_session;
  std::optional<BusBatch> m_question;
};

// The kinds in a colon list such as "idle:sleep:handle-lid-switch", in any order.
InhibitorKinds kindsFromList(std::string_view what);

} // namespace vantle
