// SPDX-License-Identifier: MIT
#include "platform/darwin/files/DarwinFolders.h"

#import "platform/darwin/cocoa/Values.h"

namespace vantle {

std::string applicationSupportFolder() {
  @autoreleasepool {
    for (id folder in NSSearchPathForDirectoriesInDomains(NSApplicationSupportDirectory, NSUserDomainMask,
                                                          YES)) {
      const auto path = textOf(folder);
      if (path && path->starts_with('/')) return *path;
    }
    return textOf(NSHomeDirectory()).value_or("") + "/Library/Application Support";
  }
}

} // namespace vantle
