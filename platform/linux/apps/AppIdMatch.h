// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/apps/AppEvidence.h"
#include "platform/linux/apps/DesktopEntry.h"

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// Which processes a window may belong to of which only the app id is known: the way back from an app id.
class AppIdMatch {
 public:
  // The entries outlive it.
  AppIdMatch(std::string_view applicationId, std::span<const DesktopEntry> entries);

  // Whether the process goes by that id: by its sandbox, by its program's name, by the desktop file that it
  // is known by without its windows (`entry`, null for none; see `findEntry`), or by one of that id that
  // starts its program. Nothing fits an empty id.
  bool fits(const AppEvidence& process, const DesktopEntry* entry) const;

 private:
  bool isNameOf(const DesktopEntry& entry) const;

  std::string m_id;                         // in small letters, as all comparisons are made
  std::string m_lastPart;                   // "org.example.Editor" ends with "editor"
  std::vector<const DesktopEntry*> m_named; // the entries that are called so, or declare it for their windows
};

} // namespace vantle
