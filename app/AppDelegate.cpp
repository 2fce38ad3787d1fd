// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"

#include "BuildConfiguration.h"
#include "engine/LastWait.h"
#include "look/Notices.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QUrl>
#include <cstddef>
#include <cstdio>
#include <string>
#include <utility>

namespace vantle {

AppSettings& AppDelegate::settings() {
  if (!m_settings) m_settings = std::make_unique<AppSettings>(m_machine.defaults);
  return *m_settings;
}

Engine& AppDelegate::engine() {
  if (!m_engine) m_engine = std::make_unique<Engine>(m_machine, settings());
  return *m_engine;
}

UpdateChecker& AppDelegate::updateChecker() {
  if (!m_updateChecker) {
    UpdateConfiguration configuration;
    configuration.version = build::version;
    configuration.feed = build::updateFeed;
    configuration.vendorHost = build::updateHost;
    m_updateChecker = std::make_unique<UpdateChecker>(
        std::move(configuration), settings(), m_machine.clock,
        [](const std::string& address) { QDesktopServices::openUrl(QUrl(QString::fromStdString(address))); });
  }
  return *m_updateChecker;
}

SettingsWindowController& AppDelegate::settingsWindow() {
  if (!m_settingsWindow) {
    m_settingsWindow = std::make_unique<SettingsWindowController>(
        SettingsParts{engine(), settings(), updateChecker(), m_machine.loginItem, m_machine.catalog,
                      m_desktop->shellExtension(), m_desktop->appChooser()},
        windowParts());
  }
  return *m_settingsWindow;
}

WindowParts AppDelegate::windowParts() {
  return {settings(), m_desktop->icons(), m_desktop->heap(), m_desktop->words(), m_desktop->front()};
}

void AppDelegate::applicationDidFinishLaunching() {
  settings().applyAppearance = [this](AppearanceMode mode) { m_appearance.apply(mode); };
  settings().applyAppearance(settings().appearance.get());
  engine();
  updateChecker().checkIfDue();
  answerOthers();
  showInTray();
}

void AppDelegate::answerOthers() {
  m_remote = std::make_unique<RemoteControl>(
      m_loop, engine(), m_machine, m_desktop->remoteDoor(),
      RemoteControl::About{build::version, [this] { return m_owned.facts(); }});
  m_hooks = std::make_unique<BoostHooks>(engine(), m_machine.hooks);
}

// An app menu opens the panel of the copy that runs, tray or no tray.
void AppDelegate::showInTray() {
  engine().speak(noticeWords());
  m_panel = std::make_unique<PanelController>(
      engine(), windowParts(), m_desktop->panelSurface(), [this] { settingsWindow().show(); },
      [] { QCoreApplication::quit(); });
  m_trayItem = std::make_unique<TrayItem>(engine(), *m_panel, m_desktop->tray());
  m_activation = m_desktop->activation().answer({.show = [this] { m_panel->show(); },
                                                 .settings = [this] { m_panel->openSettings(); },
                                                 .quit = [this] { m_panel->quit(); }});
}

void AppDelegate::leaveViews() {
  if (m_panel) m_panel->leaveEngine();
  m_remote.reset();
}

void AppDelegate::applicationWillTerminate(const std::function<void()>& stillAtIt) {
  engine().stopBoost();
  if (m_hooks) m_hooks->finish();
  letAllComeBack(m_machine.band, stillAtIt);
}

void letAllComeBack(BackgroundBand& band, const std::function<void()>& stillAtIt) {
  const auto apps = [](std::size_t count) { return std::to_string(count) + (count == 1 ? " app" : " apps"); };
  bool isTold = false;
  const bool isDone = waitUntilAllIsBack(band, [&](std::size_t left) {
    if (stillAtIt) stillAtIt();
    if (std::exchange(isTold, true)) return;
    std::fprintf(stderr, "vantle: giving %s their speed back; the system allows about ten a second.\n",
                 apps(left).c_str());
  });
  if (isDone || band.owed() == 0) return;
  std::fprintf(stderr, "vantle: %s could not be given their speed back; the next start does it.\n",
               apps(band.owed()).c_str());
}

} // namespace vantle
