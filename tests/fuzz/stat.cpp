// SPDX-License-Identifier: MIT
// Any bytes as /proc/PID/stat, and any bytes as a process name in it.
#include "platform/linux/process/ProcStat.h"
#include "tests/fuzz/Target.h"

using namespace vantle;

namespace {

std::string lineOf(const std::string& name, const ProcStat& stat) {
  return "42 (" + name + ") " + stat.state + " " + std::to_string(stat.parent) + " 1 1 0 -1 0 0 0 0 0 " +
         std::to_string(stat.userTicks) + " " + std::to_string(stat.kernelTicks) + " 0 0 " +
         std::to_string(stat.priority) + " 0 " + std::to_string(stat.threads) + " 0 " +
         std::to_string(stat.startTicks) + " 0 " + std::to_string(stat.residentPages) + " 0\n";
}

bool isSame(const ProcStat& left, const ProcStat& right) {
  return left.state == right.state && left.parent == right.parent && left.userTicks == right.userTicks &&
         left.kernelTicks == right.kernelTicks && left.priority == right.priority &&
         left.threads == right.threads && left.startTicks == right.startTicks &&
         left.residentPages == right.residentPages;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  if (const auto stat = parseProcStat(bytes)) {
    fuzz::require(stat->parent >= 0, "no parent is negative", bytes);
    const auto again = parseProcStat(lineOf("x", *stat));
    fuzz::require(again && isSame(*again, *stat), "what was read reads the same again", bytes);
  }
  ProcStat known;
  known.state = 'S';
  known.parent = 41;
  known.userTicks = 17;
  known.kernelTicks = 23;
  known.priority = -51;
  known.threads = 7;
  known.startTicks = 123'456;
  const auto named = parseProcStat(lineOf(bytes, known));
  fuzz::require(named && isSame(*named, known), "no name misleads", bytes);
  return 0;
}
