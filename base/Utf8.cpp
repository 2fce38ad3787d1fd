// SPDX-License-Identifier: MIT
#include "base/Utf8.h"

#include <cstddef>

namespace vantle {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

struct Lead {
  std::size_t length = 0; // of the whole sequence; 0 when the byte cannot start one
  unsigned char secondLow = 0x80;
  unsigned char secondHigh = 0xBF;
};

// The ranges of well-formed byte sequences, table 3-7 of the Unicode Standard.
Lead leadOf(unsigned char byte) {
  if (byte < 0x80) return {1};
  if (byte < 0xC2) return {0};
  if (byte < 0xE0) return {2};
  if (byte == 0xE0) return {3, 0xA0};
  if (byte == 0xED) return {3, 0x80, 0x9F};
  if (byte < 0xF0) return {3};
  if (byte == 0xF0) return {4, 0x90};
  if (byte < 0xF4) return {4};
  if (byte == 0xF4) return {4, 0x80, 0x8F};
  return {0};
}

} // namespace

std::string cleanUtf8(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size());
  std::size_t at = 0;
  while (at < bytes.size()) {
    const Lead lead = leadOf(static_cast<unsigned char>(bytes[at]));
    std::size_t good = lead.length == 0 ? 0 : 1;
    while (good != 0 && good < lead.length && at + good < bytes.size()) {
      const auto next = static_cast<unsigned char>(bytes[at + good]);
      const unsigned char low = good == 1 ? lead.secondLow : 0x80;
      const unsigned char high = good == 1 ? lead.secondHigh : 0xBF;
      if (next < low || next > high) break;
      ++good;
    }
    if (lead.length != 0 && good == lead.length) {
      text.append(bytes.substr(at, good));
    } else {
      text.append(replacement);
    }
    at += good == 0 ? 1 : good;
  }
  return text;
}

} // namespace vantle
