// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/ApplicationCatalog.h"

#include <algorithm>
#include <map>

namespace vantle {

// The apps that somebody says are installed.
class SimulatedCatalog final : public ApplicationCatalog {
 public:
  std::vector<InstalledApplication> applications{
      {"org.mozilla.firefox", "Firefox", "firefox", "/usr/share/applications/firefox.desktop"},
      {"org.gimp.GIMP", "GNU Image Manipulation Program", "gimp", "/usr/share/applications/gimp.desktop"},
      {"org.xfce.mousepad", "Mousepad", "accessories-text-editor",
       "/usr/share/applications/mousepad.desktop"},
      {"galculator", "Galculator", "accessories-calculator", "/usr/share/applications/galculator.desktop"},
      {"com.spotify.client", "Spotify", "multimedia-player", "/usr/share/applications/spotify.desktop"},
      {"com.obsproject.obs-studio", "OBS Studio", "camera-video", "/usr/share/applications/obs.desktop"},
  };
  std::map<std::string, InstalledApplication> elsewhere; // by path
  std::map<std::string, std::string> names;              // of keys, installed or not

  std::vector<InstalledApplication> installedApplications() const override { return applications; }
  Found applicationsForKeys(const std::vector<std::string>& keys) const override {
    Found all;
    for (const std::string& key : keys) {
      const auto found = std::find_if(applications.begin(), applications.end(),
                                      [&](const InstalledApplication& each) { return each.key == key; });
      all.push_back(found == applications.end() ? std::nullopt : std::optional(*found));
    }
    return all;
  }
  std::optional<std::string> knownName(const std::string& key) const override {
    const auto found = names.find(key);
    return found == names.end() ? std::nullopt : std::optional(found->second);
  }
  Found applicationsAt(const std::vector<std::string>& paths) const override {
    Found all;
    for (const std::string& path : paths) {
      const auto found = elsewhere.find(path);
      all.push_back(found == elsewhere.end() ? std::nullopt : std::optional(found->second));
    }
    return all;
  }
};

} // namespace vantle
