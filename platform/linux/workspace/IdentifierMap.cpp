// SPDX-License-Identifier: MIT
#include "platform/linux/workspace/IdentifierMap.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vantle {

namespace {

// Desktop-file ids as the apps' own packages, Flathub and the Snap store ship them. The Snap ids are
// SNAP_APP.
using Edition = std::pair<std::string_view, std::string_view>;
constexpr std::array editions{
    Edition{"spotify", "com.spotify.client"},
    Edition{"com.spotify.Client", "com.spotify.client"},
    Edition{"spotify_spotify", "com.spotify.client"},
    Edition{"discord", "com.hnc.Discord"},
    Edition{"com.discordapp.Discord", "com.hnc.Discord"},
    Edition{"discord_discord", "com.hnc.Discord"},
    Edition{"com.obsproject.Studio", "com.obsproject.obs-studio"},
    Edition{"obs", "com.obsproject.obs-studio"},
    Edition{"obs-studio", "com.obsproject.obs-studio"},
    Edition{"obs-studio_obs-studio", "com.obsproject.obs-studio"},
    Edition{"minecraft-launcher", "com.mojang.minecraftlauncher"},
    Edition{"com.mojang.Minecraft", "com.mojang.minecraftlauncher"},
    Edition{"crossover", "com.codeweavers.CrossOver"},
    Edition{"CrossOver", "com.codeweavers.CrossOver"},
    Edition{"com.codeweavers.crossover", "com.codeweavers.CrossOver"},
};

} // namespace

std::string bundleIdentifierOf(std::string_view desktopId) {
  const auto* const found = std::find_if(editions.begin(), editions.end(),
                                         [&](const Edition& edition) { return edition.first == desktopId; });
  return std::string(found == editions.end() ? desktopId : found->second);
}

} // namespace vantle
