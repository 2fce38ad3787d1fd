// SPDX-License-Identifier: MIT
#include "platform/linux/audio/pipewire/Pod.h"

#include <array>
#include <cstring>

namespace vantle {

namespace {

constexpr std::size_t headBytes = 8;

std::size_t filledUp(std::size_t size) { return (size + 7) / 8 * 8; }

template <class Number> Number numberAt(std::string_view bytes) {
  Number number{};
  std::memcpy(&number, bytes.data(), sizeof number);
  return number;
}

template <class Number> std::string_view bytesOf(const Number& number) {
  return {reinterpret_cast<const char*>(&number), sizeof number};
}

} // namespace

std::optional<PodReader::Value> PodReader::next() {
  if (m_rest.size() < headBytes) return std::nullopt;
  const auto size = numberAt<std::uint32_t>(m_rest);
  const Value value{numberAt<std::uint32_t>(m_rest.substr(4)), m_rest.substr(headBytes, size)};
  const bool isWhole = value.body.size() == size && m_rest.size() - headBytes >= filledUp(size);
  m_rest.remove_prefix(isWhole ? headBytes + filledUp(size) : m_rest.size());
  return isWhole ? std::optional(value) : std::nullopt;
}

std::optional<std::string_view> PodReader::bodyOf(PodType type) {
  const std::optional<Value> value = next();
  if (value && value->type == static_cast<std::uint32_t>(type)) return value->body;
  m_rest = {};
  return std::nullopt;
}

template <class Number> std::optional<Number> PodReader::fixed(PodType type) {
  const std::optional<std::string_view> body = bodyOf(type);
  if (!body || body->size() < sizeof(Number)) return std::nullopt;
  return numberAt<Number>(*body);
}

template std::optional<std::int32_t> PodReader::fixed(PodType);
template std::optional<std::int64_t> PodReader::fixed(PodType);
template std::optional<std::uint32_t> PodReader::fixed(PodType);
template std::optional<float> PodReader::fixed(PodType);

std::optional<std::string_view> PodReader::text() {
  const std::optional<Value> value = next();
  if (value && value->type == static_cast<std::uint32_t>(PodType::none)) return std::string_view();
  if (value && value->type == static_cast<std::uint32_t>(PodType::text))
    return value->body.substr(0, value->body.find('\0'));
  m_rest = {};
  return std::nullopt;
}

std::optional<PodReader> PodReader::structure() {
  const std::optional<std::string_view> body = bodyOf(PodType::structure);
  return body ? std::optional(PodReader(*body)) : std::nullopt;
}

std::optional<PodReader> PodReader::object() {
  constexpr std::size_t kindBytes = 8; // what it is an object of
  const std::optional<std::string_view> body = bodyOf(PodType::object);
  if (!body || body->size() < kindBytes) return std::nullopt;
  return PodReader(body->substr(kindBytes));
}

std::optional<std::uint32_t> PodReader::key() {
  constexpr std::size_t keyBytes = 8; // with its flags
  if (m_rest.size() < keyBytes) return std::nullopt;
  const auto key = numberAt<std::uint32_t>(m_rest);
  m_rest.remove_prefix(keyBytes);
  return key;
}

std::optional<bool> PodReader::boolean() {
  const std::optional<std::uint32_t> value = fixed<std::uint32_t>(PodType::boolean);
  return value ? std::optional(*value != 0) : std::nullopt;
}

std::optional<std::vector<float>> PodReader::floats() {
  const std::optional<std::string_view> body = bodyOf(PodType::array);
  if (!body || body->size() < headBytes) return std::nullopt;
  const bool isOfFloats =
      numberAt<std::uint32_t>(*body) == sizeof(float) &&
      numberAt<std::uint32_t>(body->substr(4)) == static_cast<std::uint32_t>(PodType::float32);
  if (!isOfFloats) return std::nullopt;
  std::vector<float> numbers;
  for (std::size_t at = headBytes; at + sizeof(float) <= body->size(); at += sizeof(float)) {
    numbers.push_back(numberAt<float>(body->substr(at)));
  }
  return numbers;
}

bool PodReader::skip() { return next().has_value(); }

void PodWriter::append(PodType type, std::string_view body) {
  const auto size = static_cast<std::uint32_t>(body.size());
  const auto number = static_cast<std::uint32_t>(type);
  m_bytes.append(bytesOf(size)).append(bytesOf(number)).append(body);
  m_bytes.resize(m_bytes.size() + filledUp(body.size()) - body.size());
}

PodWriter& PodWriter::int32(std::int32_t value) {
  append(PodType::int32, bytesOf(value));
  return *this;
}

PodWriter& PodWriter::id(std::uint32_t value) {
  append(PodType::id, bytesOf(value));
  return *this;
}

PodWriter& PodWriter::none() {
  append(PodType::none, {});
  return *this;
}

PodWriter& PodWriter::text(std::string_view value) {
  append(PodType::text, std::string(value) + '\0');
  return *this;
}

PodWriter& PodWriter::structure(const PodWriter& content) {
  append(PodType::structure, content.bytes());
  return *this;
}

} // namespace vantle
