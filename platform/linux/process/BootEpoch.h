// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/FileStore.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vantle {

// The moment of boot in microseconds since the Unix epoch, as it was first taken in this boot. The kernel
// counts start times from boot; added to this fixed number they name a process for as long as the machine
// runs, however often the wall clock is set. Another boot gets another number, so its records never match.
class BootEpoch {
 public:
  // Takes the number that the first of the paths keeps for this boot, or takes a new one and keeps it at the
  // first path that can be written. What is no record of this boot (corrupt, foreign, older) is replaced.
  // When no path can be written, or the boot has no name (Kernel::bootId), the number holds for this run
  // only.
  static BootEpoch load(FileStore& files, const std::vector<std::string>& paths, const std::string& bootId);

  explicit BootEpoch(std::uint64_t micros) : m_micros(micros) {}
  std::uint64_t micros() const { return m_micros; }

 private:
  std::uint64_t m_micros;
};

} // namespace vantle
