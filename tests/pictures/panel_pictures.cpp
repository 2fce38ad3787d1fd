// SPDX-License-Identifier: MIT
// Draws the panel in every state, light and dark, in every accent, and checks that its texts can be read.
#include "desktop/Desktop.h"
#include "desktop/QtEventLoop.h"
#include "engine/Engine.h"
#include "look/Appearance.h"
#include "look/Colors.h"
#include "panel/PanelController.h"
#include "panel/PanelWindow.h"
#include "platform/simulated/SampleDesktop.h"
#include "tests/pictures/Readable.h"

#include <QFont>
#include <QGuiApplication>
#include <QQuickItem>
#include <functional>
#include <string>

namespace {

using namespace vantle;

constexpr int leastTexts = 9;

struct State {
  const char* name;
  std::function<void(SimulatedMachine&, Engine&, SampleDesktop&)> prepare;
};

const State states[] = {
    {"first-start", [](auto&, auto&, auto&) {}},
    {"idle", [](auto& machine, auto&, auto& sample) { sample = openSampleDesktop(machine); }},
    {"idle-high",
     [](auto& machine, auto&, auto& sample) {
       sample = openSampleDesktop(machine);
       machine.pressure.kernelLevel = 2;
     }},
    {"idle-critical",
     [](auto& machine, auto& engine, auto& sample) {
       sample = openSampleDesktop(machine);
       machine.pressure.kernelLevel = 4;
       engine.setAutomatic(false);
     }},
    {"boost",
     [](auto& machine, auto&, auto& sample) {
       sample = openSampleDesktop(machine);
       machine.activate(sample.game);
     }},
    {"boost-nothing",
     [](auto& machine, auto&, auto&) {
       machine.launch({.name = "Asteroids",
                       .bundlePath = "/games/asteroids.desktop",
                       .category = "public.app-category.games"},
                      Opening::inFront);
     }},
    {"boost-many",
     [](auto& machine, auto&, auto& sample) {
       for (int i = 1; i <= 40; ++i) {
         const std::string name = i % 5 == 0 ? "An app with a name that is longer than any line of the panel"
                                             : "App " + std::to_string(i);
         machine.launch({.name = name, .footprint = static_cast<std::uint64_t>(i) * 7'000'000},
                        Opening::inBackground);
       }
       sample = openSampleDesktop(machine);
       machine.pressure.kernelLevel = 4;
       machine.activate(sample.game);
     }},
    {"names",
     [](auto& machine, auto&, auto&) {
       machine.launch({.name = "שלום עולם"}, Opening::inBackground);
       machine.launch({.name = "Ημερολόγιο и Калькулятор"}, Opening::inBackground);
       machine.launch({.name = std::string(10'000, 'W')}, Opening::inBackground);
       machine.launch({.name = "tricky\u202Ename\nwith\tcontrols"}, Opening::inBackground);
       machine.launch({.name = "A game whose name is far too long for the panel to show in full",
                       .bundlePath = "/games/asteroids.desktop",
                       .category = "public.app-category.games"},
                      Opening::inFront);
     }},
};

// One picture; false when it could not be made or a text in it cannot be read.
bool draw(const State& state, AppearanceMode mode, AccentTheme accent, const QString& path) {
  SimulatedMachine machine;
  AppSettings settings(machine.defaults);
  QtEventLoop loop;
  const std::unique_ptr<Desktop> desktop = Desktop::make(loop);
  Appearance appearance(desktop->scheme());
  appearance.apply(mode);
  settings.accent.set(accent);
  Engine engine(machine.ports(), settings);
  SampleDesktop sample;
  state.prepare(machine, engine, sample);
  PanelController panel(
      engine, {settings, desktop->icons(), desktop->heap(), desktop->words()}, desktop->panelSurface(), [] {},
      [] {});
  bool shown = false;
  QObject::connect(&panel, &PanelController::opened, &panel, [&shown] { shown = true; });
  panel.show();
  if (!pictures::waitFor([&shown] { return shown; })) return false;
  return pictures::keep(*panel.window()->view(), panel.window()->grabWindow(), path, leastTexts);
}

} // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" VANTLE_PICTURE_SCREEN);
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  const QGuiApplication application(argc, argv);
  QGuiApplication::setFont(QFont("Inter"));
  std::vector<pictures::Subject> subjects;
  for (const State& state : states) {
    const std::string name = state.name;
    subjects.push_back({name, name == "idle" || name == "boost"});
  }
  return pictures::drawAll(argc > 1 ? argv[1] : ".", "panel", subjects,
                           [](std::size_t at, AppearanceMode mode, AccentTheme accent, const QString& path) {
                             return draw(states[at], mode, accent, path);
                           });
}
