// SPDX-License-Identifier: MIT
#include "app/VantleApp.h"

#include "app/AppDelegate.h"
#include "app/ExitGuard.h"
#include "app/SelfTestMode.h"
#include "app/ToolkitGuard.h"
#include "app/Watchdog.h"
#include "base/Names.h"
#include "desktop/Desktop.h"
#include "desktop/QtEventLoop.h"
#include "engine/Backgrounder.h"
#include "platform/Platform.h"

#include <QGuiApplication>
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vantle {

namespace {

// Before anything that can hang, abort or be refused: what an earlier run left slowed is put back even where
// no desktop is (on a console after the session died, say).
void putBackLeftovers(Platform& platform, const std::function<void()>& stillAtIt) {
  const std::unique_ptr<OwnedMachine> owned = platform.recoveryMachine();
  const Machine machine = owned->machine();
  Backgrounder leftovers(machine);
  leftovers.recover();
  machine.band.onLateBirths([&leftovers] { leftovers.sweep(0); });
  letAllComeBack(machine.band, stillAtIt);
  machine.band.onLateBirths({});
}

void sayWhatIsNotKept(const Platform& platform) {
  const std::optional<std::string> folder = platform.foreignFolder();
  if (!folder) return;
  std::fprintf(stderr, "vantle: %s is, or could be, somebody else's: nothing is kept there.\n",
               folder->c_str());
}

int cannotStart(const std::string& reason) {
  std::fprintf(stderr, "vantle: %s\n", reason.c_str());
  return EXIT_FAILURE;
}

// Its journal and settings are this program's now; both at once would work against each other.
void askFormerEditionToQuit(const Workspace& workspace) {
  for (const AppRef& app : workspace.runningApplications()) {
    if (app->bundleIdentifier() == names::formerIdentifier) app->terminate();
  }
}

// What is to be opened at login: the command that became this program, which hands over its whole path.
std::string startedAs(const char* name) {
  return *name == '/' ? std::string(name) : QCoreApplication::applicationFilePath().toStdString();
}

} // namespace

bool VantleApp::hasArgument(std::string_view wanted) const {
  const std::span<char*> arguments(m_argv, static_cast<std::size_t>(m_argc));
  return std::any_of(arguments.begin(), arguments.end(),
                     [wanted](const char* argument) { return argument == wanted; });
}

int VantleApp::run() {
  if (hasArgument("--test")) return runSelfTestMode();

  const std::unique_ptr<Platform> platform = Platform::ofThisSystem();
  platform->outliveReaders();
  platform->raiseDescriptorLimit();
  if (hasArgument(Watchdog::helperArgument) && platform->isStartedByItself()) {
    putBackLeftovers(*platform, {});
    return EXIT_SUCCESS;
  }
  Watchdog watchdog(platform->mainThread());
  if (!platform->becomeOnlyCopy()) return EXIT_SUCCESS;
  const auto stillAtIt = [&watchdog] { watchdog.stillAtIt(); };
  putBackLeftovers(*platform, stillAtIt);
  watchdog.recovered();

  sayWhatIsNotKept(*platform);
  if (const auto reason = platform->whyNoDesktop()) return cannotStart(*reason);
  std::optional<ToolkitGuard> startGuard([&] { return cannotStart(platform->whyNotReached()); });
  QGuiApplication::setDesktopFileName(names::identifier);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  std::unique_ptr<Registration> toolkitChoice = Desktop::chooseToolkit();
  QGuiApplication application(m_argc, m_argv);
  toolkitChoice.reset();
  startGuard.reset();
  const auto quit = [] { QCoreApplication::exit(EXIT_SUCCESS); };
  QtEventLoop loop;
  const std::unique_ptr<OwnedMachine> machine = platform->desktopMachine(loop, startedAs(m_argv[0]), quit);
  askFormerEditionToQuit(machine->machine().workspace);

  AppDelegate delegate(loop, *machine);
  QObject::connect(&application, &QCoreApplication::aboutToQuit, &application, [&] {
    delegate.applicationWillTerminate(stillAtIt);
    watchdog.putBack();
  });
  const ExitGuard guard(
      *platform,
      [&] {
        delegate.leaveViews();
        delegate.applicationWillTerminate(stillAtIt);
      },
      [&watchdog] { watchdog.putBackWithoutMain(); });
  watchdog.maySlow();
  delegate.applicationDidFinishLaunching();
  // Everything is put back on the way out, as at any other end. A signal that arrives meanwhile is only
  // noted.
  const std::unique_ptr<Registration> asked = platform->onAskedToEnd(loop, quit);
  return QGuiApplication::exec();
}

} // namespace vantle
