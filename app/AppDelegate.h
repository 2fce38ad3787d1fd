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

#include <functional>
#include <memory>
#include <vector>

namespace vantle {

// Waits until every app has its speed back, and says so on the standard error stream when that takes a while.
void letAllComeBack(BackgroundBand& band, const std::function<void()>& stillAtIt);

// Owns the engine and what the person sees of it, and wires up the start and the orderly end.
class AppDelegate {
 public:
  // All of these outlive the delegate.
  AppDelegate(EventLoop& loop, const Machine& machine, LoginItem& loginItem, ApplicationCatalog& catalog)
      : m_loop(loop), m_machine(machine), m_loginItem(loginItem), m_catalog(catalog) {}

  void applicationDidFinishLaunching();
  // `stillAtIt` is called about once a second as long as that goes on.
  void applicationWillTerminate(const std::function<void()>& stillAtIt = {});

  AppSettings& settings(); // created on first use, like the rest, and kept
  Engine& engine();
  UpdateChecker& updateChecker();
  SettingsWindowController& settingsWindow();

 private:
  void showInTray();
  void installSignalSources();

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
