// SPDX-License-Identifier: MIT
#include "tests/support/LabwcDesktop.h"

#include "tests/support/Wait.h"
#include "tests/support/WlrootsStart.h"

#include <csignal>
#include <filesystem>

namespace vantle::desktop {

bool LabwcDesktop::isInstalled() {
  return std::filesystem::exists("/usr/bin/labwc") && std::filesystem::exists("/usr/bin/wlrctl");
}

LabwcDesktop::LabwcDesktop()
    : PrivateSession({}, {{"XDG_SESSION_TYPE", "wayland"}, {"XDG_CURRENT_DESKTOP", "labwc:wlroots"}}) {
  startSessionBus();
  m_compositor = &startWlroots(*this,
                               [](const std::string& line) {
                                 return std::vector<std::string>{"labwc", "-s", line};
                               },
                               {"WAYLAND_DISPLAY", "DISPLAY"});
}

LabwcDesktop::~LabwcDesktop() {
  m_compositor->signal(SIGTERM);
  m_compositor->waitForEnd();
}

void LabwcDesktop::waitForWindow(const std::string& applicationId) {
  require("a window", [&] { return run({"wlrctl", "toplevel", "find", "app_id:" + applicationId}); });
}

void LabwcDesktop::focus(const std::string& applicationId) {
  require("the focus", [&] { return run({"wlrctl", "toplevel", "focus", "app_id:" + applicationId}); });
}

} // namespace vantle::desktop
