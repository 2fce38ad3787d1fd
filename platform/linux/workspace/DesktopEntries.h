// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/workspace/DesktopEntry.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

namespace vantle {

// The installed apps: the desktop files of all XDG data folders, read when they are first asked for and again
// when a folder has changed since. An id in an earlier folder hides the same id in later ones.
class DesktopEntries {
 public:
  // The folders that hold "applications", most important first.
  explicit DesktopEntries(std::vector<std::string> dataFolders) : m_dataFolders(std::move(dataFolders)) {}
  static std::vector<std::string> dataFoldersFromEnvironment();

  const std::vector<DesktopEntry>& all();
  const DesktopEntry* find(const std::string& id); // null when there is none

 private:
  using Stamps = std::map<std::string, std::int64_t>; // when each folder last changed, in nanoseconds

  bool isCurrent() const;
  void read();
  void readFolder(const std::string& folder, const std::string& prefix, int depth);

  std::vector<std::string> m_dataFolders;
  std::vector<DesktopEntry> m_entries;
  Stamps m_stamps;
};

} // namespace vantle
