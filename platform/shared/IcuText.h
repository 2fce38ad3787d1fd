// SPDX-License-Identifier: MIT
#pragma once

#include "engine/ports/UnicodeText.h"

namespace vantle {

// Unicode's tables through ICU.
class IcuText final : public UnicodeText {
 public:
  std::string lowercased(std::string_view text) const override;
  std::u32string canonicalScalars(std::string_view text) const override;
};

} // namespace vantle
