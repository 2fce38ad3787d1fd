// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/FileStore.h"
#include "platform/linux/band/BandRecord.h"

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace vantle {

// What the processes themselves cannot be trusted to remember, on disk before it is changed:
//
// - Units that have, or may still have, a weight that this program gave them, and what they had before: a
//   service keeps its weight through a restart, when every process that could remember it is gone.
// - Sessions whose weight this program lowers, until it is back: a process that chooses an I/O class puts it
//   over the mark.
// - All sets of processors that threads were ever narrowed to: processors come and go, and a thread keeps the
//   set that it got.
//
// The ledger of another boot counts as empty, as does one that cannot be read.
class BandLedger {
 public:
  using Unit = BandRecord::Unit;

  // The first of the paths that can be written holds it; what any of them held is read. Without one the
  // ledger lives in memory only.
  BandLedger(FileStore& files, std::vector<std::string> paths, std::string bootId);

  const std::vector<Unit>& units() const { return m_content.units; }
  const Unit* find(const std::string& unit) const;
  // False when it could not be written; then nothing was added. A unit that is there keeps its entry: what it
  // was before is older than what it is now.
  bool add(const std::vector<Unit>& units);
  // On disk with the next `save` only: what stands there needlessly is looked at once more, and that is all.
  void remove(const std::string& unit);

  // By the number of their automatic group, which the kernel gives to no other session. On disk with the next
  // `save`; meanwhile, and where nothing can be written, only the marks remember them.
  const std::set<std::int64_t>& sessions() const { return m_content.sessions; }
  void addSession(std::int64_t autogroup);
  void removeSession(std::int64_t autogroup);

  const std::vector<ProcessorSet>& sets() const { return m_content.sets; }
  bool addSet(const ProcessorSet& set); // false when it could not be written; then it was not added

  bool save();

 private:
  void take(BandRecord read);
  bool write(const std::string& path, const BandRecord& content);

  FileStore& m_files;
  std::vector<std::string> m_paths;
  std::set<std::string> m_held; // those of them that hold something
  std::string m_bootId;
  BandRecord m_content;
  bool m_isSaved = true;
};

} // namespace vantle
