// SPDX-License-Identifier: MIT
#include "platform/linux/band/BandLedger.h"

#include "base/Text.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

constexpr std::size_t largestLedger = std::size_t{1} << 20U; // thousands of units

} // namespace

BandLedger::BandLedger(FileStore& files, std::vector<std::string> paths, std::string bootId)
    : m_files(files), m_paths(std::move(paths)), m_bootId(std::move(bootId)) {
  for (const std::string& path : m_paths) {
    const auto bytes = m_files.read(path, largestLedger);
    if (!bytes) continue;
    m_held.insert(path);
    take(decodeBandRecord(*bytes, m_bootId));
  }
}

void BandLedger::take(BandRecord read) {
  // A later one is in use only while no earlier one can be written, so it is the newer one.
  for (Unit& unit : read.units) {
    std::erase_if(m_content.units,
                  [&unit](const Unit& other) { return other.place.name == unit.place.name; });
    m_content.units.push_back(std::move(unit));
  }
  m_content.sessions.merge(read.sessions);
  for (const ProcessorSet& set : read.sets) {
    if (std::find(m_content.sets.begin(), m_content.sets.end(), set) == m_content.sets.end())
      m_content.sets.push_back(set);
  }
}

const BandLedger::Unit* BandLedger::find(const std::string& unit) const {
  const auto found = std::find_if(m_content.units.begin(), m_content.units.end(),
                                  [&unit](const Unit& one) { return one.place.name == unit; });
  return found == m_content.units.end() ? nullptr : &*found;
}

bool BandLedger::add(const std::vector<Unit>& units) {
  std::vector<Unit> before = m_content.units;
  for (const Unit& unit : units) {
    if (!find(unit.place.name)) m_content.units.push_back(unit);
  }
  if (m_content.units.size() == before.size()) return true;
  m_isSaved = false;
  if (save()) return true;
  m_content.units = std::move(before);
  return false;
}

void BandLedger::remove(const std::string& unit) {
  const auto gone = std::remove_if(m_content.units.begin(), m_content.units.end(),
                                   [&unit](const Unit& one) { return one.place.name == unit; });
  if (gone == m_content.units.end()) return;
  m_content.units.erase(gone, m_content.units.end());
  m_isSaved = false;
}

void BandLedger::addSession(std::int64_t autogroup) {
  if (m_content.sessions.insert(autogroup).second) m_isSaved = false;
}

void BandLedger::removeSession(std::int64_t autogroup) {
  if (m_content.sessions.erase(autogroup) > 0) m_isSaved = false;
}

bool BandLedger::addSet(const ProcessorSet& set) {
  m_content.sets.push_back(set);
  m_isSaved = false;
  if (save()) return true;
  m_content.sets.pop_back();
  return false;
}

bool BandLedger::save() {
  if (m_paths.empty() || m_isSaved) return true;
  for (const std::string& path : m_paths) {
    // What an earlier one holds by now, a later one must not contradict.
    if (m_isSaved) {
      if (m_held.contains(path)) write(path, {});
    } else {
      m_isSaved = write(path, m_content);
    }
  }
  return m_isSaved;
}

bool BandLedger::write(const std::string& path, const BandRecord& content) {
  m_files.createFolders(folderOf(path));
  const bool written = m_files.writeAtomically(path, encodeBandRecord(content, m_bootId));
  if (!written) return false;
  content.empty() ? static_cast<void>(m_held.erase(path)) : static_cast<void>(m_held.insert(path));
  return true;
}

} // namespace vantle
