// SPDX-License-Identifier: MIT
#import "desktop/darwin/window/NativeWindow.h"

#include <QWindow>

namespace vantle {

// The toolkit documents that the number of a window is its view.
NSWindow* nativeWindow(QWindow& window) {
  NSView* const view = reinterpret_cast<NSView*>(window.winId());
  return [view window];
}

} // namespace vantle
