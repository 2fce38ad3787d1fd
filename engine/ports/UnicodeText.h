// SPDX-License-Identifier: MIT
#pragma once

#include <string>
#include <string_view>

namespace vantle {

// What Unicode's tables are needed for. Texts are UTF-8; malformed sequences count as U+FFFD.
class UnicodeText {
 public:
  virtual ~UnicodeText() = default;

  // Full lower-casing, independent of the person's language.
  virtual std::string lowercased(std::string_view text) const = 0;

  // The scalar values of the canonical composed form: what plain string order compares.
  virtual std::u32string canonicalScalars(std::string_view text) const = 0;
};

} // namespace vantle
