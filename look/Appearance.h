// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "look/ports/ColorScheme.h"

#include <memory>

namespace vantle {

// Gives the whole application its light or dark look, and keeps it in step with the desktop while the person
// wants that. The look is the application's palette, so every window follows by itself.
class Appearance {
 public:
  explicit Appearance(ColorScheme& desktop); // which outlives it

  void apply(AppearanceMode mode);

 private:
  void update();

  ColorScheme& m_desktop;
  std::unique_ptr<Registration> m_observer;
  AppearanceMode m_mode = AppearanceMode::system;
};

} // namespace vantle
