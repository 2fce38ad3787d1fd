// SPDX-License-Identifier: MIT
#include "base/PlainText.h"

#include "base/Utf8.h"

#include <algorithm>
#include <array>

namespace vantle {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

constexpr bool holds(const Range& range, char32_t character) {
  return range.first <= character && character <= range.last;
}

// Ends a line or speaks to a terminal: categories Cc, Zl and Zp.
constexpr std::array breaks{Range{0x00, 0x1F}, Range{0x7F, 0x9F}, Range{0x2028, 0x2029}};

// Category Cf, and what else has no look of its own: fillers, joiners and selectors.
constexpr std::array unseen{
    Range{0xAD, 0xAD},       Range{0x34F, 0x34F},     Range{0x600, 0x605},     Range{0x61C, 0x61C},
    Range{0x6DD, 0x6DD},     Range{0x70F, 0x70F},     Range{0x890, 0x891},     Range{0x8E2, 0x8E2},
    Range{0x115F, 0x1160},   Range{0x17B4, 0x17B5},   Range{0x180B, 0x180F},   Range{0x200B, 0x200F},
    Range{0x202A, 0x202E},   Range{0x2060, 0x206F},   Range{0x3164, 0x3164},   Range{0xFE00, 0xFE0F},
    Range{0xFEFF, 0xFEFF},   Range{0xFFA0, 0xFFA0},   Range{0xFFF0, 0xFFFB},   Range{0x110BD, 0x110BD},
    Range{0x110CD, 0x110CD}, Range{0x13430, 0x1343F}, Range{0x1BCA0, 0x1BCA3}, Range{0x1D173, 0x1D17A},
    Range{0xE0000, 0xE0FFF}};

template <class Ranges> bool isOneOf(const Ranges& ranges, char32_t character) {
  return std::any_of(ranges.begin(), ranges.end(),
                     [character](const Range& range) { return holds(range, character); });
}

std::size_t lengthOf(unsigned char lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xE0) return 2;
  return lead < 0xF0 ? 3 : 4;
}

// Of a well-formed sequence.
char32_t decoded(std::string_view sequence) {
  constexpr std::array<unsigned char, 5> leadBits{0, 0x7F, 0x1F, 0x0F, 0x07};
  char32_t character = static_cast<unsigned char>(sequence[0]) & leadBits.at(sequence.size());
  for (const char byte : sequence.substr(1)) {
    character = (character << 6U) | (static_cast<unsigned char>(byte) & 0x3FU);
  }
  return character;
}

} // namespace

std::string plainText(std::string_view bytes, std::size_t longest) {
  constexpr std::size_t mostBytes = 16; // of a character, however much there is to leave out
  const std::string clean = cleanUtf8(bytes.substr(0, longest * mostBytes));
  std::string text;
  std::size_t characters = 0;
  for (std::size_t at = 0; at < clean.size();) {
    const std::string_view sequence =
        std::string_view(clean).substr(at, lengthOf(static_cast<unsigned char>(clean[at])));
    at += sequence.size();
    const char32_t character = decoded(sequence);
    if (isOneOf(unseen, character)) continue;
    if (++characters > longest) return text.append("…");
    isOneOf(breaks, character) ? text.append("?") : text.append(sequence);
  }
  const bool isBlank = text.find_first_not_of(' ') == std::string::npos;
  return isBlank && !bytes.empty() ? "?" : text;
}

} // namespace vantle
