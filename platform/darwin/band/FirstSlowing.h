// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/FileStore.h"
#include "platform/darwin/band/BandMemory.h"

#include <cstdint>
#include <optional>
#include <span>

namespace vantle {

// When this program began to slow anybody, and who lived by then though its time says otherwise, as the clock
// may have been set: in a file beside the journal, for the start after one that was killed. Who was born
// slowed is in no journal. As text:
//
//   {"boot": "the boot's own name", "since": microseconds, "older": [{"pid", "startSec", "startUsec"}]}
//
// All file errors are silent: a death then leaves slowed who was born so.
class FirstSlowing {
 public:
  explicit FirstSlowing(FileStore* files) : m_files(files) {} // null: nothing is kept

  void note(std::uint64_t since, std::span<const ProcessIdentity> older);
  void forget();
  // Absent when nothing was noted, or before another boot: nobody who was slowed then lives.
  std::optional<BandMemory> memory();

 private:
  std::string path() const;

  FileStore* m_files;
  bool m_isNoted = false; // as far as is known
};

} // namespace vantle
