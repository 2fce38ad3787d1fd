// SPDX-License-Identifier: MIT
#include "platform/darwin/workspace/WindowServer.h"

#import "platform/darwin/cocoa/CoreFoundation.h"

#include <CoreGraphics/CoreGraphics.h>

namespace vantle {

bool hasWindowServer() { return copied(::CGSessionCopyCurrentDictionary()).get() != nil; }

} // namespace vantle
