// SPDX-License-Identifier: MIT
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace vantle {

// The person's folders by the XDG Base Directory rules: absolute paths without a trailing slash. None of them
// need exist.
struct XdgFolders {
  std::string home;
  std::string data;                   // XDG_DATA_HOME, or ~/.local/share
  std::string config;                 // XDG_CONFIG_HOME, or ~/.config
  std::string state;                  // XDG_STATE_HOME, or ~/.local/state
  std::string cache;                  // XDG_CACHE_HOME, or ~/.cache
  std::optional<std::string> runtime; // XDG_RUNTIME_DIR, or /run/user/UID; only when it is this user's own

  using Environment = std::function<const char*(const char* name)>;
  static XdgFolders fromEnvironment();
  static XdgFolders from(const Environment& environment);
};

} // namespace vantle
