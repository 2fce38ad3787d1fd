// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/UnitPath.h"
#include "platform/linux/kernel/ProcessorSet.h"

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// What the band's ledger holds. As text:
//
//   {"boot": boot id, "units": [{"name", "path", "weight"}], "sessions": [number], "sets": [list]}
//
// None of it outlives a boot.
struct BandRecord {
  struct Unit {
    UnitPlace place;
    std::uint64_t weight = 0; // before; the manager's own number for "not set"
    friend bool operator==(const Unit&, const Unit&) = default;
  };

  std::vector<Unit> units;
  std::set<std::int64_t> sessions; // the numbers of their automatic groups
  std::vector<ProcessorSet> sets;

  bool empty() const { return units.empty() && sessions.empty() && sets.empty(); }
  friend bool operator==(const BandRecord&, const BandRecord&) = default;
};

// Empty when the bytes are no such record, or the record of another boot. Of a record that holds something
// else as well the rest is read: each entry is a process that would stay slow.
BandRecord decodeBandRecord(std::string_view bytes, const std::string& bootId);
// A unit's name is whatever its owner chose; what is no text in it is cleaned.
std::string encodeBandRecord(const BandRecord& record, const std::string& bootId);

} // namespace vantle
