// SPDX-License-Identifier: MIT
#pragma once

#include "look/ports/IconTheme.h"

namespace vantle {

// The pictures that the system shows of apps, by the path of their bundle.
class BundleIcons final : public IconTheme {
 public:
  void choose() override {}
  QString fileOf(const QString& /*name*/) const override { return {}; }
  QImage pictureOf(const QString& source, int pixels) const override;
  QString genericName() const override;
};

} // namespace vantle
