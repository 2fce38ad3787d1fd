// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/apps/AppEvidence.h"
#include "platform/linux/apps/DesktopEntry.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vantle {

// One way to tell which desktop file an app's is. None of them reads anything: all is in the evidence.
struct IdentityRule {
  std::string_view name;   // of the evidence that it goes by
  std::string_view reason; // why that says something
  const DesktopEntry* (*find)(std::span<const DesktopEntry> entries, const AppEvidence& evidence);
  bool isWindowsWord = false; // a window may say by it that it is no part of what its process is known as
};
std::span<const IdentityRule> identityRules(); // in their order: the first that finds one decides

// Those without a place in the order.
inline constexpr IdentityRule enginesDataRule{
    "engine's data", "the engine plays the data that the game's script starts it with", nullptr};
inline constexpr IdentityRule uninstalledFileRule{
    "file outside the menus", "it was started from a desktop file that is installed nowhere", nullptr};
inline constexpr IdentityRule imagesFileRule{
    "image's own file", "the image brings a desktop file along, and nobody has installed one", nullptr};
inline constexpr IdentityRule ownNameRule{"own name", "no desktop file fits", nullptr};

// What an app is called and where it comes from, in the words of RunningApplication.
struct AppIdentity {
  std::optional<std::string> bundleIdentifier;
  std::string localizedName;
  std::optional<std::string> bundlePath;
  std::optional<std::string> executablePath;
  std::optional<std::string> bundleCategory;
  std::optional<std::string> iconName;
  const IdentityRule* rule = &ownNameRule; // that decided so
};

struct IdentityMatch {
  const DesktopEntry* entry = nullptr; // null when no rule finds one
  const IdentityRule* rule = &ownNameRule;
};
IdentityMatch matchEntry(const AppEvidence& evidence, std::span<const DesktopEntry> entries);

// The desktop file of an app, by these rules.
const DesktopEntry* findEntry(const AppEvidence& evidence, std::span<const DesktopEntry> entries);

// What the window in the evidence shows, where the process is known as `known` already: another desktop file
// when the window declares it ("StartupWMClass"), when `known` declares a window that is not this one and
// something else fits, or when nothing is known of the process and something fits the window. Otherwise
// `known` itself.
IdentityMatch matchWindow(const AppEvidence& evidence, const IdentityMatch& known,
                          std::span<const DesktopEntry> entries);

// The whole identity; without a desktop file it is what the process itself gives away.
AppIdentity identityOf(const AppEvidence& evidence, const IdentityMatch& match);

} // namespace vantle
