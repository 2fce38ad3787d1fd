// SPDX-License-Identifier: MIT
// Draws the panel in every state, light and dark, in some accents, and checks that its texts can be read: a
// contrast of 4.5 to 1 between each text's colour and the ground that the picture shows under it.
#include "engine/Engine.h"
#include "look/Appearance.h"
#include "look/Colors.h"
#include "panel/PanelController.h"
#include "panel/PanelWindow.h"
#include "platform/simulated/SampleDesktop.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QHash>
#include <QQuickItem>
#include <QTimer>
#include <cmath>
#include <cstdio>
#include <functional>
#include <string>

namespace {

using namespace vantle;

constexpr double leastContrast = 4.5;

double linear(double component) {
  return component <= 0.04045 ? component / 12.92 : std::pow((component + 0.055) / 1.055, 2.4);
}

double luminance(const QColor& color) {
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) + 0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
  const double a = luminance(one);
  const double b = luminance(other);
  return (std::max(a, b) + 0.05) / (std::min(a, b) + 0.05);
}

// What most of the area's rim shows: the ground under a text.
QColor groundOf(const QImage& picture, const QRect& area) {
  QHash<QRgb, int> counts;
  QRgb most = 0;
  for (int y = area.top(); y <= area.bottom(); ++y) {
    for (int x = area.left(); x <= area.right(); ++x) {
      const bool onRim = std::min({x - area.left(), y - area.top(), area.right() - x, area.bottom() - y}) < 2;
      if (!onRim) continue;
      const QRgb pixel = picture.pixel(x, y);
      if (++counts[pixel] > counts.value(most)) most = pixel;
    }
  }
  return QColor::fromRgb(most);
}

struct Findings {
  int texts = 0;
  int unreadable = 0;
  double leastOnAccent = 21;
};

void check(const QQuickItem& item, const QImage& picture, Findings& findings) {
  if (!item.isVisible()) return;
  const QString text = item.inherits("QQuickText") ? item.property("text").toString() : QString();
  if (!text.isEmpty()) {
    const qreal scale = picture.width() / item.window()->contentItem()->width();
    QRectF scene = item.mapRectToScene(item.boundingRect()).adjusted(-2, -2, 2, 2);
    for (const QQuickItem* each = &item; each != nullptr; each = each->parentItem()) {
      if (each->clip()) scene &= each->mapRectToScene(each->boundingRect()); // the rest is scrolled away
    }
    const QRect area = QRectF(scene.topLeft() * scale, scene.size() * scale).toAlignedRect() & picture.rect();
    const auto color = item.property("color").value<QColor>();
    const double found = area.isEmpty() ? 21 : contrast(color, groundOf(picture, area));
    ++findings.texts;
    // White on the accent is how prominent buttons are to look, whatever the accent.
    const bool onAccent = color == QColor(Qt::white) && text.startsWith("Boost ");
    const bool turnOff = color == QColor(Qt::white) && text == "Turn off Boost";
    if (onAccent || turnOff) {
      findings.leastOnAccent = std::min(findings.leastOnAccent, found);
    } else if (found < leastContrast) {
      ++findings.unreadable;
      std::printf("  hard to read (%.2f): %s\n", found, qPrintable(text));
    }
  }
  for (const QQuickItem* child : item.childItems()) check(*child, picture, findings);
}

bool waitFor(const std::function<bool()>& holds) {
  const QDeadlineTimer guard(30'000);
  QTimer alarm; // ends the waiting for events when there are none
  alarm.start(1'000);
  while (!holds() && !guard.hasExpired()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  return holds();
}

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
  Appearance appearance;
  appearance.apply(mode);
  settings.accent.set(accent);
  Engine engine(machine.ports(), settings);
  SampleDesktop sample;
  state.prepare(machine, engine, sample);
  PanelController panel(
      engine, settings, [] {}, [] {});
  bool shown = false;
  QObject::connect(&panel, &PanelController::opened, &panel, [&shown] { shown = true; });
  panel.show();
  if (!waitFor([&shown] { return shown; })) return false;
  const QImage picture = panel.window()->grabWindow();
  if (!picture.save(path)) return false;
  Findings findings;
  check(*panel.window()->view(), picture, findings);
  const bool good = findings.texts > 8 && findings.unreadable == 0;
  std::printf("%s %s: %d texts", good ? "ok" : "NOT OK", qPrintable(QFileInfo(path).fileName()),
              findings.texts);
  if (findings.leastOnAccent < 21) std::printf(", white on the accent %.2f", findings.leastOnAccent);
  std::printf("\n");
  return good;
}

} // namespace

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  qunsetenv("DBUS_SESSION_BUS_ADDRESS");
  const QGuiApplication application(argc, argv);
  QGuiApplication::setFont(QFont("Inter"));
  const QDir folder(argc > 1 ? argv[1] : ".");
  if (!folder.mkpath(".")) return 1;
  const QString scale = qEnvironmentVariable("QT_SCALE_FACTOR", "1");
  bool good = true;
  for (const AppearanceMode mode : {AppearanceMode::light, AppearanceMode::dark}) {
    const std::string look(rawValue(mode));
    const auto pathOf = [&](const std::string& what) {
      return folder.filePath(QStringLiteral("panel-%1-%2-%3.png")
                                 .arg(QString::fromStdString(what), QString::fromStdString(look), scale));
    };
    for (const State& state : states) good = draw(state, mode, AccentTheme::blue, pathOf(state.name)) && good;
    if (scale != "1") continue;
    for (const AccentTheme accent : allAccentThemes) {
      for (const int index : {1, 4}) {
        const State& state = states[index];
        good = draw(state, mode, accent, pathOf(state.name + ("-" + std::string(rawValue(accent))))) && good;
      }
    }
  }
  return good ? 0 : 1;
}
