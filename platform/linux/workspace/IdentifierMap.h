// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace vantle {

// The bundle identifier of the app with this desktop-file id (without ".desktop"): the id itself, except for
// the Linux editions of apps that the built-in lists know under another name ("com.spotify.Client" is
// "com.spotify.client"), so that those lists mean the same apps everywhere.
std::string bundleIdentifierOf(std::string_view desktopId);

} // namespace vantle
