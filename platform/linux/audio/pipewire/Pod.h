// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {

// A value as PipeWire's protocol writes it: size and type (32 bits each, of this machine's byte order), then
// the body, filled up to a multiple of 8 bytes. The numbers of the types are those of its spa/utils/type.h.
enum class PodType : std::uint32_t {
  none = 1,
  boolean = 2,
  id = 3,
  int32 = 4,
  int64 = 5,
  float32 = 6,
  text = 8,
  array = 13,
  structure = 14,
  object = 15
};

// Reads one value after the other. What does not have the type that is asked for, or is cut short, is absent,
// and so is everything behind it.
class PodReader {
 public:
  explicit PodReader(std::string_view bytes) : m_rest(bytes) {}

  std::optional<std::int32_t> int32() { return fixed<std::int32_t>(PodType::int32); }
  std::optional<std::int64_t> int64() { return fixed<std::int64_t>(PodType::int64); }
  std::optional<std::uint32_t> id() { return fixed<std::uint32_t>(PodType::id); }
  // Up to its first zero; none at all reads as an empty one.
  std::optional<std::string_view> text();
  // What is in the structure. Shares the bytes.
  std::optional<PodReader> structure();
  // What is in the object: keys, each before its value.
  std::optional<PodReader> object();
  std::optional<std::uint32_t> key();
  std::optional<bool> boolean();
  std::optional<float> float32() { return fixed<float>(PodType::float32); }
  std::optional<std::vector<float>> floats(); // an array of them
  bool skip();                                // a value of whatever type

  bool isAtEnd() const { return m_rest.empty(); }

 private:
  struct Value {
    std::uint32_t type = 0;
    std::string_view body;
  };
  std::optional<Value> next();
  std::optional<std::string_view> bodyOf(PodType type);
  template <class Number> std::optional<Number> fixed(PodType type);

  std::string_view m_rest;
};

// Writes them.
class PodWriter {
 public:
  PodWriter& int32(std::int32_t value);
  PodWriter& id(std::uint32_t value);
  PodWriter& none();
  PodWriter& text(std::string_view value);
  PodWriter& structure(const PodWriter& content);
  const std::string& bytes() const { return m_bytes; }

 private:
  void append(PodType type, std::string_view body);

  std::string m_bytes;
};

} // namespace vantle
