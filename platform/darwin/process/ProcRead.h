// SPDX-License-Identifier: MIT
#pragma once

#include "base/Pid.h"

#include <libproc.h>
#include <optional>

namespace vantle {

// One record of a process. Any other length than the whole record's is a failure: the process is gone, is not
// this user's to read, or the system has another record than this program was built for.
template <class Record, int flavor> std::optional<Record> procRead(Pid pid) {
  constexpr int size = sizeof(Record);
  Record record{};
  if (::proc_pidinfo(pid, flavor, 0, &record, size) != size) return std::nullopt;
  return record;
}

} // namespace vantle
