// SPDX-License-Identifier: MIT
#include "platform/linux/power/InhibitorReaders.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <unordered_set>
#include <utility>

namespace vantle {

namespace {

// A session has a handful; but an app that asks again and again, and a daemon that forgets nobody, must hide
// nobody else.
constexpr std::size_t longestList = 8192;
constexpr std::size_t mostEntries = 100'000; // of a list that repeats itself
constexpr std::size_t mostLogins = 8192;     // logind's own limit
constexpr std::size_t longestName = 255;     // bytes, as of bus names; nobody's app is called like a novel

std::optional<Pid> pidOf(std::uint32_t number) {
  const auto largest = static_cast<std::uint32_t>(std::numeric_limits<Pid>::max());
  if (number < 1 || number > largest) return std::nullopt;
  return static_cast<Pid>(number);
}

bool holdsA(sd_bus_message* reply, char type, const char* contents) {
  return reply != nullptr && sd_bus_message_verify_type(reply, type, contents) > 0;
}

// What MATE's screen saver writes around a name.
std::string_view appOf(std::string_view text) {
  constexpr std::string_view before = "Application=\"";
  if (!text.starts_with(before)) return text;
  text.remove_prefix(before.size());
  return text.substr(0, text.find('"'));
}

// Each once.
class Texts {
 public:
  void add(std::string_view text) {
    ++m_entries;
    if (m_known.insert(std::string(text)).second) m_all.emplace_back(text);
  }
  bool isFull() const { return m_entries >= mostEntries || m_all.size() >= longestList; }
  std::vector<std::string> take() { return std::move(m_all); }

 private:
  std::size_t m_entries = 0;
  std::unordered_set<std::string> m_known;
  std::vector<std::string> m_all;
};

void keepApp(Texts& apps, std::string_view text) { apps.add(appOf(text).substr(0, longestName)); }

std::vector<std::string> listOf(sd_bus_message* reply, char type, const char* contents,
                                void (*keep)(Texts& texts, std::string_view text)) {
  Texts texts;
  const char* text = nullptr;
  if (!holdsA(reply, SD_BUS_TYPE_ARRAY, contents) ||
      sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, contents) < 0) {
    return {};
  }
  while (!texts.isFull() && sd_bus_message_read_basic(reply, type, static_cast<void*>(&text)) > 0) {
    keep(texts, text);
  }
  return texts.take();
}

std::vector<std::string> appsOfPairs(sd_bus_message* reply, char container, const char* pair) {
  Texts apps;
  const char* name = nullptr;
  const char* reason = nullptr;
  if (sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, pair) < 0) return {};
  while (!apps.isFull() && sd_bus_message_enter_container(reply, container, "ss") > 0) {
    if (sd_bus_message_read(reply, "ss", &name, &reason) <= 0) break;
    keepApp(apps, name);
    if (sd_bus_message_exit_container(reply) < 0) break;
  }
  return apps.take();
}

bool isDigits(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

} // namespace

InhibitorKinds kindsFromList(std::string_view what) {
  InhibitorKinds kinds;
  while (!what.empty()) {
    const std::size_t end = what.find(':');
    const std::string_view kind = what.substr(0, end);
    kinds.sleep = kinds.sleep || kind == "sleep";
    kinds.idle = kinds.idle || kind == "idle";
    what.remove_prefix(end == std::string_view::npos ? what.size() : end + 1);
  }
  return kinds;
}

std::vector<Inhibitor> blockingInhibitors(sd_bus_message* reply) {
  std::vector<Inhibitor> inhibitors;
  if (!holdsA(reply, SD_BUS_TYPE_ARRAY, "(ssssuu)") ||
      sd_bus_message_enter_container(reply, SD_BUS_TYPE_ARRAY, "(ssssuu)") < 0) {
    return inhibitors;
  }
  const char* what = nullptr;
  const char* who = nullptr;
  const char* why = nullptr;
  const char* mode = nullptr;
  std::uint32_t user = 0;
  std::uint32_t number = 0;
  for (std::size_t count = 0; count < mostLogins && sd_bus_message_read(reply, "(ssssuu)", &what, &who, &why,
                                                                        &mode, &user, &number) > 0;
       ++count) {
    const InhibitorKinds kinds = kindsFromList(what);
    const std::optional<Pid> pid = pidOf(number);
    if (!pid || std::strcmp(mode, "block") != 0 || !kinds.any()) continue;
    inhibitors.push_back({kinds, {*pid}, std::string(who).substr(0, longestName)});
  }
  return inhibitors;
}

std::vector<std::string> appsIn(sd_bus_message* reply) {
  if (holdsA(reply, SD_BUS_TYPE_ARRAY, "s")) return listOf(reply, SD_BUS_TYPE_STRING, "s", keepApp);
  if (holdsA(reply, SD_BUS_TYPE_ARRAY, "(ss)")) return appsOfPairs(reply, SD_BUS_TYPE_STRUCT, "(ss)");
  // As Plasma describes its own list.
  if (holdsA(reply, SD_BUS_TYPE_ARRAY, "{ss}")) return appsOfPairs(reply, SD_BUS_TYPE_DICT_ENTRY, "{ss}");
  return {};
}

std::vector<std::string> pathsIn(sd_bus_message* reply) {
  return listOf(reply, SD_BUS_TYPE_OBJECT_PATH, "o",
                [](Texts& paths, std::string_view path) { paths.add(path); });
}

std::optional<std::uint32_t> numberIn(sd_bus_message* reply) {
  std::uint32_t value = 0;
  if (reply == nullptr || sd_bus_message_read(reply, "u", &value) <= 0) return std::nullopt;
  return value;
}

std::optional<bool> truthIn(sd_bus_message* reply) {
  int value = 0;
  if (reply == nullptr || sd_bus_message_read(reply, "b", &value) <= 0) return std::nullopt;
  return value != 0;
}

std::optional<Pid> processIn(sd_bus_message* reply) {
  const std::optional<std::uint32_t> number = numberIn(reply);
  return number ? pidOf(*number) : std::nullopt;
}

std::string textIn(sd_bus_message* reply) {
  const char* value = nullptr;
  for (const char type : {SD_BUS_TYPE_STRING, SD_BUS_TYPE_OBJECT_PATH}) {
    if (!holdsA(reply, type, nullptr)) continue;
    if (sd_bus_message_read_basic(reply, type, static_cast<void*>(&value)) > 0) {
      return std::string(value).substr(0, longestName);
    }
  }
  return {};
}

// A description has one tag for each object; what else could be written there between is nobody's request.
std::vector<std::string> requestersIn(std::string_view description) {
  constexpr std::string_view before = "<node name=\"";
  std::vector<std::string> names;
  while (names.size() < longestList) {
    const std::size_t found = description.find(before);
    if (found == std::string_view::npos) break;
    description.remove_prefix(found + before.size());
    const std::size_t end = description.find('"');
    if (end == std::string_view::npos) break;
    const std::string_view node = description.substr(0, end);
    const std::size_t middle = node.find('_');
    if (middle == std::string_view::npos || node.size() > longestName) continue;
    if (!isDigits(node.substr(0, middle)) || !isDigits(node.substr(middle + 1))) continue;
    names.push_back(":" + std::string(node.substr(0, middle)) + "." + std::string(node.substr(middle + 1)));
  }
  return names;
}

bool isBusName(std::string_view text) {
  const std::string name(text);
  return !text.starts_with(':') && text.find('.') != std::string_view::npos &&
         sd_bus_service_name_is_valid(name.c_str()) > 0;
}

} // namespace vantle
