// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppSettings.h"
#include "engine/Engine.h"
#include "engine/ports/ApplicationCatalog.h"
#include "engine/ports/LoginItem.h"
#include "update/UpdateChecker.h"

#include <chrono>
#include <memory>

namespace vantle {

// The one settings window. Closing it only hides it: it comes back on the pane, at the size and in the place
// where it was left. The memory that it costs is given back a while after it was closed.
class SettingsWindowController {
 public:
  // The parts outlive the controller.
  SettingsWindowController(Engine& engine, AppSettings& settings, UpdateChecker& checker,
                           LoginItem& loginItem, ApplicationCatalog& catalog);
  ~SettingsWindowController();
  SettingsWindowController(const SettingsWindowController&) = delete;
  SettingsWindowController& operator=(const SettingsWindowController&) = delete;

  // Opens the window, or brings the open one to the front. Needs the toolkit's application object.
  void show();

  // How long a closed window keeps its memory, in case it is wanted again.
  void setReleaseDelay(std::chrono::milliseconds delay);
  bool holdsMemory() const;

 private:
  class Impl;
  std::unique_ptr<Impl> m_impl;
};

} // namespace vantle
