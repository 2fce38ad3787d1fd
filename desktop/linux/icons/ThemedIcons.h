// SPDX-License-Identifier: MIT
#pragma once

#include "look/ports/IconTheme.h"

namespace vantle {

// The desktop's own theme where the toolkit knows it, else the one in the GTK settings; and the folder of
// old.
class ThemedIcons final : public IconTheme {
 public:
  void choose() override;
  QString fileOf(const QString& name) const override;
};

} // namespace vantle
