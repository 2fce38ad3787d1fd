// SPDX-License-Identifier: MIT
#include "engine/Journal.h"

#include "base/Json.h"
#include "base/Names.h"
#include "engine/ProcessQueries.h"

#include <limits>

namespace vantle {

namespace {

// Tens of thousands of entries fit; anything larger was not written by this program.
constexpr std::size_t largestJournal = std::size_t{4} << 20U;

std::optional<Pid> pidOf(const Json& entry) {
  const auto value = entry.integerAt("pid");
  using Limits = std::numeric_limits<Pid>;
  if (!value || *value < Limits::min() || *value > Limits::max()) return std::nullopt;
  return static_cast<Pid>(*value);
}

std::unordered_set<ProcessIdentity> load(const FileStore& files, const std::string& path) {
  const std::optional<std::string> bytes = files.read(path, largestJournal);
  if (!bytes) return {};
  return decodeJournal(*bytes).value_or(std::unordered_set<ProcessIdentity>{});
}

} // namespace

std::optional<std::unordered_set<ProcessIdentity>> decodeJournal(const std::string& bytes) {
  const std::optional<Json> document = Json::parse(bytes);
  if (!document || document->asArray() == nullptr) return std::nullopt;
  std::unordered_set<ProcessIdentity> identities;
  for (const Json& entry : *document->asArray()) {
    const auto pid = pidOf(entry);
    const auto startSec = entry.unsignedAt("startSec");
    const auto startUsec = entry.unsignedAt("startUsec");
    if (!pid || !startSec || !startUsec) return std::nullopt;
    identities.insert(ProcessIdentity{*pid, *startSec, *startUsec});
  }
  return identities;
}

Journal::Journal(FileStore& files) : m_files(files) {
  const std::string support = files.applicationSupport();
  const std::string folder = support + "/" + names::display;
  files.createFolders(folder);
  m_url = folder + "/journal.json";
  m_entries = load(files, m_url);

  const std::string formerFolder = support + "/" + names::formerDisplay;
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
  Json::Array document;
  for (const ProcessIdentity& identity : m_entries) {
    document.emplace_back(Json::Object{{"pid", std::int64_t{identity.pid}},
                                       {"startSec", identity.startSec},
                                       {"startUsec", identity.startUsec}});
  }
  m_files.writeAtomically(m_url, Json(std::move(document)).text());
}

} // namespace vantle
