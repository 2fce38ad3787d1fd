// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "look/DesktopScheme.h"

namespace vantle {

// Gives the whole application its light or dark look, and keeps it in step with the desktop while the person
// wants that. The look is the application's palette, so every window follows by itself.
class Appearance {
 public:
  Appearance();

  void apply(AppearanceMode mode);
  const DesktopScheme& desktop() const { return m_desktop; }

 private:
  void update();

  DesktopScheme m_desktop;
  AppearanceMode m_mode = AppearanceMode::system;
};

} // namespace vantle
