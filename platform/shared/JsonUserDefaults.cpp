// SPDX-License-Identifier: MIT
#include "platform/shared/JsonUserDefaults.h"

#include "base/Text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <string_view>
#include <utility>

namespace vantle {

namespace {

constexpr const char* fileName = "/defaults.json";
constexpr const char* dateKey = "date";

// Thousands of app names fit; a larger file was not written by this program.
constexpr std::size_t largestFile = std::size_t{1} << 20U;

constexpr std::string_view datePattern = "dddd-dd-ddTdd:dd:ddZ";

int numberAt(std::string_view text, std::size_t at, std::size_t digits) {
  int value = 0;
  std::from_chars(text.data() + at, text.data() + at + digits, value);
  return value;
}

std::optional<Date> parseDate(std::string_view text) {
  const auto fits = [](char c, char pattern) { return pattern == 'd' ? c >= '0' && c <= '9' : c == pattern; };
  if (text.size() != datePattern.size()) return std::nullopt;
  if (!std::equal(text.begin(), text.end(), datePattern.begin(), fits)) return std::nullopt;
  using namespace std::chrono;
  const year_month_day day{year(numberAt(text, 0, 4)), month(static_cast<unsigned>(numberAt(text, 5, 2))),
                           std::chrono::day(static_cast<unsigned>(numberAt(text, 8, 2)))};
  const int hour = numberAt(text, 11, 2);
  const int minute = numberAt(text, 14, 2);
  const int second = numberAt(text, 17, 2);
  if (!day.ok() || hour > 23 || minute > 59 || second > 59) return std::nullopt;
  return sys_days(day) + hours(hour) + minutes(minute) + seconds(second);
}

std::string formatDate(Date date) {
  using namespace std::chrono;
  const sys_days midnight = floor<days>(date);
  const year_month_day day{midnight};
  const hh_mm_ss time{date - midnight};
  std::array<char, 40> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(day.year()),
                static_cast<unsigned>(day.month()), static_cast<unsigned>(day.day()),
                static_cast<int>(time.hours().count()), static_cast<int>(time.minutes().count()),
                static_cast<int>(time.seconds().count()));
  return text.data();
}

std::optional<UserDefaults::Value> typed(const Json& json) {
  if (const auto truth = json.asBool()) return *truth;
  if (const std::string* text = json.asText()) return *text;
  if (const Json::Array* array = json.asArray()) {
    std::vector<std::string> texts;
    for (const Json& one : *array) {
      if (one.asText() == nullptr) return {};
      texts.push_back(*one.asText());
    }
    return texts;
  }
  const Json::Object* members = json.asObject();
  if (members == nullptr || members->size() != 1) return {};
  const auto date = json.textAt(dateKey);
  if (const auto parsed = date ? parseDate(*date) : std::nullopt) return *parsed;
  return {};
}

Json untyped(const UserDefaults::Value& value) {
  if (const auto* date = std::get_if<Date>(&value)) return Json::Object{{dateKey, formatDate(*date)}};
  if (const auto* truth = std::get_if<bool>(&value)) return *truth;
  if (const auto* text = std::get_if<std::string>(&value)) return *text;
  const auto& texts = std::get<std::vector<std::string>>(value);
  return Json::Array(texts.begin(), texts.end());
}

struct Contents {
  Json object = Json::Object{};
  bool isForeign = false; // something stands there, and it is not ours
};

Contents readContents(const FileStore& files, const std::string& path) {
  if (const std::optional<std::string> bytes = files.read(path, largestFile)) {
    if (std::optional<Json> object = decodeDefaults(*bytes)) return {std::move(*object), false};
    return {Json::Object{}, true};
  }
  return {Json::Object{}, files.exists(path)};
}

} // namespace

std::optional<Json> decodeDefaults(const std::string& bytes) {
  std::optional<Json> document = Json::parse(bytes);
  if (!document || document->asObject() == nullptr) return std::nullopt;
  return document;
}

JsonUserDefaults::JsonUserDefaults(FileStore& files, std::string folder, const std::string& domain)
    : m_files(files), m_folder(std::move(folder)), m_path(m_folder + "/" + domain + fileName) {}

std::optional<Json> JsonUserDefaults::stored(const std::string& key) const {
  if (const auto pending = m_pending.find(key); pending != m_pending.end()) return pending->second;
  const Json object = readContents(m_files, m_path).object;
  const Json* const found = object.find(key);
  return found == nullptr ? std::nullopt : std::optional(*found);
}

std::optional<UserDefaults::Value> JsonUserDefaults::object(const std::string& key) const {
  const std::optional<Json> json = stored(key);
  return json ? typed(*json) : std::nullopt;
}

bool JsonUserDefaults::contains(const std::string& key) const { return stored(key).has_value(); }

void JsonUserDefaults::set(const std::string& key, Value value) { change(key, untyped(value)); }

void JsonUserDefaults::remove(const std::string& key) { change(key, std::nullopt); }

void JsonUserDefaults::change(const std::string& key, std::optional<Json> value) {
  m_pending.insert_or_assign(key, std::move(value));
  save();
}

void JsonUserDefaults::save() {
  Contents contents = readContents(m_files, m_path);
  // Somebody's choices may be in there still. When it cannot be moved out of the way it is left alone.
  if (contents.isForeign) {
    const std::string aside = m_path + ".corrupt";
    if (!m_files.rename(m_path, aside)) return;
    std::fprintf(stderr, "vantle: %s cannot be read, and is kept as %s.\n", m_path.c_str(),
                 fileNameOf(aside).c_str());
  }
  for (const auto& [key, value] : m_pending) {
    if (value) {
      contents.object.set(key, *value);
    } else {
      contents.object.erase(key);
    }
  }
  m_files.createFolders(folderOf(m_path));
  // A text that is no UTF-8 is cleaned rather than refused: then all the others would be lost with it.
  const std::string bytes = contents.object.text(2) + "\n";
  if (m_files.writeAtomically(m_path, bytes)) {
    m_pending.clear();
    m_isLossTold = false;
  } else if (!std::exchange(m_isLossTold, true)) {
    std::fprintf(stderr, "vantle: %s cannot be written: changed settings last until Vantle ends.\n",
                 m_path.c_str());
  }
}

std::unique_ptr<UserDefaults> JsonUserDefaults::openSuite(const std::string& name) const {
  auto suite = std::make_unique<JsonUserDefaults>(m_files, m_folder, name);
  if (!m_files.exists(suite->path())) return nullptr;
  return suite;
}

bool JsonUserDefaults::copyFrom(const UserDefaults& other, const std::string& key) {
  std::optional<Json> value;
  if (const auto* alike = dynamic_cast<const JsonUserDefaults*>(&other)) {
    value = alike->stored(key);
  } else if (const std::optional<Value> typedValue = other.object(key)) {
    value = untyped(*typedValue);
  }
  if (!value) return false;
  change(key, std::move(value));
  return true;
}

} // namespace vantle
