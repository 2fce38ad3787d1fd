// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/FileStore.h"
#include "platform/linux/band/UnitPath.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vantle {

// Which units have, or may still have, a weight that this program gave them, and what they had before. It is
// on disk before a unit is changed, because a service keeps its weight through a restart, when every process
// that could remember it is gone.
//
// The file: {"boot": boot id, "units": [{"name", "path", "weight"}]}. Weights given at run time do not
// outlive a boot, so the ledger of another boot counts as empty, as does one that cannot be read.
class UnitLedger {
 public:
  struct Entry {
    UnitPlace place;
    std::uint64_t weight = 0; // before; the manager's own number for "not set"
    friend bool operator==(const Entry&, const Entry&) = default;
  };

  // The first of the paths that can be written holds it; what any of them held is read. Without one the
  // ledger lives in memory only.
  UnitLedger(FileStore& files, std::vector<std::string> paths, std::string bootId);

  const std::vector<Entry>& entries() const { return m_entries; }
  const Entry* find(const std::string& unit) const;

  // False when it could not be written; then nothing was added. A unit that is there keeps its entry: what it
  // was before is older than what it is now.
  bool add(const std::vector<Entry>& entries);
  // On disk with the next `save` only: a unit that stands there needlessly is looked at once more, and that
  // is all.
  void remove(const std::string& unit);
  bool save();

 private:
  bool write(const std::string& path, const std::vector<Entry>& entries);

  FileStore& m_files;
  std::vector<std::string> m_paths;
  std::set<std::string> m_held; // those of them that hold entries
  std::string m_bootId;
  std::vector<Entry> m_entries;
  bool m_isSaved = true;
};

} // namespace vantle
