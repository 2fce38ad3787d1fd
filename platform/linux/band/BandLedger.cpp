// SPDX-License-Identifier: MIT
#include "platform/linux/band/BandLedger.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <utility>

namespace vantle {

namespace {

constexpr std::size_t largestLedger = std::size_t{1} << 20U; // thousands of units

std::optional<std::string> text(const nlohmann::json& object, const char* key) {
  const auto found = object.find(key);
  if (found == object.end() || !found->is_string()) return std::nullopt;
  return found->get<std::string>();
}

std::optional<BandLedger::Unit> unitOf(const nlohmann::json& object) {
  if (!object.is_object()) return std::nullopt;
  const auto name = text(object, "name");
  const auto path = text(object, "path");
  const auto weight = object.find("weight");
  if (!name || !path || weight == object.end() || !weight->is_number_unsigned()) return std::nullopt;
  return BandLedger::Unit{{*name, *path}, weight->get<std::uint64_t>()};
}

// What stands in a list of the document; nothing when there is none.
template <class Callback>
void forEachIn(const nlohmann::json& document, const char* key, const Callback& call) {
  const auto list = document.find(key);
  if (list == document.end() || !list->is_array()) return;
  for (const nlohmann::json& one : *list) call(one);
}

} // namespace

BandLedger::Content BandLedger::decode(const std::string& bytes, const std::string& bootId) {
  const nlohmann::json document = nlohmann::json::parse(bytes, nullptr, /*allow_exceptions=*/false);
  Content content;
  if (!document.is_object() || text(document, "boot") != bootId) return content;
  forEachIn(document, "units", [&content](const nlohmann::json& one) {
    if (std::optional<Unit> unit = unitOf(one)) content.units.push_back(std::move(*unit));
  });
  forEachIn(document, "sessions", [&content](const nlohmann::json& one) {
    if (one.is_number_integer()) content.sessions.insert(one.get<long>());
  });
  forEachIn(document, "sets", [&content](const nlohmann::json& one) {
    const auto set = one.is_string() ? ProcessorSet::parse(one.get<std::string>()) : std::nullopt;
    if (set && !set->empty()) content.sets.push_back(*set);
  });
  return content;
}

BandLedger::BandLedger(FileStore& files, std::vector<std::string> paths, std::string bootId)
    : m_files(files), m_paths(std::move(paths)), m_bootId(std::move(bootId)) {
  for (const std::string& path : m_paths) {
    const auto bytes = m_files.read(path, largestLedger);
    if (!bytes) continue;
    m_held.insert(path);
    take(decode(*bytes, m_bootId));
  }
}

void BandLedger::take(Content read) {
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

void BandLedger::addSession(long autogroup) {
  if (m_content.sessions.insert(autogroup).second) m_isSaved = false;
}

void BandLedger::removeSession(long autogroup) {
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

bool BandLedger::write(const std::string& path, const Content& content) {
  nlohmann::ordered_json units = nlohmann::ordered_json::array();
  for (const Unit& unit : content.units) {
    units.push_back({{"name", unit.place.name}, {"path", unit.place.path}, {"weight", unit.weight}});
  }
  nlohmann::ordered_json sets = nlohmann::ordered_json::array();
  for (const ProcessorSet& set : content.sets) sets.push_back(set.text());
  const nlohmann::ordered_json document{{"boot", m_bootId},
                                        {"units", std::move(units)},
                                        {"sessions", content.sessions},
                                        {"sets", std::move(sets)}};
  m_files.createFolders(path.substr(0, path.rfind('/')));
  // A unit's name is whatever its owner chose; bytes that are no text must not stop the program.
  const bool written = m_files.writeAtomically(
      path, document.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
  if (!written) return false;
  content.empty() ? static_cast<void>(m_held.erase(path)) : static_cast<void>(m_held.insert(path));
  return true;
}

} // namespace vantle
