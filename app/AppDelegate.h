// SPDX-License-Identifier: MIT
#pragma once

#include "app/SignalSource.h"
#include "engine/AppSettings.h"
#include "engine/Engine.h"
#include "engine/ports/ApplicationCatalog.h"
#include "engine/ports/LoginItem.h"
#include "engine/ports/Machine.h"
#include "look/Appearance.h"
#include "panel/PanelController.h"
#include "panel/TrayItem.h"
#include "platform/shared/EventLoop.h"
#include "settings/SettingsWindowController.h"
#include "update/UpdateChecker.h"

#include <chrono>
#include <memory>
#include <vector>

namespace vantle {

// How long the end of the program may wait for changes that the kernel lets through one by one. One takes
// 0.1 s, so this is a desktop of a hundred apps.
inline constexpr std::chrono::seconds longestSettling{10};

// Owns the engine and what the person sees of it, and wires up the start and the orderly end.
class AppDelegate {
 public:
  // All of these outlive the delegate.
  AppDelegate(EventLoop& loop, const Machine& machine, LoginItem& loginItem, ApplicationCatalog& catalog)
      : m_loop(loop), m_machine(machine), m_loginItem(loginItem), m_catalog(catalog) {}

  void applicationDidFinishLaunching();
  void applicationWillTerminate();

  AppSettings& settings(); // created on first use, like the rest, and kept
  Engine& engine();
  UpdateChecker& updateChecker();
  SettingsWindowController& settingsWindow();

 private:
  void showInTray();
  void installSignalSources();
  // Puts everything back and ends the program with status 0.
  void restoreAndExit();

  EventLoop& m_loop;
  Machine m_machine;
  LoginItem& m_loginItem;
  ApplicationCatalog& m_catalog;
  Appearance m_appearance;
  std::unique_ptr<AppSettings> m_settings;
  std::unique_ptr<Engine> m_engine;
  std::unique_ptr<UpdateChecker> m_updateChecker;
  std::unique_ptr<SettingsWindowController> m_settingsWindow;
  std::unique_ptr<PanelController> m_panel;
  std::unique_ptr<TrayItem> m_trayItem;
  std::vector<std::unique_ptr<SignalSource>> m_signalSources;
};

} // namespace vantle
