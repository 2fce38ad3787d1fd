// SPDX-License-Identifier: MIT
#include "engine/Journal.h"

#include "engine/ProcessQueries.h"

#include <cstdint>
#include <limits>
#include <nlohmann/json.hpp>

namespace vantle {

namespace {

// Tens of thousands of entries fit; anything larger was not written by this program.
constexpr std::size_t largestJournal = std::size_t{4} << 20U;

std::optional<std::uint64_t> unsignedMember(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number_unsigned()) return std::nullopt;
  return found->get<std::uint64_t>();
}

std::optional<Pid> pidMember(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_number_integer()) return std::nullopt;
  if (found->is_number_unsigned() && found->get<std::uint64_t>() > std::numeric_limits<Pid>::max()) {
    return std::nullopt;
  }
  const auto value = found->get<std::int64_t>();
  if (value < std::numeric_limits<Pid>::min()) return std::nullopt;
  return static_cast<Pid>(value);
}

std::unordered_set<ProcessIdentity> load(const FileStore& files, const std::string& path) {
  const std::optional<std::string> bytes = files.read(path, largestJournal);
  if (!bytes) return {};
  return decodeJournal(*bytes).value_or(std::unordered_set<ProcessIdentity>{});
}

} // namespace

std::optional<std::unordered_set<ProcessIdentity>> decodeJournal(const std::string& bytes) {
  const nlohmann::json document = nlohmann::json::parse(bytes, nullptr, /*allow_exceptions=*/false);
  if (!document.is_array()) return std::nullopt;
  std::unordered_set<ProcessIdentity> identities;
  for (const nlohmann::json& element : document) {
    if (!element.is_object()) return std::nullopt;
    const auto pid = pidMember(element, "pid");
    const auto startSec = unsignedMember(element, "startSec");
    const auto startUsec = unsignedMember(element, "startUsec");
    if (!pid || !startSec || !startUsec) return std::nullopt;
    identities.insert(ProcessIdentity{*pid, *startSec, *startUsec});
  }
  return identities;
}

Journal::Journal(FileStore& files) : m_files(files) {
  const std::string support = files.applicationSupport();
  const std::string folder = support + "/Vantle";
  files.createFolders(folder);
  m_url = folder + "/journal.json";
  m_entries = load(files, m_url);

  const std::string formerFolder = support + "/Murn";
  const std::string former = formerFolder + "/kayit.json";
  if (files.exists(former)) {
    m_entries.merge(load(files, former));
    files.removeFolder(formerFolder);
  }
}

void Journal::add(const std::vector<ProcessIdentity>& identities) {
  if (identities.empty()) return;
  m_entries.insert(identities.begin(), identities.end());
  save();
}

void Journal::remove(const std::vector<ProcessIdentity>& identities) {
  if (identities.empty()) return;
  for (const ProcessIdentity& identity : identities) m_entries.erase(identity);
  save();
}

void Journal::restoreAllAndClear(const ProcessTable& processes, BackgroundBand& band) {
  for (const ProcessIdentity& identity : m_entries) {
    if (isSameLiveProcess(processes, identity)) band.leaveBackgroundBand(identity.pid);
  }
  m_entries.clear();
  save();
}

void Journal::save() {
  nlohmann::ordered_json document = nlohmann::ordered_json::array();
  for (const ProcessIdentity& identity : m_entries) {
    document.push_back(
        {{"pid", identity.pid}, {"startSec", identity.startSec}, {"startUsec", identity.startUsec}});
  }
  m_files.writeAtomically(m_url, document.dump());
}

} // namespace vantle
