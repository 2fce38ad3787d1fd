// SPDX-License-Identifier: MIT
#include "platform/darwin/cocoa/OwnBundle.h"

#import "platform/darwin/cocoa/Values.h"

namespace vantle {

std::optional<std::string> ownBundleIdentifier() {
  @autoreleasepool {
    return textOf([[NSBundle mainBundle] bundleIdentifier]);
  }
}

} // namespace vantle
