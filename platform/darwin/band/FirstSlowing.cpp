// SPDX-License-Identifier: MIT
#include "platform/darwin/band/FirstSlowing.h"

#include "base/Json.h"
#include "base/Names.h"
#include "platform/darwin/process/SystemValue.h"

#include <cstddef>
#include <string>
#include <utility>
#include <vector>

namespace vantle {

namespace {

constexpr std::size_t largestNote = std::size_t{1} << 20U; // thousands of processes
constexpr const char* nothing = "{}";

std::string thisBoot() { return systemText("kern.bootsessionuuid").value_or(std::string()); }

} // namespace

std::string FirstSlowing::path() const {
  return m_files->applicationSupport() + "/" + names::display + "/band.json";
}

void FirstSlowing::note(std::uint64_t since, std::span<const ProcessIdentity> older) {
  if (m_files == nullptr) return;
  Json::Array document;
  for (const ProcessIdentity& one : older) {
    document.emplace_back(Json::Object{
        {"pid", std::int64_t{one.pid}}, {"startSec", one.startSec}, {"startUsec", one.startUsec}});
  }
  const Json record(Json::Object{{"boot", thisBoot()}, {"since", since}, {"older", std::move(document)}});
  m_isNoted = true;
  m_files->writeAtomically(path(), record.text());
}

void FirstSlowing::forget() {
  if (m_files == nullptr || !m_isNoted) return;
  m_isNoted = !m_files->writeAtomically(path(), nothing);
}

std::optional<BandMemory> FirstSlowing::memory() {
  const auto bytes = m_files == nullptr ? std::nullopt : m_files->read(path(), largestNote);
  m_isNoted = bytes && *bytes != nothing;
  const Json record = bytes ? Json::parse(*bytes).value_or(Json()) : Json();
  const auto since = record.unsignedAt("since");
  if (!since || record.textAt("boot") != thisBoot()) return std::nullopt;
  std::vector<ProcessIdentity> older;
  for (const Json& one : record.arrayAt("older")) {
    const auto pid = one.integerAt("pid");
    const auto startSec = one.unsignedAt("startSec");
    const auto startUsec = one.unsignedAt("startUsec");
    if (pid && startSec && startUsec) older.push_back({static_cast<Pid>(*pid), *startSec, *startUsec});
  }
  return BandMemory::ofAnEarlierProgram(*since, older);
}

} // namespace vantle
