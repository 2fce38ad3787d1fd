// SPDX-License-Identifier: MIT
// The tray icon and the panel, as the shell has them, over a simulated desktop. Says on its output what
// happens ("ready PLUGIN" with the toolkit's plugin, "opened X Y WIDTH HEIGHT", "moved X Y WIDTH HEIGHT",
// "closed", "menu X Y WIDTH HEIGHT", "discarded", "settings", "quit"), and does what it is told on its input
// ("boost", "stop", "scheme", answered with "scheme dark|light ICONTHEME", "state", answered with "state
// APP|idle on|off" for the Boost app and whether Boosts start by themselves), saying "done" with it
// afterwards.
#include "desktop/Desktop.h"
#include "desktop/QtEventLoop.h"
#include "engine/Engine.h"
#include "look/Appearance.h"
#include "panel/PanelController.h"
#include "panel/PanelWindow.h"
#include "panel/TrayItem.h"
#include "platform/simulated/SampleDesktop.h"

#include <QGuiApplication>
#include <QIcon>
#include <QQuickWindow>
#include <QSocketNotifier>
#include <cstdio>
#include <iostream>
#include <string>
#include <unistd.h>

namespace {

using namespace vantle;

void say(const std::string& line) {
  std::puts(line.c_str());
  std::fflush(stdout);
}

std::string numbers(const QRect& rect) {
  return std::to_string(rect.x()) + " " + std::to_string(rect.y()) + " " + std::to_string(rect.width()) +
         " " + std::to_string(rect.height());
}

} // namespace

int main(int argc, char** argv) {
  QGuiApplication::setQuitOnLastWindowClosed(false);
  std::unique_ptr<Registration> toolkitChoice = Desktop::chooseToolkit();
  QGuiApplication application(argc, argv);
  toolkitChoice.reset();
  SimulatedMachine machine;
  AppSettings settings(machine.defaults);
  QtEventLoop loop;
  const std::unique_ptr<Desktop> desktop = Desktop::make(loop);
  Appearance appearance(desktop->scheme());
  appearance.apply(AppearanceMode::system);
  Engine engine(machine.ports(), settings);
  const SampleDesktop sample = openSampleDesktop(machine);
  PanelController panel(
      engine, {settings, desktop->icons(), desktop->heap(), desktop->words()}, desktop->panelSurface(),
      [] { say("settings"); },
      [] {
        say("quit");
        QCoreApplication::quit();
      });
  QObject::connect(&panel, &PanelController::opened, [&panel] {
    say("opened " + numbers(panel.window()->geometry()));
    const auto moved = [&panel] { say("moved " + numbers(panel.window()->geometry())); };
    QObject::connect(panel.window(), &QWindow::xChanged, &panel, moved);
    QObject::connect(panel.window(), &QWindow::yChanged, &panel, moved);
  });
  QObject::connect(&panel, &PanelController::closed, [] { say("closed"); });
  QObject::connect(&panel.menu(), &IconMenu::opened,
                   [&panel] { say("menu " + numbers(panel.menu().window()->geometry())); });
  QObject::connect(&panel, &PanelController::discarded, [] { say("discarded"); });
  const TrayItem tray(engine, panel, desktop->tray());
  const std::unique_ptr<Registration> activation =
      desktop->activation().answer({.show = [&panel] { panel.show(); },
                                    .settings = [&panel] { panel.openSettings(); },
                                    .quit = [&panel] { panel.quit(); }});

  QSocketNotifier input(STDIN_FILENO, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, [&] {
    std::string line;
    if (!std::getline(std::cin, line)) {
      input.setEnabled(false); // nobody tells any more
      return;
    }
    if (line == "boost") machine.activate(sample.game);
    if (line == "stop") engine.stopBoost();
    if (line == "state") {
      const AppRef& game = engine.activeGame.get();
      say("state " + (game ? game->localizedName().value_or("") : "idle") +
          (engine.automatic.get() ? " on" : " off"));
    }
    if (line == "scheme") {
      desktop->icons().choose();
      say(std::string("scheme ") + (desktop->scheme().isDark() ? "dark " : "light ") +
          QIcon::themeName().toStdString());
    }
    say("done " + line);
  });
  say("ready " + QGuiApplication::platformName().toStdString());
  return QGuiApplication::exec();
}
