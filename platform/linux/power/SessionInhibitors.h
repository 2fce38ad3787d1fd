// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"
#include "engine/ports/ProcessTable.h"
#include "platform/linux/bus/BusBatch.h"
#include "platform/linux/bus/BusConnection.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// What keeps the machine awake: the sleep that is asked for (by a lid, a menu, a timer) or the idle one.
struct InhibitorKinds {
  bool sleep = false;
  bool idle = false;
};

struct InhibitorHolder {
  Pid pid = 0;
  InhibitorKinds kinds;
};

// The apps that asked a session manager to keep the machine awake, which it does under its own name.
// (GNOME's, MATE's and Cinnamon's all speak org.gnome.SessionManager.)
class SessionInhibitors {
 public:
  SessionInhibitors(BusConnection& sessionBus, const ProcessTable& processes)
      : m_bus(sessionBus), m_processes(processes) {}

  // The session manager's process; absent when there is none.
  std::optional<Pid> manager(BusDeadline deadline);

  // The processes on whose behalf it holds inhibitors, as far as they can be found out before the deadline:
  // the registered client, else the owner of the bus name that equals the app id, else this session's
  // processes whose program is called like the app.
  std::vector<InhibitorHolder> holders(BusDeadline deadline);

 private:
  struct Inhibitor;

  BusMessage bus(const char* member, const char* name);
  std::vector<std::string> inhibitorPaths(BusDeadline deadline);
  std::vector<Pid> programsCalled(const std::string& appId) const;

  BusConnection& m_bus;
  const ProcessTable& m_processes;
  // Questions that may still be unanswered: then no other is asked, and nobody waits for them again.
  std::optional<BusBatch> m_nameQuestion;
  std::optional<BusBatch> m_managerQuestion;
};

// Whether a program of this path is the app of that id: "firefox" or "org.mozilla.firefox" is
// "/usr/lib/firefox/firefox" as well as "/usr/lib/firefox-esr/firefox-esr".
bool isProgramOfApp(std::string_view path, std::string_view appId);

} // namespace vantle
