// SPDX-License-Identifier: MIT
#include "platform/shared/IcuText.h"

#include <algorithm>
#include <limits>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/unistr.h>

namespace vantle {

namespace {

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

icu::UnicodeString fromUtf8(std::string_view text) {
  // Names and paths are short; ICU counts in 32 bits.
  const std::size_t most = std::numeric_limits<std::int32_t>::max();
  const auto length = static_cast<std::int32_t>(std::min(text.size(), most));
  return icu::UnicodeString::fromUTF8(icu::StringPiece(text.data(), length));
}

} // namespace

// Nearly every path and name is ASCII, and then ICU's tables need not be paged in at all.
std::string IcuText::lowercased(std::string_view text) const {
  std::string lower;
  if (isAscii(text)) {
    lower.assign(text);
    for (char& c : lower) {
      if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
    }
    return lower;
  }
  fromUtf8(text).toLower(icu::Locale::getRoot()).toUTF8String(lower);
  return lower;
}

std::u32string IcuText::canonicalScalars(std::string_view text) const {
  if (isAscii(text)) return {text.begin(), text.end()};
  UErrorCode status = U_ZERO_ERROR;
  icu::UnicodeString string = fromUtf8(text);
  const icu::Normalizer2* composer = icu::Normalizer2::getNFCInstance(status);
  if (U_SUCCESS(status)) {
    const icu::UnicodeString composed = composer->normalize(string, status);
    if (U_SUCCESS(status)) string = composed;
  }
  std::u32string scalars;
  for (std::int32_t at = 0; at < string.length(); at = string.moveIndex32(at, 1)) {
    scalars.push_back(static_cast<char32_t>(string.char32At(at)));
  }
  return scalars;
}

} // namespace vantle
