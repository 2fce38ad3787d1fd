// SPDX-License-Identifier: MIT
#include "base/Json.h"

#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>
#include <type_traits>

namespace vantle {

using Library = nlohmann::ordered_json;

struct JsonLibrary {
  static Json read(const Library& value) {
    switch (value.type()) {
    case Library::value_t::boolean:
      return value.get<bool>();
    case Library::value_t::number_integer:
      return value.get<std::int64_t>();
    case Library::value_t::number_unsigned:
      return value.get<std::uint64_t>();
    case Library::value_t::number_float:
      return value.get<double>();
    case Library::value_t::string:
      return value.get<std::string>();
    case Library::value_t::array: {
      Json::Array values;
      for (const Library& one : value) values.push_back(read(one));
      return values;
    }
    case Library::value_t::object: {
      Json::Object members;
      for (const auto& [key, one] : value.items()) members.emplace_back(key, read(one));
      return members;
    }
    default:
      return {};
    }
  }

  static Library written(const Json& value) {
    return std::visit(
        [](const auto& held) -> Library {
          using Held = std::decay_t<decltype(held)>;
          if constexpr (std::is_same_v<Held, std::monostate>) {
            return nullptr;
          } else if constexpr (std::is_same_v<Held, Json::Array>) {
            Library values = Library::array();
            for (const Json& one : held) values.push_back(written(one));
            return values;
          } else if constexpr (std::is_same_v<Held, Json::Object>) {
            Library members = Library::object();
            for (const auto& [key, one] : held) members[key] = written(one);
            return members;
          } else {
            return held;
          }
        },
        value.m_value);
  }
};

Json::Json() = default;
Json::~Json() = default;
Json::Json(const Json&) = default;
Json& Json::operator=(const Json&) = default;
Json::Json(Json&&) noexcept = default;
Json& Json::operator=(Json&&) noexcept = default;

std::optional<Json> Json::parse(std::string_view bytes) {
  bool isTooDeep = false;
  const auto watchDepth = [&](int depth, Library::parse_event_t /*event*/, const Library& /*parsed*/) {
    isTooDeep = isTooDeep || depth > deepestNesting;
    return !isTooDeep;
  };
  const Library document = Library::parse(bytes, watchDepth, /*allow_exceptions=*/false);
  if (isTooDeep || document.is_discarded()) return std::nullopt;
  return JsonLibrary::read(document);
}

std::string Json::text(std::optional<int> indent) const {
  return JsonLibrary::written(*this).dump(indent.value_or(-1), ' ', false, Library::error_handler_t::replace);
}

std::optional<bool> Json::asBool() const {
  const auto* truth = std::get_if<bool>(&m_value);
  return truth == nullptr ? std::nullopt : std::optional(*truth);
}

std::optional<std::int64_t> Json::asInteger() const {
  if (const auto* number = std::get_if<std::int64_t>(&m_value)) return *number;
  const auto number = asUnsigned();
  if (!number || *number > std::uint64_t{std::numeric_limits<std::int64_t>::max()}) return std::nullopt;
  return static_cast<std::int64_t>(*number);
}

std::optional<std::uint64_t> Json::asUnsigned() const {
  if (const auto* number = std::get_if<std::uint64_t>(&m_value)) return *number;
  const auto* number = std::get_if<std::int64_t>(&m_value);
  if (number == nullptr || *number < 0) return std::nullopt;
  return static_cast<std::uint64_t>(*number);
}

const std::string* Json::asText() const { return std::get_if<std::string>(&m_value); }
const Json::Array* Json::asArray() const { return std::get_if<Array>(&m_value); }
const Json::Object* Json::asObject() const { return std::get_if<Object>(&m_value); }
Json::Object* Json::asObject() { return std::get_if<Object>(&m_value); }

const Json* Json::find(std::string_view key) const {
  const Object* members = asObject();
  if (members == nullptr) return nullptr;
  const auto found = std::find_if(members->begin(), members->end(),
                                  [key](const auto& member) { return member.first == key; });
  return found == members->end() ? nullptr : &found->second;
}

void Json::set(const std::string& key, Json value) {
  if (asObject() == nullptr) m_value = Object{};
  Object& members = *asObject();
  const auto found = std::find_if(members.begin(), members.end(),
                                  [&key](const auto& member) { return member.first == key; });
  if (found == members.end()) {
    members.emplace_back(key, std::move(value));
  } else {
    found->second = std::move(value);
  }
}

void Json::erase(std::string_view key) {
  if (Object* members = asObject())
    std::erase_if(*members, [key](const auto& member) { return member.first == key; });
}

std::optional<std::string> Json::textAt(std::string_view key) const {
  const Json* value = find(key);
  const std::string* text = value == nullptr ? nullptr : value->asText();
  return text == nullptr ? std::nullopt : std::optional(*text);
}

std::optional<std::uint64_t> Json::unsignedAt(std::string_view key) const {
  const Json* value = find(key);
  return value == nullptr ? std::nullopt : value->asUnsigned();
}

std::optional<std::int64_t> Json::integerAt(std::string_view key) const {
  const Json* value = find(key);
  return value == nullptr ? std::nullopt : value->asInteger();
}

const Json::Array& Json::arrayAt(std::string_view key) const {
  static const Array none;
  const Json* value = find(key);
  const Array* array = value == nullptr ? nullptr : value->asArray();
  return array == nullptr ? none : *array;
}

} // namespace vantle
