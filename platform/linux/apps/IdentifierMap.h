// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/apps/AppEvidence.h"
#include "platform/linux/apps/DesktopEntry.h"

#include <optional>
#include <string>
#include <string_view>

namespace vantle {

// The bundle identifier of the app with this desktop file: its id, except for what Vantle's own lists know
// under another name, so that those lists mean the same apps everywhere. Such are the Linux editions of apps
// ("com.spotify.Client" is "com.spotify.client") and the desktop's own file manager, settings and the like
// ("org.gnome.Nautilus" is "com.apple.finder"), which are known by the program that the file starts as well.
std::string bundleIdentifierOf(const DesktopEntry& entry);

// The same for a process, of which the program that runs says more than the desktop file (null: there is
// none; then only an AppImage has one, its file's name).
std::optional<std::string> bundleIdentifierOf(const AppEvidence& evidence, const DesktopEntry* entry);

// What people call an app that Vantle's own lists know by an identifier that tells nothing here
// ("com.apple.Music" is "Music"). Absent for any other.
std::optional<std::string> nameOfIdentifier(std::string_view identifier);

} // namespace vantle
