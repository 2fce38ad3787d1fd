// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "engine/Engine.h"
#include "engine/ports/ApplicationCatalog.h"
#include "engine/ports/LoginItem.h"
#include "update/UpdateChecker.h"

#include <memory>

namespace vantle {

// The one settings window. Closing it only hides it: it comes back on the pane, at the size and in the place
// where it was left. What it costs in memory is given back a while after it was closed.
class SettingsWindowController {
 public:
  SettingsWindowController(Engine& engine, AppSettings& settings, UpdateChecker& checker,
                           LoginItem& loginItem, ApplicationCatalog& catalog);
  ~SettingsWindowController();
  SettingsWindowController(const SettingsWindowController&) = delete;
  SettingsWindowController& operator=(const SettingsWindowController&) = delete;

  // Opens the window, or brings the open one to the front. Needs the toolkit's application object.
  void show();

 private:
  struct Parts;
  std::unique_ptr<Parts> m_parts;
};

} // namespace vantle
