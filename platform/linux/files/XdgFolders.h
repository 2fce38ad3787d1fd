// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace vantle {

// The person's folders by the XDG Base Directory rules: absolute paths without a trailing slash. None of them
// need exist.
struct XdgFolders {
  std::string home;
  std::string data;                   // XDG_DATA_HOME, or ~/.local/share
  std::string config;                 // XDG_CONFIG_HOME, or ~/.config
  std::optional<std::string> runtime; // XDG_RUNTIME_DIR, or /run/user/UID; only when it is this user's own
  // Where everybody's are, the most important first.
  std::vector<std::string> systemData;   // XDG_DATA_DIRS
  std::vector<std::string> systemConfig; // XDG_CONFIG_DIRS

  std::vector<std::string> allData() const; // the person's own first

  using Environment = std::function<const char*(const char* name)>;
  static XdgFolders fromEnvironment();
  static XdgFolders from(const Environment& environment);
};

} // namespace vantle
