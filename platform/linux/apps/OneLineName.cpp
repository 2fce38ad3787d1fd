// SPDX-License-Identifier: MIT
#include "platform/linux/apps/OneLineName.h"

#include "base/Utf8.h"

#include <algorithm>
#include <cstddef>

namespace vantle {

namespace {

constexpr std::size_t longestName = 200;   // characters
constexpr std::size_t longestInput = 4096; // bytes: enough for 200 characters of four, however padded

bool isControl(char letter) {
  const auto byte = static_cast<unsigned char>(letter);
  return byte < 0x20 || byte == 0x7f;
}

bool continues(char letter) { return (static_cast<unsigned char>(letter) & 0xc0) == 0x80; }

} // namespace

std::string oneLineName(std::string_view bytes) {
  std::string text = cleanUtf8(bytes.substr(0, longestInput));
  std::replace_if(text.begin(), text.end(), isControl, ' ');
  text.erase(0, std::min(text.find_first_not_of(' '), text.size()));
  std::size_t characters = 0;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (continues(text[at]) || ++characters <= longestName) continue;
    text.resize(at);
  }
  text.resize(text.find_last_not_of(' ') + 1);
  return text;
}

} // namespace vantle
