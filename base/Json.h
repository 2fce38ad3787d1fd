// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace vantle {

// One value of a JSON document, and with it all that it holds. Whatever is not there, or is not of the kind
// that is asked for, reads as absent; so records that somebody else has written can be read without a check
// at each step.
class Json {
 public:
  using Array = std::vector<Json>;
  using Object = std::vector<std::pair<std::string, Json>>; // in the order in which they were written

  Json(); // null
  Json(bool truth) : m_value(truth) {}
  Json(std::int64_t number) : m_value(number) {}
  Json(std::uint64_t number) : m_value(number) {}
  Json(double number) : m_value(number) {}
  Json(std::string text) : m_value(std::move(text)) {}
  Json(const char* text) : m_value(std::string(text)) {}
  Json(Array values) : m_value(std::move(values)) {}
  Json(Object members) : m_value(std::move(members)) {}
  // Not inline: their code is large.
  ~Json();
  Json(const Json&);
  Json& operator=(const Json&);
  Json(Json&&) noexcept;
  Json& operator=(Json&&) noexcept;

  // Nobody's records are nested more deeply; values are read, copied and written by recursion.
  static constexpr int deepestNesting = 64;

  // Absent when the bytes are no JSON document, or one that is nested more deeply. Of two members of the same
  // name the later counts.
  static std::optional<Json> parse(std::string_view bytes);
  // In one line, or indented by so many spaces a level. Text that is no UTF-8 is cleaned, not refused.
  std::string text(std::optional<int> indent = {}) const;

  bool operator==(const Json&) const = default;

  std::optional<bool> asBool() const;
  std::optional<std::int64_t> asInteger() const;
  std::optional<std::uint64_t> asUnsigned() const;
  const std::string* asText() const;
  const Array* asArray() const;
  const Object* asObject() const;
  Object* asObject();

  // Of an object.
  const Json* find(std::string_view key) const;
  void set(const std::string& key, Json value);
  void erase(std::string_view key);
  std::optional<std::string> textAt(std::string_view key) const;
  std::optional<std::uint64_t> unsignedAt(std::string_view key) const;
  std::optional<std::int64_t> integerAt(std::string_view key) const;
  const Array& arrayAt(std::string_view key) const; // empty when there is none

 private:
  // Numbers that are not negative are kept without a sign.
  std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, Array, Object> m_value;

  friend struct JsonLibrary;
};

} // namespace vantle
