// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/apps/AppEvidence.h"
#include "platform/linux/apps/DesktopEntry.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

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

// One way to tell which desktop file an app's is. None of them reads anything: all is in the evidence.
struct IdentityRule {
  std::string_view name;   // of the evidence that it goes by
  std::string_view reason; // why that says something
  const DesktopEntry* (*find)(std::span<const DesktopEntry> entries, const AppEvidence& evidence);
};
std::span<const IdentityRule> identityRules(); // in their order: the first that finds one decides

struct IdentityMatch {
  const DesktopEntry* entry = nullptr; // null when no rule finds one
  // Of an engine that plays a game's data it is the one for that, which has no place in the order: it goes by
  // what the engine was found as.
  const IdentityRule* rule = nullptr;
};
IdentityMatch matchEntry(const AppEvidence& evidence, std::span<const DesktopEntry> entries);

// The desktop file of an app, by these rules.
const DesktopEntry* findEntry(const AppEvidence& evidence, std::span<const DesktopEntry> entries);

// The desktop file of what the window in the evidence shows, where the process is known as `known` already:
// another one when the window declares it ("StartupWMClass"), or when `known` declares a window that is not
// this one and something else fits. Never null unless `known` is.
const DesktopEntry* entryOfWindow(const AppEvidence& evidence, const DesktopEntry* known,
                                  std::span<const DesktopEntry> entries);

// The whole identity; without a desktop file it is what the process itself gives away.
AppIdentity identityOf(const AppEvidence& evidence, const DesktopEntry* entry);

} // namespace vantle
