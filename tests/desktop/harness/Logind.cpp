// SPDX-License-Identifier: MIT
#include "tests/desktop/harness/Logind.h"

#include <unistd.h>
#include <utility>

namespace vantle::desktop {

bool Logind::isPossible() { return ::geteuid() == 0 && ::access("/lib/systemd/systemd-logind", X_OK) == 0; }

Logind::Logind() { start(); }

Start Logind::startOf(std::vector<std::string> command) const {
  Start start;
  start.command = std::move(command);
  start.environment = {{"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"},
                       {"DBUS_SYSTEM_BUS_ADDRESS", m_bus.address()}};
  return start;
}

void Logind::start() {
  m_daemon = std::make_unique<Program>(
      startOf({"unshare", "-m", "sh", "-c",
               "mount -t tmpfs tmpfs /run && mkdir -p /run/systemd/system /run/systemd/inhibit && "
               "exec /lib/systemd/systemd-logind"}));
  require("the login daemon", [this] {
    return run({"dbus-send", "--system", "--print-reply", "--dest=org.freedesktop.login1",
                "/org/freedesktop/login1", "org.freedesktop.login1.Manager.ListInhibitors"});
  });
}

Program& Logind::inhibit(const std::string& what, const std::string& mode) {
  return *m_programs.emplace_back(
      std::make_unique<Program>(startOf({"systemd-inhibit", "--what=" + what, "--mode=" + mode, "--who=test",
                                         "--why=testing", "sleep", "60"})));
}

bool Logind::run(std::vector<std::string> command) {
  return Program(startOf(std::move(command))).exitStatus() == 0;
}

} // namespace vantle::desktop
