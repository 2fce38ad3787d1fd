// SPDX-License-Identifier: MIT
#include "platform/linux/band/UnitLedger.h"

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

std::optional<UnitLedger::Entry> entryOf(const nlohmann::json& object) {
  if (!object.is_object()) return std::nullopt;
  const auto name = text(object, "name");
  const auto path = text(object, "path");
  const auto weight = object.find("weight");
  if (!name || !path || weight == object.end() || !weight->is_number_unsigned()) return std::nullopt;
  return UnitLedger::Entry{{*name, *path}, weight->get<std::uint64_t>()};
}

std::vector<UnitLedger::Entry> decode(const std::string& bytes, const std::string& bootId) {
  const nlohmann::json document = nlohmann::json::parse(bytes, nullptr, /*allow_exceptions=*/false);
  if (!document.is_object() || text(document, "boot") != bootId) return {};
  const auto units = document.find("units");
  if (units == document.end() || !units->is_array()) return {};
  std::vector<UnitLedger::Entry> entries;
  for (const nlohmann::json& unit : *units) {
    if (std::optional<UnitLedger::Entry> entry = entryOf(unit)) entries.push_back(std::move(*entry));
  }
  return entries;
}

} // namespace

UnitLedger::UnitLedger(FileStore& files, std::vector<std::string> paths, std::string bootId)
    : m_files(files), m_paths(std::move(paths)), m_bootId(std::move(bootId)) {
  for (const std::string& path : m_paths) {
    const auto bytes = m_files.read(path, largestLedger);
    if (!bytes) continue;
    m_held.insert(path);
    // A later one is in use only while no earlier one can be written, so it is the newer one.
    for (Entry& entry : decode(*bytes, m_bootId)) {
      std::erase_if(m_entries, [&entry](const Entry& other) { return other.place.name == entry.place.name; });
      m_entries.push_back(std::move(entry));
    }
  }
}

const UnitLedger::Entry* UnitLedger::find(const std::string& unit) const {
  const auto found = std::find_if(m_entries.begin(), m_entries.end(),
                                  [&unit](const Entry& entry) { return entry.place.name == unit; });
  return found == m_entries.end() ? nullptr : &*found;
}

bool UnitLedger::add(const std::vector<Entry>& entries) {
  std::vector<Entry> before = m_entries;
  for (const Entry& entry : entries) {
    if (!find(entry.place.name)) m_entries.push_back(entry);
  }
  if (m_entries.size() == before.size()) return true;
  m_isSaved = false;
  if (save()) return true;
  m_entries = std::move(before);
  return false;
}

void UnitLedger::remove(const std::string& unit) {
  const auto gone = std::remove_if(m_entries.begin(), m_entries.end(),
                                   [&unit](const Entry& entry) { return entry.place.name == unit; });
  if (gone == m_entries.end()) return;
  m_entries.erase(gone, m_entries.end());
  m_isSaved = false;
}

bool UnitLedger::save() {
  if (m_paths.empty() || m_isSaved) return true;
  for (const std::string& path : m_paths) {
    // What an earlier one holds by now, a later one must not contradict.
    if (m_isSaved) {
      if (m_held.contains(path)) write(path, {});
    } else {
      m_isSaved = write(path, m_entries);
    }
  }
  return m_isSaved;
}

bool UnitLedger::write(const std::string& path, const std::vector<Entry>& entries) {
  nlohmann::ordered_json units = nlohmann::ordered_json::array();
  for (const Entry& entry : entries) {
    units.push_back({{"name", entry.place.name}, {"path", entry.place.path}, {"weight", entry.weight}});
  }
  const nlohmann::ordered_json document{{"boot", m_bootId}, {"units", std::move(units)}};
  m_files.createFolders(path.substr(0, path.rfind('/')));
  // A unit's name is whatever its owner chose; bytes that are no text must not stop the program.
  const bool written = m_files.writeAtomically(
      path, document.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace));
  if (!written) return false;
  entries.empty() ? static_cast<void>(m_held.erase(path)) : static_cast<void>(m_held.insert(path));
  return true;
}

} // namespace vantle
