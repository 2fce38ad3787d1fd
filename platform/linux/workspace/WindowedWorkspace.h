// SPDX-License-Identifier: MIT
#pragma once

#include "base/Observers.h"
#include "engine/ports/Workspace.h"
#include "platform/linux/apps/DesktopEntries.h"
#include "platform/linux/windows/DesktopWindows.h"
#include "platform/linux/workspace/LinuxApplication.h"
#include "platform/shared/EventLoop.h"

#include <chrono>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

// The apps of a desktop that says which windows it has. An app is a process that owns an ordinary window, or
// owned one and still lives; several windows of one process are one app, unless they say themselves that they
// are not: a browser's window can be a web app's, with a desktop file of its own. Such a process is the app
// whose window was in front last, and of its apps one without windows has ended. What no desktop file is
// known of is looked up again when its first window says something else of itself. A process that has become
// another program is another app from its next window on, or when it comes to the front again: to everybody
// the former one has ended. Processes of the desktop
// itself (panels, docks, …) are accessory apps, and never the front app: what was in front before stays so
// while the person uses them. Without a desktop there are no apps.
class WindowedWorkspace final : public Workspace {
 public:
  struct Options {
    // By their desktop files apps are known; none are installed unless somebody says so.
    std::shared_ptr<DesktopEntries> installed = std::make_shared<DesktopEntries>(std::vector<std::string>{});
    // The desktop went away, on the main loop. Not called when there was none to begin with.
    std::function<void()> onDesktopLost = {};
    FrontRule front = FrontRule::asTold;
    std::chrono::milliseconds longestStart{200}; // that is waited for the apps that run already
  };

  // Those of a slower desktop arrive as launches.
  WindowedWorkspace(EventLoop& loop, std::unique_ptr<DesktopWindows> windows, Options options);
  ~WindowedWorkspace() override;
  WindowedWorkspace(const WindowedWorkspace&) = delete;
  WindowedWorkspace& operator=(const WindowedWorkspace&) = delete;

  std::vector<AppRef> runningApplications() const override;
  AppRef frontmostApplication() const override;
  AppRef runningApplication(Pid pid) const override;
  std::unique_ptr<Registration> observe(WorkspaceEvent event, Handler handler) override;

 private:
  struct App;
  using Apps = std::vector<std::unique_ptr<App>>; // by the start of their processes
  using Event = std::pair<WorkspaceEvent, AppRef>;

  void update();
  void updateFront();
  void becomeFront(const App* app);
  bool isKeptBehind(const App& owner) const;
  void adoptOwner(const WindowFacts& window, bool isSuccessor = false);
  std::unique_ptr<App> makeApp(const WindowFacts& window, bool isSuccessor);
  void followPrograms();
  bool isAnotherApp(App& app, const WindowFacts& window);
  void end(Pid pid);
  AppEvidence evidenceOf(Pid pid) const;
  void dropAppsFrom(AppEvidence& evidence) const;
  AppIdentity identify(const AppEvidence& evidence);
  void identifyLate(App& app, const WindowFacts& window);
  void takeRoleOf(App& app, const WindowFacts& window);
  void endRoles(App& app);
  void endLaunchersAsGames(const App& game);
  App* find(Pid pid) const;
  const WindowFacts* activeWindow() const;
  void announceLaunches(const App* upTo);
  void announce(App& app);
  void ended(Pid pid);
  void startOver();
  void deliver();
  bool requestClose(Pid pid);
  const WindowFacts* windowForFront(Pid pid) const;
  void lost();

  EventLoop& m_loop;
  Options m_options;
  std::map<WorkspaceEvent, Observers<const AppRef&>> m_observers;
  Apps m_apps;
  std::vector<App*> m_unannounced; // launched, but not told yet, in order
  AppRef m_front;
  WindowId m_lastActive = 0;
  std::unique_ptr<EventLoop::Handle> m_gap; // set while nothing is said to be in front, and that may pass
  std::vector<Event> m_events;              // to be told
  bool m_isStarting = true;
  bool m_isDelivering = false;
  std::shared_ptr<const LinuxApplication::Windows> m_appWindows;
  std::unique_ptr<DesktopWindows> m_windows;
};

} // namespace vantle
