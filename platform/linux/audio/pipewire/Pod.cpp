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

PodWriter& PodWriter::text(std::string_view value) {
  append(PodType::text, std::string(value) + '\0');
  return *this;
}

PodWriter& PodWriter::structure(const PodWriter& content) {
  append(PodType::structure, content.bytes());
  return *this;
}

} // namespace vantle
