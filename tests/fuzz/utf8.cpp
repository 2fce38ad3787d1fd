// SPDX-License-Identifier: MIT
// Any bytes as a text.
#include "base/Utf8.h"
#include "platform/shared/IcuText.h"
#include "tests/fuzz/Target.h"

#include <nlohmann/json.hpp>

using namespace vantle;

namespace {

// By somebody else's judgement: the JSON library refuses to write anything else.
bool isUtf8(const std::string& text) {
  const std::string kept = nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::ignore);
  return nlohmann::json::parse(kept).get_ref<const std::string&>() == text;
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string bytes = fuzz::textOf(data, size);
  const std::string clean = cleanUtf8(bytes);
  fuzz::require(isUtf8(clean), "the result is well-formed", bytes);
  fuzz::require(cleanUtf8(clean) == clean, "cleaning twice changes nothing", bytes);
  fuzz::require(isUtf8(bytes) == (clean == bytes), "well-formed text stays as it is, other text does not",
                bytes);
  fuzz::require(clean.size() <= bytes.size() * 3, "a byte becomes at most one replacement", bytes);

  const IcuText text;
  fuzz::require(text.canonicalScalars(bytes) == text.canonicalScalars(clean), "both sides clean alike",
                bytes);
  const std::string lower = text.lowercased(bytes);
  fuzz::require(isUtf8(lower), "lower-cased text is well-formed", bytes);
  return 0;
}
