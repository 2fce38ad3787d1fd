// SPDX-License-Identifier: MIT
#include "app/VantleApp.h"

#include "app/AppDelegate.h"
#include "app/ExitGuard.h"
#include "app/QtEventLoop.h"
#include "app/SelfTestMode.h"
#include "app/ToolkitGuard.h"
#include "app/Watchdog.h"
#include "base/Names.h"
#include "engine/Backgrounder.h"
#include "platform/linux/LinuxMachine.h"
#include "platform/linux/catalog/DesktopCatalog.h"
#include "platform/linux/files/OwnFolder.h"
#include "platform/linux/files/SingleCopyLock.h"
#include "platform/linux/files/XdgFolders.h"
#include "platform/linux/login/AutostartLoginItem.h"
#include "platform/linux/process/DescriptorLimit.h"
#include "platform/shared/PollEventLoop.h"

#include <QGuiApplication>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string_view>

namespace vantle {

namespace {

bool isNamed(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

bool hasDesktopSession() { return isNamed("DISPLAY") || isNamed("WAYLAND_DISPLAY"); }

// The toolkit tries to reach what a variable names even when it names nothing.
void forgetEmptyNames() {
  for (const char* variable : {"DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"}) {
    if (!isNamed(variable)) ::unsetenv(variable);
  }
}

// Before anything that can hang, abort or be refused: what an earlier run left slowed is put back even where
// no desktop is (on a console after the session died, say).
void putBackLeftovers(const XdgFolders& folders, const std::function<void()>& stillAtIt) {
  PollEventLoop loop;
  const std::unique_ptr<LinuxMachine> linuxMachine = LinuxMachine::forRecovery(folders, loop);
  const Machine machine = linuxMachine->machine();
  Backgrounder leftovers(machine);
  leftovers.recover();
  machine.band.onLateBirths([&leftovers] { leftovers.sweep(0); });
  letAllComeBack(machine.band, stillAtIt);
  machine.band.onLateBirths({});
}

void sayWhatIsNotKept(const XdgFolders& folders) {
  for (const std::string& folder : {folders.data, folders.config}) {
    if (isOwnFolder(folder)) continue;
    std::fprintf(stderr, "vantle: %s is, or could be, somebody else's: nothing is kept there.\n",
                 folder.c_str());
    return;
  }
}

int cannotStart(const char* reason) {
  std::fprintf(stderr, "vantle: %s\n", reason);
  return EXIT_FAILURE;
}

// Its journal and settings are this program's now; both at once would work against each other.
void askFormerEditionToQuit(const Workspace& workspace) {
  for (const AppRef& app : workspace.runningApplications()) {
    if (app->bundleIdentifier() == names::formerIdentifier) app->terminate();
  }
}

} // namespace

bool VantleApp::hasArgument(std::string_view wanted) const {
  const std::span<char*> arguments(m_argv, static_cast<std::size_t>(m_argc));
  return std::any_of(arguments.begin(), arguments.end(),
                     [wanted](const char* argument) { return argument == wanted; });
}

int VantleApp::run() {
  if (hasArgument("--test")) return runSelfTestMode();

  raiseDescriptorLimit();
  const XdgFolders folders = XdgFolders::fromEnvironment();
  if (hasArgument(Watchdog::helperArgument) && Watchdog::isParentsHelper()) {
    putBackLeftovers(folders, {});
    return EXIT_SUCCESS;
  }
  Watchdog watchdog;
  const SingleCopyLock lock = SingleCopyLock::acquire(folders);
  if (lock.outcome() == SingleCopyLock::Outcome::heldByOther) return EXIT_SUCCESS;
  const auto stillAtIt = [&watchdog] { watchdog.stillAtIt(); };
  putBackLeftovers(folders, stillAtIt);
  watchdog.recovered();

  sayWhatIsNotKept(folders);
  forgetEmptyNames();
  if (!hasDesktopSession()) {
    return cannotStart("there is no desktop session here (neither DISPLAY nor WAYLAND_DISPLAY is set).");
  }
  std::optional<ToolkitGuard> startGuard([] {
    return cannotStart("the desktop session that DISPLAY or WAYLAND_DISPLAY names cannot be reached.");
  });
  QGuiApplication::setDesktopFileName(names::identifier);
  QGuiApplication::setApplicationDisplayName(names::display);
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
  DesktopCatalog catalog(folders.allData());
  AppDelegate delegate(loop, machine->machine(), loginItem, catalog);
  QObject::connect(&application, &QCoreApplication::aboutToQuit, &application, [&] {
    delegate.applicationWillTerminate(stillAtIt);
    watchdog.putBack();
  });
  const ExitGuard guard([&] { delegate.applicationWillTerminate(stillAtIt); });
  watchdog.maySlow();
  delegate.applicationDidFinishLaunching();
  return QGuiApplication::exec();
}

} // namespace vantle
