// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/apps/ScriptText.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// What Vantle needs of one desktop file.
struct DesktopEntry {
  std::string id;                     // without ".desktop"; folders below "applications" are joined with '-'
  std::string path;                   // of the desktop file
  std::string name;                   // localized
  std::string words;                  // what else it is called and searched by: GenericName and Keywords
  std::string icon;                   // a themed name or an absolute path; may be empty
  std::string windowClass;            // StartupWMClass; may be empty
  std::string category;               // see categoryOf
  std::string executable;             // absolute path of Exec's program, as PATH finds it; may be empty
  std::string realPath;               // the same with all links followed
  std::vector<std::string> arguments; // Exec's own, without the places for files
  std::vector<std::string> told;      // what follows the shell that Exec has the program from, if one does
  std::string folder;                 // that the program is started in; empty for none in particular
  ScriptsProgram becomes;             // what replaces such a script, if it tells; all links followed
  bool isScript = false;              // the program is a text that something else runs
  bool isHidden = false;              // NoDisplay: not an app of its own in the menus
  bool isStore = false;               // of games, see categoryOf
};

// What the rules call the category of games.
inline constexpr std::string_view gamesCategory = "public.app-category.games";

// The category in the words that the rules know, from a desktop file's Categories. Empty when none fits. A
// store or launcher of games, which declares itself a game too, is none: it outlives every game that it
// starts.
std::string categoryOf(std::string_view categories);
bool isStoreOfGames(std::string_view categories);

// Reads one desktop file; absent when it is not one of an installed app. Nothing but that file is read, and
// the start of the program: GIO's own reader asks for all desktop folders and their caches first, which costs
// half a megabyte and a thread, and never ends when one of them does not answer.
std::optional<DesktopEntry> readDesktopEntry(const std::string& path, const std::string& id);

// The one that an AppImage brings along, at the top of what is in it: it names programs that stand in there.
// Of several the first by name; absent when there is none.
std::optional<DesktopEntry> readImagesEntry(const std::string& folder);

} // namespace vantle
