// SPDX-License-Identifier: MIT
#pragma once

#include "desktop/Desktop.h"
#include "engine/AppSettings.h"
#include "engine/Engine.h"
#include "engine/ports/Machine.h"
#include "look/Appearance.h"
#include "panel/PanelController.h"
#include "panel/TrayItem.h"
#include "platform/Platform.h"
#include "remote/BoostHooks.h"
#include "remote/RemoteControl.h"
#include "settings/SettingsWindowController.h"
#include "update/UpdateChecker.h"

#include <functional>
#include <memory>

namespace vantle {

// Waits until every app has its speed back, and says so on the standard error stream when that takes a while.
void letAllComeBack(BackgroundBand& band, const std::function<void()>& stillAtIt);

// Owns the engine and what the person sees of it, and wires up the start and the orderly end.
class AppDelegate {
 public:
  // Both outlive the delegate.
  AppDelegate(EventLoop& loop, OwnedMachine& machine)
      : m_loop(loop), m_owned(machine), m_machine(machine.machine()), m_desktop(Desktop::make(loop)) {}

  void applicationDidFinishLaunching();
  // Windows are told of nothing any more: their desktop has gone from under them, and the toolkit may be in
  // the middle of anything.
  void leaveViews();
  // `stillAtIt` is called about once a second as long as that goes on.
  void applicationWillTerminate(const std::function<void()>& stillAtIt = {});

  AppSettings& settings(); // created on first use, like the rest, and kept
  Engine& engine();
  UpdateChecker& updateChecker();
  SettingsWindowController& settingsWindow();

 private:
  WindowParts windowParts();
  void answerOthers();
  void showInTray();

  EventLoop& m_loop;
  OwnedMachine& m_owned;
  Machine m_machine;
  std::unique_ptr<Desktop> m_desktop;
  Appearance m_appearance{m_desktop->scheme()};
  std::unique_ptr<AppSettings> m_settings;
  std::unique_ptr<Engine> m_engine;
  std::unique_ptr<UpdateChecker> m_updateChecker;
  std::unique_ptr<SettingsWindowController> m_settingsWindow;
  std::unique_ptr<PanelController> m_panel;
  std::unique_ptr<TrayItem> m_trayItem;
  std::unique_ptr<RemoteControl> m_remote;
  std::unique_ptr<BoostHooks> m_hooks;
  std::unique_ptr<Registration> m_activation;
};

} // namespace vantle
