// SPDX-License-Identifier: MIT
#include "platform/linux/apps/IdentifierMap.h"

#include "base/Text.h"
#include "platform/linux/apps/OneLineName.h"
#include "platform/linux/programs/DesktopPrograms.h"

#include <algorithm>
#include <array>
#include <initializer_list>
#include <string_view>
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

using KnownName = std::pair<std::string_view, std::string_view>;
constexpr std::array knownNames{
    KnownName{"com.spotify.client", "Spotify"},
    KnownName{"com.apple.Music", "Music"},
    KnownName{"com.hnc.Discord", "Discord"},
    KnownName{"com.obsproject.obs-studio", "OBS Studio"},
    KnownName{"com.codeweavers.CrossOver", "CrossOver"},
    KnownName{"com.mojang.minecraftlauncher", "Minecraft Launcher"},
};

std::string editionOf(std::string_view desktopId) {
  const auto* const found = std::find_if(editions.begin(), editions.end(),
                                         [&](const Edition& edition) { return edition.first == desktopId; });
  return std::string(found == editions.end() ? desktopId : found->second);
}

std::optional<std::string_view> systemIdentifierOfAny(std::initializer_list<std::string_view> paths) {
  for (const std::string_view path : paths) {
    const auto identifier = systemIdentifierOfProgram(fileNameOf(path));
    if (identifier) return identifier;
  }
  return {};
}

// An app that is one file, mounted while it runs, goes by that file's name.
std::optional<std::string> identifierOfImage(const AppEvidence& evidence) {
  if (evidence.executable.find("/.mount_") == std::string::npos || evidence.program.empty()) return {};
  constexpr std::string_view ending = ".appimage";
  std::string name = fileNameOf(evidence.program);
  if (asciiLowered(name).ends_with(ending)) name.resize(name.size() - ending.size());
  name = oneLineName(name);
  return name.empty() ? std::nullopt : std::optional(name);
}

} // namespace

std::string bundleIdentifierOf(const DesktopEntry& entry) {
  if (const auto identifier = systemIdentifierOfDesktopId(entry.id)) return std::string(*identifier);
  if (const auto identifier = systemIdentifierOfAny({entry.executable, entry.realPath}))
    return std::string(*identifier);
  return editionOf(entry.id);
}

std::optional<std::string> bundleIdentifierOf(const AppEvidence& evidence, const DesktopEntry* entry) {
  if (const auto identifier = systemIdentifierOfAny({evidence.program, evidence.executable}))
    return std::string(*identifier);
  return entry == nullptr ? identifierOfImage(evidence) : bundleIdentifierOf(*entry);
}

std::optional<std::string> nameOfIdentifier(std::string_view identifier) {
  const auto* const found = std::find_if(knownNames.begin(), knownNames.end(),
                                         [&](const KnownName& known) { return known.first == identifier; });
  return found == knownNames.end() ? std::nullopt : std::optional(std::string(found->second));
}

} // namespace vantle
