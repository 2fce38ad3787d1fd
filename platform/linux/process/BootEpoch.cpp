// SPDX-License-Identifier: MIT
#include "platform/linux/process/BootEpoch.h"

#include "base/Json.h"
#include "base/Text.h"

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <limits>
#include <optional>

namespace vantle {

namespace {

constexpr std::size_t largestRecord = 1024;

// Start times are added to the epoch; a number that leaves no room for them was not written by this program.
constexpr std::uint64_t latestEpoch = std::numeric_limits<std::uint64_t>::max() / 4;

std::optional<std::uint64_t> kept(const FileStore& files, const std::string& path,
                                  const std::string& bootId) {
  const std::optional<std::string> bytes = files.read(path, largestRecord);
  if (!bytes) return std::nullopt;
  const Json record = Json::parse(*bytes).value_or(Json());
  const auto micros = record.unsignedAt("epochMicros");
  if (record.textAt("bootId") != bootId || !micros || *micros > latestEpoch) return std::nullopt;
  return micros;
}

std::int64_t microsOf(clockid_t clock) {
  timespec time{};
  ::clock_gettime(clock, &time);
  return std::int64_t{time.tv_sec} * 1'000'000 + time.tv_nsec / 1'000;
}

} // namespace

BootEpoch BootEpoch::load(FileStore& files, const std::vector<std::string>& paths,
                          const std::string& bootId) {
  if (!bootId.empty()) {
    for (const std::string& path : paths) {
      if (const auto micros = kept(files, path, bootId)) return BootEpoch(*micros);
    }
  }
  // A wall clock that was never set may lie before the epoch.
  const std::int64_t taken = std::max<std::int64_t>(microsOf(CLOCK_REALTIME) - microsOf(CLOCK_BOOTTIME), 0);
  const BootEpoch epoch(static_cast<std::uint64_t>(taken));
  if (bootId.empty()) return epoch;

  const std::string bytes = Json(Json::Object{{"bootId", bootId}, {"epochMicros", epoch.micros()}}).text();
  for (const std::string& path : paths) {
    files.createFolders(folderOf(path));
    if (files.writeAtomically(path, bytes)) break;
  }
  return epoch;
}

} // namespace vantle
