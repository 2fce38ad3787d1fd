// SPDX-License-Identifier: MIT
#include "tests/support/ShellDesktop.h"

#include <sys/stat.h>

namespace vantle::desktop {

ShellDesktop::ShellDesktop(const Environment& added) : PrivateSession({}, added) {
  // The folder of X servers' sockets is made when a system starts, which a bare one never did, and shells
  // only want it there.
  constexpr const char* sockets = "/tmp/.X11-unix";
  if (::mkdir(sockets, 01777) == 0) ::chmod(sockets, 01777); // without what the mask takes
  startSessionBus();
  m_listener = std::make_unique<FakeService>(busAddress(), listenerName);
}

int ShellDesktop::windowsWhere(const std::string& condition) {
  return std::stoi(script("answer(all.filter(function(w) { return " + condition + "; }).length);"));
}

void ShellDesktop::focusWhere(const std::string& condition) {
  require("a window", [&] { return windowsWhere(condition) > 0; });
  // A window that opens meanwhile may take the front; whoever wants it asks again.
  require("a window in front", [&] { return activateWhere(condition); });
}

bool ShellDesktop::activateWhere(const std::string& condition) {
  return script("var w = all.filter(function(w) { return " + condition +
                "; })[0];"
                "activate(w); answer(front() === w);") == "true";
}

} // namespace vantle::desktop
