// SPDX-License-Identifier: MIT
#include "app/AppDelegate.h"

#include "BuildConfiguration.h"

#include <QCoreApplication>
#include <QDesktopServices>
#include <QUrl>
#include <csignal>
#include <cstdlib>
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

void AppDelegate::applicationDidFinishLaunching() {
  settings().applyAppearance(settings().appearance.get());
  engine();
  updateChecker().checkIfDue();
  installSignalSources();
}

void AppDelegate::installSignalSources() {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    m_signalSources.push_back(std::make_unique<SignalSource>(m_loop, signal, [this] { restoreAndExit(); }));
  }
}

void AppDelegate::restoreAndExit() {
  applicationWillTerminate();
  QCoreApplication::exit(EXIT_SUCCESS);
}

void AppDelegate::applicationWillTerminate() {
  engine().stopBoost();
  m_machine.band.settle(longestSettling);
}

} // namespace vantle
