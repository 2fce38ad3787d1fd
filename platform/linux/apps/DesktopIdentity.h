// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/apps/AppEvidence.h"
#include "platform/linux/apps/DesktopEntry.h"

#include <optional>
#include <span>
#include <string>

namespace vantle {

// What an app is called and where it comes from, in the words of RunningApplication.
struct AppIdentity {
  std::optional<std::string> bundleIdentifier;
  std::string localizedName;
  std::optional<std::string> bundlePath;
  std::optional<std::string> executablePath;
  std::optional<std::string> bundleCategory;
  std::optional<std::string> iconName;
};

// The desktop file of an app: the surest evidence first, one that merely fits last. Null when none fits.
const DesktopEntry* findEntry(const AppEvidence& evidence, std::span<const DesktopEntry> entries);

// The desktop file of what the window in the evidence shows, where the process is known as `known` already:
// another one when the window declares it ("StartupWMClass"), or when `known` declares a window that is not
// this one and something else fits. Never null unless `known` is.
const DesktopEntry* entryOfWindow(const AppEvidence& evidence, const DesktopEntry* known,
                                  std::span<const DesktopEntry> entries);

// The whole identity; without a desktop file it is what the process itself gives away.
AppIdentity identityOf(const AppEvidence& evidence, const DesktopEntry* entry);

} // namespace vantle
