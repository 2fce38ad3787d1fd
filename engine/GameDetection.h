// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "engine/DeclaredGames.h"
#include "engine/Profile.h"
#include "engine/ports/ProcessTable.h"
#include "engine/ports/UnicodeText.h"

#include <optional>
#include <string>

namespace vantle {

// What the app lists of the settings call a running app: its bundle identifier, or its name when it has none.
std::optional<std::string> appListKey(const RunningApplication& app);

// Tells whether an app is a Boost app: one of the person's own, or a game by the rules that are switched on.
// Reads the switches at every call and remembers nothing. What cannot be read counts as a miss for its rule.
class GameDetection {
 public:
  GameDetection(const AppSettings& settings, const ProcessTable& processes, const UnicodeText& text,
                const DeclaredGames& declared)
      : m_settings(settings), m_processes(processes), m_text(text), m_declared(declared) {}

  bool isGame(const RunningApplication& app) const;
  // Looks at the whole chain of parents: the game is a Java process that its launcher started.
  bool isMinecraftProcess(const RunningApplication& app) const;
  static bool hasGamesCategory(const RunningApplication& app);

 private:
  const AppSettings& m_settings;
  const ProcessTable& m_processes;
  const UnicodeText& m_text;
  const DeclaredGames& m_declared;
};

// The one profile, named "Gaming".
Profile gamingProfile(const AppSettings& settings, const ProcessTable& processes, const UnicodeText& text,
                      const DeclaredGames& declared);

} // namespace vantle
