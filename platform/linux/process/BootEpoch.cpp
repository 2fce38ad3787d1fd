// SPDX-License-Identifier: MIT
#include "platform/linux/process/BootEpoch.h"

#include <algorithm>
#include <cstddef>
#include <ctime>
#include <fcntl.h>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>
#include <unistd.h>

#include "platform/linux/Descriptor.h"

namespace vantle {

namespace {

constexpr std::size_t largestRecord = 1024;

// Start times are added to the epoch; a number that leaves no room for them was not written by this program.
constexpr std::uint64_t latestEpoch = std::numeric_limits<std::uint64_t>::max() / 4;

// Read directly: the kernel's files say that they are 0 bytes long.
std::string readBootId(const std::string& path) {
  const Descriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  char buffer[64];
  const ssize_t length = file ? ::read(file.get(), buffer, sizeof buffer) : -1;
  std::string id(buffer, length > 0 ? static_cast<std::size_t>(length) : 0);
  id.erase(std::find(id.begin(), id.end(), '\n'), id.end());
  return id;
}

std::optional<std::uint64_t> kept(const FileStore& files, const std::string& path,
                                  const std::string& bootId) {
  const std::optional<std::string> bytes = files.read(path, largestRecord);
  if (!bytes) return std::nullopt;
  const nlohmann::json record = nlohmann::json::parse(*bytes, nullptr, /*allow_exceptions=*/false);
  if (!record.is_object()) return std::nullopt;
  const auto boot = record.find("bootId");
  const auto epoch = record.find("epochMicros");
  if (boot == record.end() || *boot != bootId) return std::nullopt;
  if (epoch == record.end() || !epoch->is_number_unsigned()) return std::nullopt;
  const auto micros = epoch->get<std::uint64_t>();
  return micros <= latestEpoch ? std::optional(micros) : std::nullopt;
}

std::int64_t microsOf(clockid_t clock) {
  timespec time{};
  ::clock_gettime(clock, &time);
  return std::int64_t{time.tv_sec} * 1'000'000 + time.tv_nsec / 1'000;
}

} // namespace

BootEpoch BootEpoch::load(FileStore& files, const std::vector<std::string>& paths,
                          const std::string& bootIdPath) {
  const std::string bootId = readBootId(bootIdPath);
  if (!bootId.empty()) {
    for (const std::string& path : paths) {
      if (const auto micros = kept(files, path, bootId)) return BootEpoch(*micros);
    }
  }
  // A wall clock that was never set may lie before the epoch.
  const std::int64_t taken = std::max<std::int64_t>(microsOf(CLOCK_REALTIME) - microsOf(CLOCK_BOOTTIME), 0);
  const BootEpoch epoch(static_cast<std::uint64_t>(taken));
  if (bootId.empty()) return epoch;

  nlohmann::ordered_json record{{"bootId", bootId}, {"epochMicros", epoch.micros()}};
  const std::string bytes = record.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  for (const std::string& path : paths) {
    files.createFolders(path.substr(0, path.rfind('/')));
    if (files.writeAtomically(path, bytes)) break;
  }
  return epoch;
}

} // namespace vantle
