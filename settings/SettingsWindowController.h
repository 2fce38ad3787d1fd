// SPDX-License-Identifier: MIT
#pragma once

#include "look/KeptWindow.h"
#include "settings/SettingsWindow.h"

#include <memory>

namespace vantle {

// The one settings window. Closing it only hides it: it comes back on the pane, at the size and in the place
// where it was left.
class SettingsWindowController final : public KeptWindow {
 public:
  // All parts outlive the controller.
  SettingsWindowController(const SettingsParts& parts, const WindowParts& windowParts);

  // Opens the window, or brings the open one to the front. Needs the toolkit's application object.
  void show();

 private:
  void make(LookEngine& engine) override;
  void destroy() override;
  void renew(LookEngine& engine) override;

  SettingsParts m_parts;
  WindowState m_state;
  std::unique_ptr<SettingsWindow> m_window;
};

} // namespace vantle
