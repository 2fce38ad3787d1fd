// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/BackgroundBand.h"
#include "engine/ports/FileStore.h"
#include "engine/ports/ProcessIdentity.h"
#include "engine/ports/ProcessTable.h"

#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace vantle {

// Which processes are, or may still be, in the background band because of this program. It is written before
// a process is changed and cleared after it was put back, so a crash at any moment leaves at worst the names
// of processes that are normal already. The file is a JSON array of {"pid", "startSec", "startUsec"}.
//
// All file errors are silent: the journal then lives in memory, and the next save writes the whole set again.
class Journal {
 public:
  // Loads what an earlier run left, and once the journal of the former edition, whose folder is then deleted.
  explicit Journal(FileStore& files);

  const std::string& url() const { return m_url; }
  const std::unordered_set<ProcessIdentity>& entries() const { return m_entries; }

  void add(const std::vector<ProcessIdentity>& identities);    // an empty list writes nothing
  void remove(const std::vector<ProcessIdentity>& identities); // an empty list writes nothing

  // Puts back every recorded process that is still the same live process, then forgets them all.
  void restoreAllAndClear(const ProcessTable& processes, BackgroundBand& band);

 private:
  void save();

  FileStore& m_files;
  std::string m_url;
  std::unordered_set<ProcessIdentity> m_entries;
};

// Absent when the bytes are not exactly an array of identities, whatever else they are.
std::optional<std::unordered_set<ProcessIdentity>> decodeJournal(const std::string& bytes);

} // namespace vantle
