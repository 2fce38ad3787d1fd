// SPDX-License-Identifier: MIT
#include "tests/unit/panel/PanelFixture.h"

#include "look/Colors.h"
#include "look/DisplayText.h"
#include "panel/TrayItem.h"
#include "tests/unit/look/ScreenReader.h"

#include <QDateTime>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLocale>
#include <QScreen>
#include <algorithm>
#include <chrono>
#include <gmock/gmock.h>

namespace vantle {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;

class Panel : public PanelFixture {
 protected:
  SampleDesktop desktop;

  void openWithSample() {
    desktop = openSampleDesktop(machine);
    open();
  }
  void openBoosting() {
    desktop = openSampleDesktop(machine);
    machine.activate(desktop.game);
    open();
  }
  void key(int code, const QString& text = {}) {
    QKeyEvent down(QEvent::KeyPress, code, Qt::NoModifier, text);
    QKeyEvent up(QEvent::KeyRelease, code, Qt::NoModifier, text);
    QCoreApplication::sendEvent(panel.window(), &down);
    QCoreApplication::sendEvent(panel.window(), &up);
  }
  // What has the keyboard, by what it is called.
  QString place() const {
    const QQuickItem* item = panel.window()->activeFocusItem();
    if (item == nullptr) return "nothing";
    for (const char* property : {"label", "name"}) {
      if (const QVariant called = item->property(property); called.isValid()) return called.toString();
    }
    return {};
  }
  bool becomesPlace(const QString& wanted) {
    return until([&] { return place() == wanted; });
  }
  // How often the machine was asked who is heard, since the last time.
  long audioProbes() {
    const std::vector<std::string> trace = machine.calls.takeTrace();
    return std::count_if(trace.begin(), trace.end(),
                         [](const std::string& line) { return line.starts_with("audio."); });
  }
};

TEST_F(Panel, ShowsOnlyTheIdleCardAndTheMacWhenNoAppWasEverInFront) {
  machine.processes.find(machine.host.self)->footprint = 48'200'000;
  open();
  EXPECT_EQ(texts(), (QStringList{"vantle", "Ready to boost",
                                  "Starts on its own for games and any app you add, like your editor.",
                                  "Boost off", "Your Mac", "Memory pressure", "Normal", "Vantle itself",
                                  "46 MB memory", "Start Boost automatically", "Quit Vantle"}));
}

TEST_F(Panel, OffersToBoostTheAppInFront) {
  openWithSample();
  const QStringList shown = texts();
  EXPECT_TRUE(shown.contains("In front: Web Browser"));
  EXPECT_TRUE(shown.contains("Boost Web Browser now"));
  EXPECT_TRUE(shown.contains("Always boost Web Browser"));
  EXPECT_FALSE(shown.contains("Turn off Boost"));
}

TEST_F(Panel, HasNoFrontBlockForAnAppWithoutAName) {
  machine.launch({.bundleID = "org.example.nameless"}, Opening::inFront);
  open();
  ASSERT_NE(engine.lastFrontmost.get(), nullptr);
  EXPECT_TRUE(texts().filter("In front").isEmpty());
  EXPECT_TRUE(texts().filter("Always boost").isEmpty());
}

TEST_F(Panel, ShowsWhatABoostDoes) {
  openBoosting();
  EXPECT_EQ(texts(), (QStringList{"vantle",
                                  "Asteroids",
                                  "Boost on",
                                  "4",
                                  "in background",
                                  "1",
                                  "protected",
                                  "Normal",
                                  "memory pressure",
                                  "In background",
                                  "Memory",
                                  "Web Browser",
                                  "1.17 GB",
                                  "Chat",
                                  "347 MB",
                                  "Mail",
                                  "236 MB",
                                  "Text Editor",
                                  "58 MB",
                                  "Not touched",
                                  QString::fromStdString(engine.protectedInUse().at(0)),
                                  "Start Boost automatically",
                                  "Turn off Boost",
                                  "Quit Vantle"}));
}

TEST_F(Panel, SaysSoWhenNothingIsInTheBackground) {
  machine.launch({.name = "Asteroids",
                  .bundlePath = "/games/asteroids.desktop",
                  .category = "public.app-category.games"},
                 Opening::inFront);
  open();
  EXPECT_TRUE(texts().contains("No apps in the background right now."));
  EXPECT_FALSE(texts().contains("Not touched"));
}

TEST_F(Panel, NamesThePressure) {
  machine.pressure.kernelLevel = 4;
  open();
  EXPECT_TRUE(texts().contains("Critical"));
  panel.close();
  machine.pressure.kernelLevel = 2;
  open();
  EXPECT_TRUE(texts().contains("High"));
  EXPECT_EQ(panel.window()->model().pressure(), PanelModel::Warning);
}

TEST_F(Panel, ColorsThePressureWhileIdleAndTellsItInTheFiguresDuringABoost) {
  const bool dark = QGuiApplication::palette().color(QPalette::Window).lightness() < 128;
  const Colors& colors = colorsFor(dark);
  const std::pair<int, QColor> levels[] = {{1, colors.green}, {2, colors.orange}, {4, colors.red}};
  desktop = openSampleDesktop(machine);
  for (const auto& [level, color] : levels) {
    machine.pressure.kernelLevel = level;
    open();
    const QQuickItem* word = textItem(panel.window()->model().pressureWord());
    ASSERT_NE(word, nullptr);
    EXPECT_EQ(word->property("color").value<QColor>(), color) << level;
    panel.close();
  }
  machine.activate(desktop.game);
  open();
  const QStringList shown = texts();
  EXPECT_EQ(shown.indexOf("memory pressure"), shown.indexOf("Critical") + 1);
  EXPECT_FALSE(shown.contains("Memory pressure"));
}

TEST_F(Panel, ShowsNothingAsItsOwnMemoryWhenItCannotBeRead) {
  machine.processes.find(machine.host.self)->footprint = 48'200'000;
  machine.calls.refuse(Operation::readFootprint, machine.host.self);
  open();
  EXPECT_TRUE(texts().contains("Zero KB memory"));
}

TEST_F(Panel, FollowsTheEngineAtOnce) {
  openWithSample();
  machine.activate(desktop.game);
  EXPECT_TRUE(texts().contains("Boost on"));
  EXPECT_TRUE(texts().contains("Mail"));
  engine.stopBoost();
  EXPECT_TRUE(texts().contains("Ready to boost"));
  EXPECT_FALSE(texts().contains("Turn off Boost"));
}

TEST_F(Panel, ReadsTheMachineWhenItAppearsAndWhenTheManagedAppsChangeOnly) {
  machine.calls.startTrace();
  openWithSample();
  EXPECT_EQ(audioProbes(), 1);
  engine.setAutomatic(false);
  machine.activate(desktop.mail);
  settings.accent.set(AccentTheme::pink);
  EXPECT_EQ(audioProbes(), 0);
  panel.close();
  engine.startBoost(desktop.editor);
  const long ofTheEngine = audioProbes();
  engine.stopBoost();
  EXPECT_EQ(audioProbes(), 0);
  open();
  EXPECT_EQ(audioProbes(), 1);
  int changes = 0;
  const auto observer = engine.managedNames.observe([&changes] { ++changes; });
  engine.startBoost(desktop.editor);
  EXPECT_EQ(audioProbes(), ofTheEngine + changes);
  EXPECT_GT(changes, 0);
}

TEST_F(Panel, BoostsTheAppInFront) {
  openWithSample();
  engine.dismissedPID = desktop.browser->processIdentifier();
  press("Boost Web Browser now");
  EXPECT_EQ(engine.activeGame.get(), desktop.browser);
  EXPECT_EQ(engine.dismissedPID, std::nullopt);
  EXPECT_TRUE(texts().contains("Boost on"));
}

TEST_F(Panel, DoesNotBoostAnAppThatHasEnded) {
  openWithSample();
  const AppRef browser = desktop.browser;
  machine.delivery = EventDelivery::onDemand; // ended, but nobody has heard of it yet
  machine.quit(desktop.browser);
  panel.window()->model().boostNow();
  EXPECT_EQ(engine.activeGame.get(), nullptr);
}

TEST_F(Panel, AlwaysBoostsTheAppInFront) {
  openWithSample();
  press("Always boost Web Browser");
  EXPECT_THAT(settings.userGames.get(), ElementsAre("org.example.browser"));
  EXPECT_EQ(engine.activeGame.get(), desktop.browser);
}

TEST_F(Panel, TurnsTheBoostOffForGood) {
  openBoosting();
  press("Turn off Boost");
  EXPECT_EQ(engine.activeGame.get(), nullptr);
  EXPECT_EQ(engine.dismissedPID, desktop.game->processIdentifier());
  machine.activate(desktop.browser);
  machine.activate(desktop.game);
  EXPECT_EQ(engine.activeGame.get(), nullptr);
}

TEST(PauseText, NamesTheDayUnlessItIsToday) {
  const QLocale before;
  QLocale::setDefault(QLocale::c());
  const QDateTime end({2026, 11, 24}, {0, 5});
  const Pause pause{.end = std::chrono::system_clock::from_time_t(end.toSecsSinceEpoch())};
  EXPECT_EQ(pauseText(pause, {2026, 11, 24}), "Paused until 00:05");
  EXPECT_EQ(pauseText(pause, {2026, 11, 23}), "Paused until Tue 24 Nov, 00:05");
  EXPECT_EQ(pauseText(std::nullopt, {2026, 11, 23}), "");
  QLocale::setDefault(before);
}

TEST_F(Panel, ShowsUntilWhenBoostsArePaused) {
  openWithSample();
  engine.startPause(std::chrono::minutes(30));
  const QDateTime end = QDateTime::fromSecsSinceEpoch(
      std::chrono::system_clock::to_time_t(machine.clock.now() + std::chrono::minutes(30)));
  const QString line = pauseText(engine.pause.get());
  EXPECT_TRUE(line.endsWith(end.toString("HH:mm"))) << line.toStdString();
  EXPECT_TRUE(texts().contains(line)) << texts().join('|').toStdString();
  machine.activate(desktop.game);
  EXPECT_TRUE(texts().contains(line));
  press("End pause");
  EXPECT_FALSE(engine.pause.get());
  EXPECT_TRUE(texts().filter("Paused").isEmpty());
  EXPECT_TRUE(texts().contains("Boost on")) << "the game is in front";
}

// What the icon was last given, and what it may do.
class LastFace final : public Tray {
 public:
  QString state;
  QString symbol;
  std::vector<TrayEntry> menu;
  TrayActions actions;

  std::unique_ptr<TrayIcon> add(TrayActions given) override {
    actions = std::move(given);
    return std::make_unique<Icon>(*this);
  }

  QStringList shownMenu() const {
    QStringList labels;
    for (const TrayEntry& entry : menu) {
      if (entry.isShown) labels.append(entry.label + (entry.isChecked.value_or(false) ? " (on)" : ""));
    }
    return labels;
  }
  void choose(const QString& label) const {
    const auto entry =
        std::find_if(menu.begin(), menu.end(), [&](const TrayEntry& each) { return each.label == label; });
    ASSERT_TRUE(entry != menu.end() && entry->chosen) << label.toStdString();
    entry->chosen(std::nullopt);
  }

 private:
  class Icon final : public TrayIcon {
   public:
    explicit Icon(LastFace& tray) : m_tray(tray) {}
    void show(const TrayFace& face) override {
      m_tray.state = face.state;
      m_tray.symbol = face.symbol;
    }
    void offer(std::vector<TrayEntry> entries) override { m_tray.menu = std::move(entries); }

   private:
    LastFace& m_tray;
  };
};

TEST_F(Panel, ItsTrayIconSaysThatBoostsArePaused) {
  desktop = openSampleDesktop(machine);
  LastFace tray;
  const TrayItem item(engine, panel, tray);
  EXPECT_EQ(tray.state, "Boost off");
  EXPECT_EQ(tray.symbol, "bolt");
  engine.startPause(std::chrono::minutes(30));
  EXPECT_TRUE(tray.state.startsWith("Boost off \u00B7 Paused until ")) << tray.state.toStdString();
  engine.endPause();
  EXPECT_EQ(tray.state, "Boost off");
  machine.activate(desktop.game);
  EXPECT_EQ(tray.state, "Boost on \u00B7 Asteroids");
  EXPECT_EQ(tray.symbol, "bolt.fill");
}

TEST_F(Panel, ItsTrayMenuSaysThatBoostsArePausedAndEndsThePause) {
  desktop = openSampleDesktop(machine);
  LastFace tray;
  const TrayItem item(engine, panel, tray);
  const QStringList idle = tray.shownMenu();
  engine.startPause(std::chrono::minutes(30));
  ASSERT_EQ(tray.shownMenu().size(), idle.size() + 3);
  EXPECT_TRUE(tray.shownMenu()[0].startsWith("Boost off \u00B7 Paused until "));
  EXPECT_EQ(tray.shownMenu().mid(1), QStringList({"End pause", ""}) + idle);
  tray.choose("End pause");
  EXPECT_FALSE(engine.pause.get());
  EXPECT_EQ(tray.shownMenu(), idle);
}

TEST_F(Panel, ItsTrayMenuIsNotMadeWideByALongName) {
  LastFace tray;
  const TrayItem item(engine, panel, tray);
  machine.launch({.name = std::string(150, 'W'),
                  .bundlePath = "/usr/share/applications/wide.desktop",
                  .category = "public.app-category.games"},
                 Opening::inFront);
  ASSERT_TRUE(engine.activeGame.get());
  EXPECT_EQ(tray.shownMenu()[0], "Boost on \u00B7 " + QString(39, u'W') + QChar(0x2026));
}

TEST_F(Panel, CallsAnAppByItsProgramWhereNothingOfItsNameCanBeSeen) {
  machine.launch({.name = "\u200B\u2060", .executablePath = "/usr/bin/hidden"}, Opening::inFront);
  open();
  EXPECT_TRUE(texts().contains("In front: hidden")) << texts().join('|').toStdString();
}

TEST_F(Panel, ShowsNoEmptyLineForAnAppWithoutAnyNameToBeSeen) {
  machine.launch({.name = "\u3164", .executablePath = "/usr/bin/\u00A0\u3164"}, Opening::inFront);
  open();
  EXPECT_TRUE(texts().contains("In front: \u201C\u201D")) << texts().join('|').toStdString();
}

TEST_F(Panel, ItsTrayMenuNamesTheBoostAppAndTurnsTheBoostOff) {
  desktop = openSampleDesktop(machine);
  LastFace tray;
  const TrayItem item(engine, panel, tray);
  const QStringList idle{"Open Vantle", "Settings", "Start Boost automatically (on)", "", "Quit Vantle"};
  EXPECT_EQ(tray.shownMenu(), idle);
  machine.activate(desktop.game);
  EXPECT_EQ(tray.shownMenu(), QStringList({"Boost on \u00B7 Asteroids", "Turn off Boost", ""}) + idle);
  tray.choose("Turn off Boost");
  EXPECT_EQ(engine.activeGame.get(), nullptr);
  EXPECT_EQ(engine.dismissedPID, desktop.game->processIdentifier());
  EXPECT_EQ(tray.shownMenu(), idle);
  tray.choose("Start Boost automatically");
  EXPECT_FALSE(engine.automatic.get());
  EXPECT_TRUE(tray.shownMenu().contains("Start Boost automatically"));
}

// Of a tray that leaves the menu to the program.
TEST_F(Panel, ItsTrayMenuIsShownBesideTheIconAndLeadsOn) {
  LastFace tray;
  const TrayItem item(engine, panel, tray);
  const ScreenReader reader;
  desktop = openSampleDesktop(machine);
  machine.activate(desktop.game);
  const QRect icon(10, 4, 22, 22);
  tray.actions.menuWanted(icon);
  QQuickWindow* const window = panel.menu().window();
  ASSERT_TRUE(window != nullptr && window->isVisible());
  EXPECT_EQ(window->y(), icon.bottom() + 5);
  EXPECT_THAT(
      ScreenReader::linesOf(window),
      testing::IsSupersetOf({"other: Boost on · Asteroids", "other: Turn off Boost", "other: Open Vantle",
                             "other: Start Boost automatically, checked", "other: Quit Vantle"}));
  tray.actions.menuWanted(icon);
  EXPECT_FALSE(window->isVisible()) << "the same click once more";
}

TEST_F(Panel, TheMiddleButtonOnItsTrayIconTurnsBoostOnForTheAppInFrontAndOff) {
  LastFace tray;
  const TrayItem item(engine, panel, tray);
  tray.actions.middleClicked();
  EXPECT_EQ(engine.activeGame.get(), nullptr) << "nothing was ever in front";
  desktop = openSampleDesktop(machine);
  tray.actions.middleClicked();
  EXPECT_EQ(engine.activeGame.get(), desktop.browser);
  tray.actions.middleClicked();
  EXPECT_EQ(engine.activeGame.get(), nullptr);
}

TEST_F(Panel, SwitchesAutomaticBoost) {
  open();
  press("Start Boost automatically");
  EXPECT_FALSE(engine.automatic.get());
  EXPECT_FALSE(itemNamed("Start Boost automatically")->property("checked").toBool());
  engine.setAutomatic(true);
  EXPECT_TRUE(itemNamed("Start Boost automatically")->property("checked").toBool());
}

TEST_F(Panel, OpensSettingsAndQuitsAndIsClosedThen) {
  open();
  press("Settings");
  EXPECT_EQ(settingsOpened, 1);
  EXPECT_FALSE(panel.isOpen());
  open();
  press("Quit Vantle");
  EXPECT_EQ(quits, 1);
  EXPECT_FALSE(panel.isOpen());
}

TEST_F(Panel, ClosesOnEscapeAndOnAClickElsewhere) {
  open();
  key(Qt::Key_Escape);
  EXPECT_FALSE(panel.isOpen());
  open();
  QMouseEvent inside(QEvent::MouseButtonPress, QPointF(3, 3), QPointF(3, 3), Qt::LeftButton, Qt::LeftButton,
                     Qt::NoModifier);
  QCoreApplication::sendEvent(panel.window(), &inside);
  EXPECT_TRUE(panel.isOpen());
  QMouseEvent outside(QEvent::MouseButtonPress, QPointF(-3, 3), QPointF(-3, 3), Qt::LeftButton,
                      Qt::LeftButton, Qt::NoModifier);
  QCoreApplication::sendEvent(panel.window(), &outside);
  EXPECT_FALSE(panel.isOpen());
  panel.toggle(); // the tray tells of the very click that closed it
  EXPECT_FALSE(panel.isOpen());
}

TEST_F(Panel, TabReachesEveryControl) {
  openWithSample();
  QStringList reached;
  for (int i = 0; i < 6; ++i) {
    key(Qt::Key_Tab);
    reached.append(panel.window()->activeFocusItem()->property("label").toString());
  }
  EXPECT_EQ(reached, (QStringList{"Settings", "Boost Web Browser now", "Always boost Web Browser",
                                  "Start Boost automatically", "Quit Vantle", "Settings"}));
  key(Qt::Key_Backtab);
  key(Qt::Key_Backtab);
  key(Qt::Key_Space);
  EXPECT_FALSE(engine.automatic.get());
}

TEST_F(Panel, KeysGoThroughTheList) {
  openBoosting();
  key(Qt::Key_Tab);
  key(Qt::Key_Tab);
  EXPECT_EQ(place(), "protected");
  key(Qt::Key_Tab);
  const auto current = [this] { return panel.window()->activeFocusItem()->property("name").toString(); };
  EXPECT_EQ(current(), "Web Browser");
  key(Qt::Key_Down);
  key(Qt::Key_Down);
  EXPECT_EQ(current(), "Mail");
  for (int i = 0; i < 9; ++i) key(Qt::Key_Down);
  EXPECT_EQ(current(), "Text Editor");
  key(Qt::Key_Home);
  EXPECT_EQ(current(), "Web Browser");
  key(Qt::Key_PageDown);
  EXPECT_EQ(current(), "Text Editor");
  key(Qt::Key_C, "c");
  EXPECT_EQ(current(), "Chat");
  key(Qt::Key_Q, "q");
  EXPECT_EQ(current(), "Chat") << "nothing begins so";
  key(Qt::Key_End);
  EXPECT_EQ(current(), "Text Editor");
  key(Qt::Key_Tab);
  EXPECT_EQ(panel.window()->activeFocusItem()->property("label").toString(), "Start Boost automatically");
  key(Qt::Key_Backtab);
  EXPECT_EQ(current(), "Text Editor");
}

TEST_F(Panel, ScrollsWithFortyApps) {
  for (int i = 0; i < 40; ++i) machine.launch({.name = "App " + std::to_string(i)}, Opening::inBackground);
  desktop = openSampleDesktop(machine);
  machine.activate(desktop.game);
  open();
  const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
  EXPECT_TRUE(available.contains(panel.window()->geometry()));
  for (int i = 0; i < 3; ++i) key(Qt::Key_Tab);
  for (int i = 0; i < 60; ++i) key(Qt::Key_Down);
  const QQuickItem* line = panel.window()->activeFocusItem();
  const QRectF shown = line->mapRectToScene(line->boundingRect());
  EXPECT_TRUE(QRectF(0, 40, 360, panel.window()->height() - 100).contains(shown));
  EXPECT_TRUE(texts().contains("Turn off Boost"));
}

TEST_F(Panel, ALineOffersToBringItsAppToTheFront) {
  openBoosting();
  for (int i = 0; i < 3; ++i) key(Qt::Key_Tab);
  key(Qt::Key_M, "m");
  ASSERT_EQ(place(), "Mail");
  key(Qt::Key_Menu);
  ASSERT_TRUE(becomesPlace("Bring to front"));
  key(Qt::Key_Escape);
  EXPECT_EQ(place(), "Mail") << "the menu is left, not the panel";
  key(Qt::Key_Return);
  ASSERT_TRUE(becomesPlace("Bring to front"));
  key(Qt::Key_Space);
  EXPECT_EQ(machine.workspace.front(), desktop.mail);
  EXPECT_FALSE(panel.isOpen());
}

TEST_F(Panel, ALineOffersToProtectItsAppForGood) {
  openBoosting();
  for (int i = 0; i < 3; ++i) key(Qt::Key_Tab);
  key(Qt::Key_M, "m");
  key(Qt::Key_Menu);
  ASSERT_TRUE(becomesPlace("Bring to front"));
  key(Qt::Key_Up);
  ASSERT_EQ(place(), "Never slow down");
  key(Qt::Key_Return);
  EXPECT_THAT(settings.protectedApps.get(), Contains("org.example.mail"));
  EXPECT_FALSE(engine.managed().contains(desktop.mail->processIdentifier()));
  EXPECT_TRUE(becomesPlace("Text Editor")) << "which stands where it stood";
  EXPECT_TRUE(panel.isOpen());
  desktop.editor->spec.canComeToFront = false;
  key(Qt::Key_Menu);
  EXPECT_TRUE(becomesPlace("Never slow down")) << "all that is left";
  key(Qt::Key_Escape);
  desktop.editor->spec.bundleID.reset();
  key(Qt::Key_Menu);
  QCoreApplication::processEvents();
  EXPECT_EQ(place(), "Text Editor") << "nothing is left, as when an app without an identifier ends";
}

TEST_F(Panel, ALineOfAnAppWithoutAnIdentifierDoesNotOfferToProtectIt) {
  openBoosting();
  desktop.mail->spec.bundleID.reset();
  for (int i = 0; i < 3; ++i) key(Qt::Key_Tab);
  key(Qt::Key_M, "m");
  key(Qt::Key_Menu);
  ASSERT_TRUE(becomesPlace("Bring to front"));
  EXPECT_EQ(itemNamed("Never slow down"), nullptr);
  key(Qt::Key_Down);
  EXPECT_EQ(place(), "Bring to front");
}

TEST_F(Panel, TheRightButtonOnALineOpensItsMenuAndAPressElsewhereLeavesIt) {
  openBoosting();
  const QQuickItem* const line = textItem("Mail");
  const QPointF there = line->mapToScene(QPointF(10, 10));
  const auto press = [this](QPointF at, Qt::MouseButton button) {
    QMouseEvent down(QEvent::MouseButtonPress, at, at, button, button, Qt::NoModifier);
    QMouseEvent up(QEvent::MouseButtonRelease, at, at, button, Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(panel.window(), &down);
    QCoreApplication::sendEvent(panel.window(), &up);
  };
  press(there, Qt::RightButton);
  const QQuickItem* const entry = itemNamed("Never slow down");
  ASSERT_NE(entry, nullptr);
  const QRectF place = entry->mapRectToScene(QRectF(0, 0, entry->width(), entry->height()));
  EXPECT_FALSE(place.intersects(line->mapRectToScene(QRectF(0, 0, line->width(), line->height()))))
      << "the line whose menu it is stays in sight";
  press(QPointF(180, 20), Qt::LeftButton);
  EXPECT_EQ(itemNamed("Never slow down"), nullptr);
  EXPECT_TRUE(panel.isOpen());
}

TEST_F(Panel, TheMenuOfALineGoesWithItsApp) {
  openBoosting();
  for (int i = 0; i < 3; ++i) key(Qt::Key_Tab);
  key(Qt::Key_C, "c");
  ASSERT_EQ(place(), "Chat");
  key(Qt::Key_Menu);
  ASSERT_TRUE(becomesPlace("Bring to front"));
  machine.quit(desktop.browser);
  ASSERT_TRUE(until([this] { return texts().filter("Web Browser").isEmpty(); }));
  EXPECT_NE(itemNamed("Bring to front"), nullptr) << "another app's end is no reason";
  machine.quit(desktop.chat);
  EXPECT_TRUE(until([this] { return itemNamed("Bring to front") == nullptr; }));
  EXPECT_TRUE(panel.isOpen());
  EXPECT_TRUE(becomesPlace("Text Editor")) << place().toStdString();
}

TEST_F(Panel, TheKeyboardBeginsAtTheTopWhenItIsOpenedAgain) {
  openBoosting();
  key(Qt::Key_Tab);
  const QString first = place();
  for (int i = 0; i < 2; ++i) key(Qt::Key_Tab);
  panel.close();
  open();
  key(Qt::Key_Tab);
  EXPECT_EQ(place(), first);
}

TEST_F(Panel, SaysWhoIsLeftAloneAndWhy) {
  desktop = openSampleDesktop(machine);
  machine.power.held = {{desktop.chat->processIdentifier(), "PreventUserIdleSystemSleep"}};
  settings.protectedApps.set({"org.example.mail", "org.example.editor"});
  machine.activate(desktop.game);
  open();
  EXPECT_EQ(panel.window()->model().leftAlone(), "Playing audio: Music\n"
                                                 "Downloading or keeping awake: Chat\n"
                                                 "On your list: Mail, Text Editor");
  key(Qt::Key_Tab);
  key(Qt::Key_Tab);
  ASSERT_EQ(place(), "protected");
  EXPECT_TRUE(until([this] { return textItem(panel.window()->model().leftAlone()) != nullptr; }));
  engine.stopBoost();
  EXPECT_EQ(panel.window()->model().leftAlone(), "");
}

TEST_F(Panel, TheKeyboardKeepsItsPlaceWhenABoostBeginsAndEnds) {
  openWithSample();
  key(Qt::Key_Tab);
  key(Qt::Key_Tab);
  ASSERT_EQ(place(), "Boost Web Browser now");
  key(Qt::Key_Return);
  EXPECT_TRUE(becomesPlace("Turn off Boost"));
  key(Qt::Key_Return);
  EXPECT_TRUE(becomesPlace("Boost Web Browser now"));
}

TEST_F(Panel, TheKeyboardStaysWithItsAppWhenTheListChanges) {
  openBoosting();
  for (int i = 0; i < 3; ++i) key(Qt::Key_Tab);
  key(Qt::Key_C, "c");
  ASSERT_EQ(place(), "Chat");
  machine.quit(desktop.browser);
  EXPECT_TRUE(until([this] { return texts().filter("Web Browser").isEmpty() && place() == "Chat"; }))
      << place().toStdString();
}

TEST_F(Panel, NobodyWhoUsesThePointerAloneSeesAFocusRing) {
  openWithSample();
  const QQuickItem* const before = panel.window()->activeFocusItem();
  machine.activate(desktop.game);
  engine.stopBoost();
  QCoreApplication::processEvents();
  EXPECT_EQ(panel.window()->activeFocusItem(), before);
}

TEST_F(Panel, SurvivesAnyName) {
  std::string endless(10'000, 'W');
  for (const std::string& name : {endless, std::string("\u202Eevil\u202C\x01\n"), std::string("שלום עולם"),
                                  std::string("<b>bold</b> %1 &amp;"), std::string("\xff\xfe")}) {
    machine.launch({.name = name, .icon = name}, Opening::inBackground);
  }
  const auto game = machine.launch(
      {.name = endless, .bundlePath = "/games/asteroids.desktop", .category = "public.app-category.games"},
      Opening::inFront);
  open();
  EXPECT_EQ(panel.window()->width(), 360);
  EXPECT_FALSE(panel.window()->grabWindow().isNull());
  EXPECT_TRUE(texts().contains("<b>bold</b> %1 &amp;"));
  engine.stopBoost();
  EXPECT_EQ(texts().filter("In front: ").size(), 1);
  machine.quit(game);
}

TEST_F(Panel, ShowsAPlaceholderForAnAppThatHasGone) {
  openBoosting();
  machine.delivery = EventDelivery::onDemand;
  machine.quit(desktop.mail);
  EXPECT_EQ(panel.window()->model().iconOf(desktop.mail->processIdentifier() + 10'000), QString());
  EXPECT_TRUE(texts().contains("Mail"));
}

TEST_F(Panel, HasNothingBeforeTheFirstOpeningAndNothingAWhileAfterTheLast) {
  EXPECT_EQ(panel.window(), nullptr);
  bool discarded = false;
  QObject::connect(&panel, &PanelController::discarded, &panel, [&discarded] { discarded = true; });
  panel.setKeepTime(std::chrono::milliseconds(10));
  open();
  panel.close();
  EXPECT_NE(panel.window(), nullptr);
  EXPECT_TRUE(until([&discarded] { return discarded; }));
  EXPECT_EQ(panel.window(), nullptr);
  engine.setAutomatic(false); // nobody listens any more
  open();
  EXPECT_TRUE(panel.isOpen());
}

TEST_F(Panel, IsTheSameEachTimeItIsMadeAnew) {
  panel.setKeepTime(std::chrono::milliseconds(0));
  int discarded = 0;
  QObject::connect(&panel, &PanelController::discarded, &panel, [&discarded] { ++discarded; });
  open();
  const QStringList first = texts();
  EXPECT_FALSE(first.isEmpty());
  for (int times = 1; times <= 3; ++times) {
    panel.close();
    ASSERT_TRUE(until([&] { return discarded == times; }));
    open();
    EXPECT_EQ(texts(), first);
  }
}

} // namespace
} // namespace vantle
