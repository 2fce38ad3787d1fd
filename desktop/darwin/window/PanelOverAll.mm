// SPDX-License-Identifier: MIT
#import "desktop/darwin/window/PanelOverAll.h"

#include "desktop/PressElsewhere.h"
#import "desktop/darwin/window/NativeWindow.h"

#include <QScreen>
#include <chrono>

namespace vantle {

namespace {

// A window of one space only would take the person there, out of the full-screen app that they are in. And
// the toolkit makes such a window one that is off the screen while another app is active: the system may be
// late to let this one be, or not let it at all. The panel closes by itself when it loses the keyboard.
void putOverAll(QWindow& window) {
  NSWindow* const native = nativeWindow(window);
  [native setLevel:NSStatusWindowLevel];
  [native setCollectionBehavior:NSWindowCollectionBehaviorCanJoinAllSpaces |
                                NSWindowCollectionBehaviorFullScreenAuxiliary];
  [native setHidesOnDeactivate:NO];
}

} // namespace

PanelOverAll::~PanelOverAll() { endWatch(); }

QSize PanelOverAll::roomOn(QScreen& screen) { return screen.availableSize(); }

void PanelOverAll::place(QWindow& window, QScreen& screen, const QRect& /*anchor*/, const QRect& place) {
  window.setScreen(&screen);
  window.setGeometry(place);
}

// The toolkit has a level and a behaviour of its own for such a window, and nobody says whether it sets them
// when the window is made or when it is shown.
void PanelOverAll::show(QWindow& window) {
  @autoreleasepool {
    if (!window.isVisible()) {
      putOverAll(window);
      window.show();
      putOverAll(window);
      m_window = &window;
      watchPresses();
    }
    window.raise();
    window.requestActivate();
  }
}

void PanelOverAll::hide(QWindow& window) {
  endWatch();
  m_window.clear();
  window.hide();
}

// A click in the menu bar brings no app to the front. Only what goes to others is told of; the panel's own
// clicks and those on its icon are not.
void PanelOverAll::watchPresses() {
  endWatch();
  const NSEventMask presses =
      NSEventMaskLeftMouseDown | NSEventMaskRightMouseDown | NSEventMaskOtherMouseDown;
  @autoreleasepool {
    // Later: the watch may not end within its own call.
    id const monitor =
        [NSEvent addGlobalMonitorForEventsMatchingMask:presses
                                               handler:^(NSEvent*) {
                                                 m_later = m_loop.after(std::chrono::milliseconds(0),
                                                                        [this] { tellOfPressElsewhere(); });
                                               }];
    m_monitor = Retained<NSObject>(monitor);
  }
}

void PanelOverAll::endWatch() {
  m_later.reset();
  if (m_monitor.get() == nil) return;
  @autoreleasepool {
    [NSEvent removeMonitor:m_monitor.get()];
    m_monitor = {};
  }
}

void PanelOverAll::tellOfPressElsewhere() {
  if (m_window) vantle::tellOfPressElsewhere(*m_window);
}

} // namespace vantle
