// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/apps/DesktopEntry.h"
#include "platform/posix/process/BoundedWait.h"

#include <atomic>
#include <memory>
#include <string>
#include <vector>

namespace vantle {

// The installed apps: the desktop files of all XDG data folders, read when they are first asked for and again
// when a folder has changed since. An id in an earlier folder hides the same id in later ones.
//
// Any of these files, and the programs that they name, can lie where nobody answers. So another thread reads
// them: what does not answer is left out until it does, and once something is known nobody waits for news
// longer than 100 ms. Hundreds of files would take about as long, so only those are read again that have
// changed, or whose program has: who installs a game starts it next.
class DesktopEntries {
 public:
  // The folders that hold "applications", most important first.
  explicit DesktopEntries(std::vector<std::string> dataFolders);
  ~DesktopEntries();
  DesktopEntries(const DesktopEntries&) = delete;
  DesktopEntries& operator=(const DesktopEntries&) = delete;

  const std::vector<DesktopEntry>& all();

 private:
  struct Reading;
  struct Table;

  void takeOver();

  std::vector<std::string> m_dataFolders;
  std::shared_ptr<const Table> m_table;   // never null
  std::shared_ptr<const Reading> m_known; // the last one that was taken over
  std::shared_ptr<Reading> m_inProgress;  // null when there is none to be taken over
  std::shared_ptr<std::atomic<bool>> m_isRead;
  BoundedWait m_wait{2};
};

} // namespace vantle
