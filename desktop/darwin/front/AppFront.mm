// SPDX-License-Identifier: MIT
#import "desktop/darwin/front/AppFront.h"

#import <AppKit/AppKit.h>
#include <QEvent>
#include <QGuiApplication>
#include <QWindow>
#include <algorithm>
#include <chrono>

namespace vantle {

AppFront::AppFront(EventLoop& loop) : m_loop(loop) { qApp->installEventFilter(this); }

// Later: the panel is closed before the settings that it opens are there.
bool AppFront::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Hide && watched->isWindowType()) {
    m_later = m_loop.after(std::chrono::milliseconds(0), giveBack);
  }
  return QObject::eventFilter(watched, event);
}

void AppFront::take() {
  @autoreleasepool {
    NSApplication* const app = [NSApplication sharedApplication];
    if ([app isHidden]) [app unhideWithoutActivation];
    [app activateIgnoringOtherApps:YES];
  }
}

void AppFront::giveBack() {
  const auto windows = QGuiApplication::topLevelWindows();
  const bool anyIsShown =
      std::any_of(windows.begin(), windows.end(), [](const QWindow* window) { return window->isVisible(); });
  if (anyIsShown) return;
  @autoreleasepool {
    NSApplication* const app = [NSApplication sharedApplication];
    if ([app isActive]) [app hide:nil];
  }
}

} // namespace vantle
