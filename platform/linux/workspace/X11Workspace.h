// SPDX-License-Identifier: MIT
#pragma once

#include "base/Observers.h"
#include "engine/ports/Workspace.h"
#include "platform/linux/workspace/DesktopEntries.h"
#include "platform/linux/workspace/LinuxApplication.h"
#include "platform/linux/workspace/X11Windows.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// The apps of an X11 desktop. An app is a process that owns an ordinary window which the window manager
// manages, or owned one and still lives; several windows of one process are one app. Processes of the desktop
// itself (panels, docks, …) are accessory apps, and never the front app: what was in front before stays so
// while the person uses them. Without an X server there are no apps.
class X11Workspace final : public Workspace {
 public:
  struct Options {
    std::string display = {}; // empty: the one in DISPLAY
    // By their desktop files apps are known; none are installed unless somebody says so.
    std::shared_ptr<DesktopEntries> installed = std::make_shared<DesktopEntries>(std::vector<std::string>{});
    // The X server went away, on the main loop. Not called when there was none to begin with.
    std::function<void()> onConnectionLost = {};
  };

  // Waits for the apps that run already, at most 200 ms; those of a slower server arrive as launches.
  X11Workspace(EventLoop& loop, Options options);
  ~X11Workspace() override;
  X11Workspace(const X11Workspace&) = delete;
  X11Workspace& operator=(const X11Workspace&) = delete;

  std::vector<AppRef> runningApplications() const override;
  AppRef frontmostApplication() const override;
  AppRef runningApplication(Pid pid) const override;
  std::unique_ptr<Registration> observe(WorkspaceEvent event, Handler handler) override;

 private:
  struct App;
  using Apps = std::vector<std::unique_ptr<App>>; // by the start of their processes
  using Event = std::pair<WorkspaceEvent, AppRef>;

  void update();
  void adoptOwner(const WindowFacts& window);
  std::unique_ptr<App> makeApp(const WindowFacts& window);
  AppIdentity identify(const AppEvidence& evidence);
  App* find(Pid pid) const;
  App* ownerOfActive() const;
  void announceLaunches(const App* upTo);
  void announce(App& app);
  void ended(Pid pid);
  void deliver();
  bool requestClose(Pid pid);
  void lost();

  EventLoop& m_loop;
  Options m_options;
  std::map<WorkspaceEvent, Observers<const AppRef&>> m_observers;
  Apps m_apps;
  std::vector<App*> m_unannounced; // launched, but not told yet, in order
  AppRef m_front;
  std::vector<Event> m_events; // to be told
  bool m_isStarting = true;
  bool m_isDelivering = false;
  std::shared_ptr<const LinuxApplication::Windows> m_appWindows;
  std::unique_ptr<X11Windows> m_windows;
};

} // namespace vantle
