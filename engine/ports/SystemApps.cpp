// SPDX-License-Identifier: MIT
#include "engine/ports/SystemApps.h"

namespace vantle {

const std::set<std::string>& systemBundleIDs() {
  static const std::set<std::string> identifiers{"com.apple.finder",
                                                 "com.apple.dock",
                                                 "com.apple.systemuiserver",
                                                 "com.apple.controlcenter",
                                                 "com.apple.notificationcenterui",
                                                 "com.apple.ActivityMonitor",
                                                 "com.apple.loginwindow"};
  return identifiers;
}

bool isSystemApp(const std::optional<std::string>& bundleID) {
  return bundleID && systemBundleIDs().contains(*bundleID);
}

} // namespace vantle
