// SPDX-License-Identifier: MIT
#pragma once

#import <AppKit/AppKit.h>

class QWindow;

namespace vantle {

// The system's window behind one of the toolkit's, which is made if need be; nil when the toolkit has none.
NSWindow* nativeWindow(QWindow& window);

} // namespace vantle
