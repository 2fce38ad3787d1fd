// SPDX-License-Identifier: MIT
#include "platform/darwin/workspace/CocoaWorkspace.h"

#include "base/Observers.h"
#import "platform/darwin/cocoa/Retained.h"
#include "platform/darwin/process/DispatchSource.h"
#import "platform/darwin/workspace/CocoaApplication.h"

#import <AppKit/AppKit.h>
#include <algorithm>
#include <cstdint>
#include <utility>

// What the system's centre calls; it passes everything on.
@interface VantleWorkspaceListener : NSObject {
 @public
  void* session;
  void (*hear)(void* session, vantle::WorkspaceEvent event, NSRunningApplication* app);
}
- (void)activated:(NSNotification*)notification;
- (void)launched:(NSNotification*)notification;
- (void)terminated:(NSNotification*)notification;
@end

@implementation VantleWorkspaceListener
- (void)pass:(NSNotification*)notification as:(vantle::WorkspaceEvent)event {
  id app = [[notification userInfo] objectForKey:NSWorkspaceApplicationKey];
  if ([app isKindOfClass:[NSRunningApplication class]]) hear(session, event, app);
}
- (void)activated:(NSNotification*)notification {
  [self pass:notification as:vantle::WorkspaceEvent::activated];
}
- (void)launched:(NSNotification*)notification {
  [self pass:notification as:vantle::WorkspaceEvent::launched];
}
- (void)terminated:(NSNotification*)notification {
  [self pass:notification as:vantle::WorkspaceEvent::terminated];
}
@end

namespace vantle {

class CocoaWorkspace::Session {
 public:
  Session() : m_listener(Retained<VantleWorkspaceListener>::taking([[VantleWorkspaceListener alloc] init])) {
    VantleWorkspaceListener* const listener = m_listener.get();
    listener->session = this;
    listener->hear = [](void* session, WorkspaceEvent event, NSRunningApplication* app) {
      static_cast<Session*>(session)->hear(event, app);
    };
    @autoreleasepool {
      NSNotificationCenter* const centre = [[NSWorkspace sharedWorkspace] notificationCenter];
      const auto listen = [&](SEL selector, NSString* name) {
        [centre addObserver:listener selector:selector name:name object:nil];
      };
      listen(@selector(activated:), NSWorkspaceDidActivateApplicationNotification);
      listen(@selector(launched:), NSWorkspaceDidLaunchApplicationNotification);
      listen(@selector(terminated:), NSWorkspaceDidTerminateApplicationNotification);
    }
  }
  ~Session() {
    @autoreleasepool {
      [[[NSWorkspace sharedWorkspace] notificationCenter] removeObserver:m_listener.get()];
    }
  }
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  std::vector<AppRef> running() {
    @autoreleasepool {
      std::vector<AppRef> apps;
      std::vector<const CocoaApplication*> listed;
      for (NSRunningApplication* app in [[NSWorkspace sharedWorkspace] runningApplications]) {
        const auto known = know(app);
        if (!known) continue;
        listed.push_back(known.get());
        if (!known->hasEnded()) apps.push_back(known);
      }
      // Of one that ended no more is told once it is on the list no longer.
      std::erase_if(m_known, [&](const Known& known) {
        return known.app->hasEnded() &&
               std::find(listed.begin(), listed.end(), known.app.get()) == listed.end();
      });
      return apps;
    }
  }

  AppRef living(NSRunningApplication* app) {
    const auto known = know(app);
    return known && !known->hasEnded() ? known : nullptr;
  }

  Observers<const AppRef&>& observers(WorkspaceEvent event) {
    switch (event) {
    case WorkspaceEvent::activated:
      return m_activated;
    case WorkspaceEvent::launched:
      return m_launched;
    case WorkspaceEvent::terminated:
      break;
    }
    return m_terminated;
  }

 private:
  struct Known {
    std::shared_ptr<CocoaApplication> app;
    std::unique_ptr<DispatchSource> end; // of its process; null when the system does not tell
  };

  std::shared_ptr<CocoaApplication> know(NSRunningApplication* app) {
    if (app == nil) return nullptr;
    for (const Known& known : m_known) {
      if (known.app->standsFor(app)) return known.app;
    }
    const Pid pid = [app processIdentifier];
    if (pid < firstAppPid || [app isTerminated]) return nullptr;
    auto made = std::make_shared<CocoaApplication>(app);
    auto end = DispatchSource::create(
        DISPATCH_SOURCE_TYPE_PROC, static_cast<std::uintptr_t>(pid), DISPATCH_PROC_EXIT,
        [this, which = std::weak_ptr(made)](std::uintptr_t /*events*/) { ended(which.lock()); });
    m_known.push_back({made, std::move(end)});
    return made;
  }

  void hear(WorkspaceEvent event, NSRunningApplication* app) {
    const auto known = know(app);
    if (!known) return;
    if (event == WorkspaceEvent::terminated) {
      ended(known);
      std::erase_if(m_known, [&](const Known& one) { return one.app == known; });
    } else if (!known->hasEnded()) {
      observers(event).notify(known);
    }
  }

  void ended(const std::shared_ptr<CocoaApplication>& app) {
    if (!app || app->hasEnded()) return;
    app->markEnded();
    m_terminated.notify(app);
  }

  Retained<VantleWorkspaceListener> m_listener;
  std::vector<Known> m_known;
  Observers<const AppRef&> m_activated;
  Observers<const AppRef&> m_launched;
  Observers<const AppRef&> m_terminated;
};

CocoaWorkspace::CocoaWorkspace() : m_session(std::make_unique<Session>()) {}
CocoaWorkspace::~CocoaWorkspace() = default;

std::vector<AppRef> CocoaWorkspace::runningApplications() const { return m_session->running(); }

AppRef CocoaWorkspace::frontmostApplication() const {
  @autoreleasepool {
    return m_session->living([[NSWorkspace sharedWorkspace] frontmostApplication]);
  }
}

AppRef CocoaWorkspace::runningApplication(Pid pid) const {
  @autoreleasepool {
    return m_session->living([NSRunningApplication runningApplicationWithProcessIdentifier:pid]);
  }
}

std::unique_ptr<Registration> CocoaWorkspace::observe(WorkspaceEvent event, Handler handler) {
  return m_session->observers(event).add(std::move(handler));
}

} // namespace vantle
