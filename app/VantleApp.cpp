// SPDX-License-Identifier: MIT
#include "app/VantleApp.h"

#include "app/AppDelegate.h"
#include "app/ExitGuard.h"
#include "app/QtEventLoop.h"
#include "app/SelfTestMode.h"
#include "app/SignalSource.h"
#include "app/ToolkitGuard.h"
#include "engine/Backgrounder.h"
#include "platform/linux/LinuxMachine.h"
#include "platform/linux/catalog/DesktopCatalog.h"
#include "platform/linux/files/SingleCopyLock.h"
#include "platform/linux/files/XdgFolders.h"
#include "platform/linux/login/AutostartLoginItem.h"
#include "platform/linux/process/DescriptorLimit.h"
#include "platform/shared/PollEventLoop.h"

#include <QGuiApplication>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace vantle {

namespace {

constexpr const char* bundleIdentifier = "com.halvo.vantle";
constexpr const char* formerIdentifier = "com.halvo.murn";

bool isNamed(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool hasDesktopSession() { return isNamed("DISPLAY") || isNamed("WAYLAND_DISPLAY"); }

// Started where no desktop is (on a console after the session died, say): nothing can be watched, but what an
// earlier run left slowed is put back all the same.
int recoverOnly(const XdgFolders& folders, const char* reason) {
  PollEventLoop loop;
  const std::unique_ptr<LinuxMachine> linuxMachine = LinuxMachine::forRecovery(folders, loop);
  const Machine machine = linuxMachine->machine();
  Backgrounder(machine).recover();
  machine.band.settle(longestSettling);
  std::fprintf(stderr, "vantle: %s\n", reason);
  return 1;
}

// Its journal and settings are this program's now; both at once would work against each other.
void askFormerEditionToQuit(const Workspace& workspace) {
  for (const AppRef& app : workspace.runningApplications()) {
    if (app->bundleIdentifier() == formerIdentifier) app->terminate();
  }
}

} // namespace

bool VantleApp::wantsSelfTest() const {
  const std::span<char*> arguments(m_argv, static_cast<std::size_t>(m_argc));
  return std::any_of(arguments.begin(), arguments.end(),
                     [](const char* argument) { return std::string_view(argument) == "--test"; });
}

int VantleApp::run() {
  if (wantsSelfTest()) return runSelfTestMode();

  raiseDescriptorLimit();
  const XdgFolders folders = XdgFolders::fromEnvironment();
  const SingleCopyLock lock = SingleCopyLock::acquire(folders);
  if (lock.outcome() == SingleCopyLock::Outcome::heldByOther) return EXIT_SUCCESS;
  if (!hasDesktopSession()) {
    return recoverOnly(folders,
                       "there is no desktop session here (neither DISPLAY nor WAYLAND_DISPLAY is set).");
  }

  holdTerminationSignals();
  std::optional<ToolkitGuard> startGuard([&folders] {
    return recoverOnly(folders,
                       "the desktop session that DISPLAY or WAYLAND_DISPLAY names cannot be reached.");
  });
  QGuiApplication::setDesktopFileName(bundleIdentifier);
  QGuiApplication::setApplicationDisplayName("Vantle");
  QGuiApplication::setQuitOnLastWindowClosed(false);
  QGuiApplication application(m_argc, m_argv);
  startGuard.reset();
  QtEventLoop loop;
  const std::unique_ptr<LinuxMachine> machine =
      LinuxMachine::forDesktop(folders, loop, [] { QCoreApplication::exit(EXIT_SUCCESS); });
  askFormerEditionToQuit(machine->machine().workspace);

  AutostartLoginItem loginItem(AutostartSetup::from(
      folders, [](const char* name) -> const char* { return std::getenv(name); },
      QCoreApplication::applicationFilePath().toStdString()));
  DesktopCatalog catalog(DesktopEntries::dataFoldersFromEnvironment());
  AppDelegate delegate(loop, machine->machine(), loginItem, catalog);
  QObject::connect(&application, &QCoreApplication::aboutToQuit, &application,
                   [&delegate] { delegate.applicationWillTerminate(); });
  const ExitGuard guard([&delegate] { delegate.applicationWillTerminate(); });
  delegate.applicationDidFinishLaunching();
  return QGuiApplication::exec();
}

} // namespace vantle
