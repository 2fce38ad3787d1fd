// SPDX-License-Identifier: MIT
#include "update/Version.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <vector>

namespace vantle {

namespace {

// The leading numerals, of any script. A mark that combines with the last one makes another character of it,
// still a numeral, so it belongs to the run.
std::string leadingNumerals(std::string_view piece) {
  const auto length = static_cast<std::int32_t>(std::min<std::size_t>(piece.size(), INT32_MAX));
  const auto text = icu::UnicodeString::fromUTF8(icu::StringPiece(piece.data(), length));
  std::int32_t end = 0;
  while (end < text.length()) {
    const UChar32 scalar = text.char32At(end);
    const bool numeral = u_getIntPropertyValue(scalar, UCHAR_NUMERIC_TYPE) != U_NT_NONE;
    const bool combines = end > 0 && u_hasBinaryProperty(scalar, UCHAR_GRAPHEME_EXTEND);
    if (!numeral && !combines) break;
    end = text.moveIndex32(end, 1);
  }
  std::string run;
  text.tempSubString(0, end).toUTF8String(run);
  return run;
}

std::int64_t numberOf(std::string_view piece) {
  const std::string run = leadingNumerals(piece);
  std::int64_t number = 0;
  const char* const end = run.data() + run.size();
  const auto [stop, error] = std::from_chars(run.data(), end, number);
  return error == std::errc() && stop == end ? number : 0;
}

std::vector<std::int64_t> numbersOf(std::string_view version) {
  std::vector<std::int64_t> numbers;
  while (!version.empty()) {
    const std::size_t stop = std::min(version.find('.'), version.size());
    if (stop > 0) numbers.push_back(numberOf(version.substr(0, stop)));
    version.remove_prefix(std::min(stop + 1, version.size()));
  }
  return numbers;
}

} // namespace

std::string trimmedVersion(std::string_view version) {
  constexpr std::string_view decoration = "vV ";
  const std::size_t first = version.find_first_not_of(decoration);
  if (first == std::string_view::npos) return {};
  return std::string(version.substr(first, version.find_last_not_of(decoration) - first + 1));
}

bool isNewer(std::string_view candidate, std::string_view current) {
  std::vector<std::int64_t> left = numbersOf(candidate);
  std::vector<std::int64_t> right = numbersOf(current);
  const std::size_t length = std::max(left.size(), right.size());
  left.resize(length, 0);
  right.resize(length, 0);
  return left > right;
}

} // namespace vantle
