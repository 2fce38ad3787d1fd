// SPDX-License-Identifier: MIT
#include "desktop/linux/scheme/PublishedSettings.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace vantle {
namespace {

// Values of the protocol.
constexpr std::uint32_t numberType = 0;
constexpr std::uint32_t textType = 1;
constexpr std::uint32_t colorType = 2;
constexpr std::size_t colorBytes = 8;
constexpr unsigned char bigEndian = 1;

// Reads forward; what is asked for beyond the end is absent.
class Reader {
 public:
  explicit Reader(std::string_view bytes)
      : m_rest(bytes), m_isBig(!bytes.empty() && static_cast<unsigned char>(bytes[0]) == bigEndian) {}

  std::optional<std::string_view> take(std::size_t count) {
    if (count > m_rest.size()) return std::nullopt;
    const std::string_view taken = m_rest.substr(0, count);
    m_rest.remove_prefix(count);
    return taken;
  }
  std::optional<std::uint32_t> number(std::size_t width) {
    const auto bytes = take(width);
    if (!bytes) return std::nullopt;
    std::uint32_t value = 0;
    for (std::size_t at = 0; at < width; ++at) {
      const char byte = (*bytes)[m_isBig ? at : width - 1 - at];
      value = (value << 8U) | static_cast<unsigned char>(byte);
    }
    return value;
  }
  // With what fills it up to a multiple of four.
  std::optional<std::string_view> text(std::size_t length) {
    const auto taken = take(length);
    if (!taken || !take((4 - length % 4) % 4)) return std::nullopt;
    return taken;
  }

 private:
  std::string_view m_rest;
  bool m_isBig;
};

// False when nothing more can be read.
bool readOne(Reader& reader, PublishedSettings& settings) {
  const auto type = reader.number(1);
  const auto filler = reader.take(1);
  const auto nameLength = reader.number(2);
  if (!type || !filler || !nameLength) return false;
  const auto name = reader.text(*nameLength);
  const auto serial = reader.number(4);
  if (!name || !serial) return false;
  if (*type == colorType) return reader.take(colorBytes).has_value();
  const auto value = reader.number(4); // of a text its length
  if (!value || (*type != numberType && *type != textType)) return false;
  if (*type == numberType) {
    settings.numbers[std::string(*name)] = static_cast<std::int32_t>(*value);
    return true;
  }
  const auto text = reader.text(*value);
  if (text) settings.texts[std::string(*name)] = std::string(*text);
  return text.has_value();
}

} // namespace

PublishedSettings readPublishedSettings(std::string_view bytes) {
  PublishedSettings settings;
  Reader reader(bytes);
  const auto head = reader.take(8); // order of bytes, three that fill, a serial number
  const auto count = reader.number(4);
  if (!head || !count) return settings;
  for (std::uint32_t at = 0; at < *count && readOne(reader, settings); ++at) {
  }
  return settings;
}

} // namespace vantle
