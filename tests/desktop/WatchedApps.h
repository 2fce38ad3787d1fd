// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/windows/DesktopProbe.h"
#include "platform/linux/workspace/WindowedWorkspace.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/PrivateSession.h"

#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vantle::desktop {

// The apps of a real desktop as the workspace sees them, through the source that is found there.
class WatchedApps : public testing::Test {
 protected:
  DesktopSource find(const PrivateSession& desktop, const std::string& swaySocket = {}) {
    if (!m_bus) m_bus.emplace(m_loop, desktop.busAddress());
    return DesktopProbe(m_loop, m_kernel, *m_bus,
                        {.display = desktop.environment().at("DISPLAY"),
                         .waylandDisplay = desktop.environment().at("WAYLAND_DISPLAY"),
                         .swaySocket = swaySocket,
                         .runtimeFolder = desktop.runtimeDir().string()},
                        feedName, installedOn(desktop))
        .find();
  }
  void watch(const PrivateSession& desktop, DesktopSource source) {
    m_workspace = std::make_unique<WindowedWorkspace>(
        m_loop, std::move(source.windows),
        WindowedWorkspace::Options{.installed = installedOn(desktop),
                                   .onDesktopLost = [this] { ++m_losses; },
                                   .front = source.front,
                                   .longestStart = source.longestStart});
    for (const auto& [event, name] : {std::pair{WorkspaceEvent::activated, "activated "},
                                      std::pair{WorkspaceEvent::launched, "launched "},
                                      std::pair{WorkspaceEvent::terminated, "terminated "}}) {
      m_registrations.push_back(
          m_workspace->observe(event, [this, name = std::string(name)](const AppRef& app) {
            m_events.push_back(name + std::to_string(app->processIdentifier()));
          }));
    }
  }

  static std::shared_ptr<DesktopEntries> installedOn(const PrivateSession& desktop) {
    return std::make_shared<DesktopEntries>(
        std::vector<std::string>{desktop.dataHome().string(), "/usr/share"});
  }

  bool runUntil(const std::function<bool()>& condition) { return m_loop.runUntil(condition, guardLimit); }
  Pid front() const {
    const AppRef app = m_workspace->frontmostApplication();
    return app ? app->processIdentifier() : 0;
  }
  bool becomesFront(const Program& program) {
    return runUntil([&] { return front() == program.pid(); });
  }
  AppRef appOf(const Program& program) {
    AppRef app;
    runUntil([&] { return (app = m_workspace->runningApplication(program.pid())) != nullptr; });
    return app;
  }
  static std::string event(const char* name, const Program& program) {
    return std::string(name) + " " + std::to_string(program.pid());
  }

  static constexpr const char* feedName = "com.halvo.vantle.feed"; // which extensions wait for

  ProcKernel m_kernel;
  PollEventLoop m_loop;
  std::optional<BusConnection> m_bus;
  std::unique_ptr<WindowedWorkspace> m_workspace;
  std::vector<std::unique_ptr<Registration>> m_registrations;
  std::vector<std::string> m_events;
  int m_losses = 0;
};

} // namespace vantle::desktop
