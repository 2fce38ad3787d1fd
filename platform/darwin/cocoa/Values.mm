// SPDX-License-Identifier: MIT
#import "platform/darwin/cocoa/Values.h"

#include "base/Utf8.h"

#include <cstddef>
#include <vector>

namespace vantle {

namespace {

constexpr char32_t replacement = 0xFFFD;
constexpr char32_t firstHalf = 0xD800;
constexpr char32_t secondHalf = 0xDC00;
constexpr char32_t afterHalves = 0xE000;
constexpr char32_t afterUnits = 0x10000; // what one unit cannot say

bool isFirstHalf(char32_t unit) { return unit >= firstHalf && unit < secondHalf; }
bool isSecondHalf(char32_t unit) { return unit >= secondHalf && unit < afterHalves; }

void append(std::string& text, char32_t scalar) {
  constexpr char32_t most = 0x3F; // of a byte that goes on
  const auto byte = [&text](char32_t bits) { text += static_cast<char>(static_cast<unsigned char>(bits)); };
  if (scalar < 0x80) {
    byte(scalar);
  } else if (scalar < 0x800) {
    byte(0xC0 | (scalar >> 6U));
    byte(0x80 | (scalar & most));
  } else if (scalar < afterUnits) {
    byte(0xE0 | (scalar >> 12U));
    byte(0x80 | ((scalar >> 6U) & most));
    byte(0x80 | (scalar & most));
  } else {
    byte(0xF0 | (scalar >> 18U));
    byte(0x80 | ((scalar >> 12U) & most));
    byte(0x80 | ((scalar >> 6U) & most));
    byte(0x80 | (scalar & most));
  }
}

} // namespace

// The system's own ways to UTF-8 refuse the whole string for one such half.
std::optional<std::string> textOf(id object) {
  NSString* const string = asKind<NSString>(object);
  if (string == nil) return std::nullopt;
  std::vector<unichar> units([string length]);
  [string getCharacters:units.data() range:NSMakeRange(0, units.size())];
  std::string text;
  for (std::size_t at = 0; at < units.size(); ++at) {
    const char32_t unit = units[at];
    const char32_t next = at + 1 < units.size() ? units[at + 1] : 0;
    if (isFirstHalf(unit) && isSecondHalf(next)) {
      append(text, afterUnits + ((unit - firstHalf) << 10U) + (next - secondHalf));
      ++at;
    } else {
      append(text, isFirstHalf(unit) || isSecondHalf(unit) ? replacement : unit);
    }
  }
  return text;
}

NSString* stringOf(std::string_view bytes) {
  const std::string text = cleanUtf8(bytes);
  NSString* const made = [[[NSString alloc] initWithBytes:text.data()
                                                   length:text.size()
                                                 encoding:NSUTF8StringEncoding] autorelease];
  return made != nil ? made : @"";
}

} // namespace vantle
