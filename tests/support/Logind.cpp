// SPDX-License-Identifier: MIT
#include "tests/support/Logind.h"

#include <unistd.h>
#include <utility>

namespace vantle::desktop {

namespace {

bool isRoot() { return ::geteuid() == 0; }

std::vector<std::string> asRootOfOwnNamespace() {
  return isRoot() ? std::vector<std::string>{}
                  : std::vector<std::string>{"unshare", "--user", "--map-root-user"};
}

} // namespace

bool Logind::isPossible() {
  if (::access("/lib/systemd/systemd-logind", X_OK) != 0) return false;
  if (isRoot()) return true;
  Start start;
  start.command = {"unshare", "--user", "--map-root-user", "--mount", "mount",
                   "-t",      "tmpfs",  "tmpfs",           "/run"};
  start.environment = {{"PATH", "/usr/bin:/bin"}};
  return Program(start).exitStatus() == 0;
}

Logind::Logind() : m_bus(asRootOfOwnNamespace()) { start(); }

Start Logind::startOf(std::vector<std::string> command) const {
  Start start;
  start.command = std::move(command);
  start.environment = {{"PATH", "/usr/sbin:/usr/bin:/sbin:/bin"},
                       {"DBUS_SYSTEM_BUS_ADDRESS", m_bus.address()}};
  return start;
}

void Logind::start() {
  std::vector<std::string> command{"unshare", "--mount", "sh", "-c",
                                   "mount -t tmpfs tmpfs /run && "
                                   "mkdir -p /run/systemd/system /run/systemd/inhibit && "
                                   "exec /lib/systemd/systemd-logind"};
  if (!isRoot()) { // the same root as that of the bus
    const std::string owner = std::to_string(m_bus.daemon().pid());
    command.insert(command.begin(), {"nsenter", "--user", "--preserve-credentials", "--target=" + owner});
  }
  m_daemon = std::make_unique<Program>(startOf(std::move(command)));
  require("the login daemon", [this] {
    return run({"busctl", "call", "org.freedesktop.login1", "/org/freedesktop/login1",
                "org.freedesktop.login1.Manager", "ListInhibitors"});
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
