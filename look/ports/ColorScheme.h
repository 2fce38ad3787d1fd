// SPDX-License-Identifier: MIT
#pragma once

#include "base/Registration.h"

#include <functional>
#include <memory>
#include <optional>

namespace vantle {

// Whether the desktop itself is light or dark.
class ColorScheme {
 public:
  virtual ~ColorScheme() = default;

  // At once, and if need be only assumed until the desktop has answered.
  virtual bool isDark() const = 0;
  // Called whenever that has changed.
  [[nodiscard]] virtual std::unique_ptr<Registration> observe(std::function<void()> changed) = 0;
  // How what the desktop draws of this program is to look, as title bars and dialogs: dark or light, or when
  // absent like the desktop itself, of which isDark() then tells.
  virtual void draw(std::optional<bool> /*dark*/) {}
};

} // namespace vantle
