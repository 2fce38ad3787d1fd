// SPDX-License-Identifier: MIT
#include "status/Words.h"

#include <algorithm>
#include <cstddef>

namespace vantle {

std::string_view wordOf(AppState state) { return stateWords.at(static_cast<std::size_t>(state)); }

std::string_view wordOf(Reason reason) { return reasonTexts.at(static_cast<std::size_t>(reason)).word; }

std::string_view sentenceOf(std::string_view reasonWord) {
  const auto* const text = std::find_if(reasonTexts.begin(), reasonTexts.end(),
                                        [reasonWord](const auto& one) { return one.word == reasonWord; });
  return text == reasonTexts.end() ? reasonWord : text->sentence;
}

} // namespace vantle
