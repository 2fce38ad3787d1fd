// SPDX-License-Identifier: MIT
#include "tests/support/Schema.h"

#include <algorithm>
#include <fstream>
#include <nlohmann/json.hpp>
#include <set>
#include <stdexcept>

namespace vantle::desktop {
namespace {

using nlohmann::json;

bool isOfType(const json& value, const std::string& type) {
  if (type == "integer") return value.is_number_integer();
  if (type == "number") return value.is_number();
  return type == value.type_name();
}

void refuseUnknownWords(const json& schema) {
  static const std::set<std::string> known{"$schema", "title",      "type",
                                           "enum",    "properties", "required",
                                           "minimum", "items",      "additionalProperties"};
  for (const auto& [word, rule] : schema.items()) {
    if (!known.contains(word)) throw std::runtime_error("the schema asks for " + word);
  }
}

std::string violation(const json& schema, const json& value, const std::string& where);

std::string memberViolation(const json& schema, const json& value, const std::string& where) {
  for (const json& name : schema.value("required", json::array())) {
    const std::string required = name.get<std::string>();
    if (!value.contains(required)) return std::string(where).append(" has no ").append(required);
  }
  const json properties = schema.value("properties", json::object());
  for (const auto& [name, member] : value.items()) {
    if (properties.contains(name)) {
      std::string found = violation(properties[name], member, std::string(where).append("/").append(name));
      if (!found.empty()) return found;
    } else if (schema.value("additionalProperties", json(true)) == json(false)) {
      return std::string(where).append(" may not have ").append(name);
    }
  }
  return {};
}

std::string violation(const json& schema, const json& value, const std::string& where) {
  refuseUnknownWords(schema);
  if (schema.contains("type")) {
    const json types = schema["type"].is_array() ? schema["type"] : json::array({schema["type"]});
    const bool isAny = std::any_of(types.begin(), types.end(), [&](const json& type) {
      return isOfType(value, type.get<std::string>());
    });
    if (!isAny) return where + " is a " + value.type_name();
  }
  if (schema.contains("enum")) {
    const json& words = schema["enum"];
    if (std::find(words.begin(), words.end(), value) == words.end()) return where + " is " + value.dump();
  }
  if (schema.contains("minimum") && value.is_number() && value < schema["minimum"]) {
    return where + " is " + value.dump();
  }
  if (value.is_object()) return memberViolation(schema, value, where);
  if (value.is_array() && schema.contains("items")) {
    for (const json& item : value) {
      if (std::string found = violation(schema["items"], item, where + "/*"); !found.empty()) return found;
    }
  }
  return {};
}

} // namespace

std::string violationOf(const std::filesystem::path& schema, const std::string& document) {
  std::ifstream file(schema);
  const json rules = json::parse(file);
  const json value = json::parse(document, nullptr, /*allow_exceptions=*/false);
  return value.is_discarded() ? "it is no JSON document" : violation(rules, value, "");
}

} // namespace vantle::desktop
