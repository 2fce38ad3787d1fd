// SPDX-License-Identifier: MIT
#import "desktop/darwin/tray/MenuBar.h"

#include "panel/TrayItem.h"
#import "platform/darwin/cocoa/Values.h"
#import "tests/unit/mac/MacFixture.h"
#include "tests/unit/panel/PanelFixture.h"

namespace vantle {
namespace {

// An item that notes what it is asked for.
class MenuBarTest : public MacTest {
 protected:
  std::unique_ptr<TrayIcon> add() {
    return bar.add({.clicked = [this](std::optional<QRect> place) { clicks.push_back(place); },
                    .middleClicked = [this] { ++middleClicks; },
                    .menuWanted = [](QRect) {}});
  }
  std::vector<TrayEntry> menu() {
    return {{.label = "First", .chosen = [this](auto pointer) { chosen.emplace_back("first", pointer); }},
            {.label = "Only to be read"},
            {},
            {.label = "Switch",
             .chosen = [this](auto pointer) { chosen.emplace_back("switch", pointer); },
             .isChecked = true},
            {.label = "Of no use",
             .chosen = [this](auto pointer) { chosen.emplace_back("hidden", pointer); },
             .isShown = false}};
  }
  void openMenu(std::function<void(NSMenu*)> whileOpen) {
    appKit.menuIsOpen = std::move(whileOpen);
    appKit.press(NSEventTypeRightMouseUp);
    turn();
  }
  static std::string faceOf(NSStatusItem* item) {
    return textOf([[[item button] image] description]).value_or("none");
  }

  MenuBar bar{loop};
  std::vector<std::optional<QRect>> clicks;
  int middleClicks = 0;
  std::vector<std::pair<std::string, std::optional<QPoint>>> chosen;
};

TEST_F(MenuBarTest, AnItemIsKeptAndTakenOutAtItsEnd) {
  std::unique_ptr<TrayIcon> item;
  @autoreleasepool {
    item = add();
  }
  ASSERT_NE(appKit.item(), nil) << "which the bar does not keep";
  EXPECT_EQ(appKit.calls, Calls{"item of length -2"}) << "square";
  item.reset();
  EXPECT_EQ(appKit.calls.back(), "item removed");
  EXPECT_EQ(appKit.item(), nil);
}

TEST_F(MenuBarTest, TheSymbolIsTheSystemsAndInTheBarsColour) {
  const auto item = add();
  item->show({.picture = {}, .state = "Boost off", .symbol = "bolt"});
  EXPECT_EQ(faceOf(appKit.item()), "bolt, Boost off, in the bar's colour");
  EXPECT_EQ(textOf([[appKit.item() button] toolTip]), "Boost off");
  EXPECT_EQ(textOf([[appKit.item() button] title]), "");
  item->show({.picture = {}, .state = "Boost on", .symbol = "bolt.fill"});
  EXPECT_EQ(faceOf(appKit.item()), "bolt.fill, Boost on, in the bar's colour");
  item->show({.picture = {}, .state = "Boost on", .symbol = "no such symbol"});
  EXPECT_EQ(faceOf(appKit.item()), "none");
  EXPECT_EQ(textOf([[appKit.item() button] title]), "Vantle") << "or nothing would be left to click on";
}

TEST_F(MenuBarTest, AClickIsToldOfAfterwardsWithThePlaceCountedFromAbove) {
  const auto item = add();
  appKit.press(NSEventTypeLeftMouseUp);
  EXPECT_TRUE(clicks.empty()) << "the system waits";
  turn();
  ASSERT_EQ(clicks.size(), 1U);
  EXPECT_EQ(clicks[0], QRect(1000, 0, 30, 24));
  appKit.button = NSMakeRect(3, 1, 20, 22);
  appKit.buttonWindow = {-500, 1000}; // on a screen to the upper left
  appKit.press(NSEventTypeLeftMouseUp);
  turn();
  EXPECT_EQ(clicks.back(), QRect(-497, -123, 20, 22));
  EXPECT_EQ(appKit.callsOf("converted"), Calls{});
}

TEST_F(MenuBarTest, APlaceThatNobodyKnowsIsNone) {
  const auto item = add();
  appKit.buttonHasWindow = false;
  appKit.pressWithoutEvent();
  turn();
  appKit.buttonHasWindow = true;
  appKit.screens.clear();
  appKit.pressWithoutEvent();
  turn();
  EXPECT_EQ(clicks, (std::vector<std::optional<QRect>>{std::nullopt, std::nullopt}));
}

TEST_F(MenuBarTest, TheMiddleButtonIsForTheBoost) {
  const auto item = add();
  appKit.press(NSEventTypeOtherMouseUp);
  EXPECT_EQ(middleClicks, 0);
  turn();
  EXPECT_EQ(middleClicks, 1);
  EXPECT_TRUE(clicks.empty());
}

TEST_F(MenuBarTest, SeveralClicksInOneTurnAreOne) {
  const auto item = add();
  for (int times = 0; times < 3; ++times) appKit.press(NSEventTypeLeftMouseUp);
  turn();
  EXPECT_EQ(clicks.size(), 1U);
}

TEST_F(MenuBarTest, TheMenuOpensByTheOtherButtonAndByTheControlKeyAndIsNotLeftThere) {
  const auto item = add();
  item->offer(menu());
  const QStringList lines{"First", "[Only to be read]", "", "Switch (on)"};
  int openings = 0;
  appKit.menuIsOpen = [&](NSMenu*) {
    ++openings;
    EXPECT_EQ(appKit.lines(), lines);
  };
  appKit.press(NSEventTypeRightMouseUp);
  EXPECT_EQ(openings, 0) << "the system waits";
  turn();
  EXPECT_EQ(openings, 1);
  appKit.press(NSEventTypeLeftMouseUp, NSEventModifierFlagControl);
  turn();
  EXPECT_EQ(openings, 2);
  EXPECT_TRUE(clicks.empty());
  EXPECT_EQ([appKit.item() menu], nil) << "each click would open it";
  appKit.press(NSEventTypeLeftMouseUp);
  turn();
  EXPECT_EQ(openings, 2);
  EXPECT_EQ(clicks.size(), 1U);
}

TEST_F(MenuBarTest, WhatIsChosenIsDoneAfterTheMenu) {
  const auto item = add();
  item->offer(menu());
  const QPoint middle(1014, 11);
  for (const bool closesFirst : {true, false}) {
    appKit.closesBeforeChoice = closesFirst;
    chosen.clear();
    openMenu([&](NSMenu*) { appKit.chooseLine(3); });
    ASSERT_EQ(chosen.size(), 1U) << closesFirst;
    EXPECT_EQ(chosen[0].first, "switch");
    EXPECT_EQ(chosen[0].second, middle) << "under the icon";
    EXPECT_EQ([appKit.item() menu], nil);
  }
}

TEST_F(MenuBarTest, WhatIsOfNoUseAnyMoreIsNotDone) {
  const auto item = add();
  item->offer(menu());
  openMenu([&](NSMenu*) { appKit.chooseLine(4); });
  openMenu([&](NSMenu*) { appKit.chooseLine(1); });
  openMenu([&](NSMenu*) {
    appKit.chooseLine(0);
    auto now = menu();
    now[0].isShown = false;
    item->offer(std::move(now));
  });
  EXPECT_TRUE(chosen.empty());
}

TEST_F(MenuBarTest, AnOpenMenusLinesStayTheSame) {
  const auto item = add();
  item->offer(menu());
  openMenu([&](NSMenu* open) {
    NSMenuItem* const line = [open itemAtIndex:3];
    auto now = menu();
    now[3].label = "Another";
    now[3].isChecked = false;
    item->offer(std::move(now));
    EXPECT_EQ([open itemAtIndex:3], line);
    EXPECT_EQ(appKit.lines()[3], "Another");
  });
  EXPECT_EQ(appKit.callsOf("lines removed").size(), 1U);
}

TEST_F(MenuBarTest, NothingOfAnItemThatIsGoneIsHeard) {
  auto item = add();
  item->offer(menu());
  NSStatusItem* const left = [[appKit.item() retain] autorelease];
  const id target = [[left button] target];
  [[target retain] autorelease];
  appKit.press(NSEventTypeLeftMouseUp);
  item.reset();
  EXPECT_EQ([[left button] target], nil);
  [target performSelector:@selector(press:) withObject:nil];
  [target performSelector:@selector(menuDidClose:) withObject:nil];
  turn();
  EXPECT_TRUE(clicks.empty());
}

// What another tray is given.
class NotedTray final : public Tray {
 public:
  std::unique_ptr<TrayIcon> add(TrayActions) override { return std::make_unique<Icon>(*this); }
  std::vector<TrayEntry> menu;

  QStringList lines() const {
    QStringList shown;
    for (const TrayEntry& entry : menu) {
      if (!entry.isShown) continue;
      const bool isGrey = !entry.chosen && !entry.label.isEmpty();
      const QString text = isGrey ? "[" + entry.label + "]" : entry.label;
      shown.append(entry.isChecked.value_or(false) ? text + " (on)" : text);
    }
    return shown;
  }

 private:
  class Icon final : public TrayIcon {
   public:
    explicit Icon(NotedTray& tray) : m_tray(tray) {}
    void show(const TrayFace&) override {}
    void offer(std::vector<TrayEntry> offered) override { m_tray.menu = std::move(offered); }

   private:
    NotedTray& m_tray;
  };
};

class MenuBarOfVantle : public PanelFixture {
 protected:
  ~MenuBarOfVantle() override { [m_pool release]; }

  QStringList lines() {
    QStringList found;
    appKit.menuIsOpen = [&](NSMenu*) { found = appKit.lines(); };
    appKit.press(NSEventTypeRightMouseUp);
    turn();
    return found;
  }

  StandInAppKit appKit;
  QtEventLoop loop;
  MenuBar bar{loop};
  NotedTray other;

 private:
  NSAutoreleasePool* m_pool = [[NSAutoreleasePool alloc] init];
};

TEST_F(MenuBarOfVantle, HasTheTraysOwnMenu) {
  const SampleDesktop desktop = openSampleDesktop(machine);
  const TrayItem item(engine, panel, bar);
  const TrayItem elsewhere(engine, panel, other);
  EXPECT_EQ(lines(), other.lines());
  EXPECT_EQ(lines(),
            (QStringList{"Open Vantle", "Settings", "Start Boost automatically (on)", "", "Quit Vantle"}));
  engine.setAutomatic(false);
  EXPECT_EQ(lines(), other.lines());
  engine.setAutomatic(true);
  engine.startPause(std::chrono::minutes(30));
  EXPECT_EQ(lines(), other.lines());
  EXPECT_EQ(lines().size(), 8);
  engine.endPause();
  machine.activate(desktop.game);
  EXPECT_EQ(lines(), other.lines());
  EXPECT_EQ(lines().mid(0, 3),
            (QStringList{QString::fromUtf8("[Boost on \u00B7 Asteroids]"), "Turn off Boost", ""}));
}

TEST_F(MenuBarOfVantle, ItsBoltIsFilledWhileABoostRuns) {
  const SampleDesktop desktop = openSampleDesktop(machine);
  const TrayItem item(engine, panel, bar);
  const auto face = [this] { return textOf([[[appKit.item() button] image] description]).value_or("none"); };
  EXPECT_EQ(face(), "bolt, Boost off, in the bar's colour");
  machine.activate(desktop.game);
  EXPECT_EQ(face(), "bolt.fill, Boost on \u00B7 Asteroids, in the bar's colour");
  appKit.menuIsOpen = [this](NSMenu*) { appKit.chooseLine(1); };
  appKit.press(NSEventTypeRightMouseUp);
  turn();
  EXPECT_FALSE(engine.activeGame.get()) << "\"Turn off Boost\"";
  EXPECT_EQ(face(), "bolt, Boost off, in the bar's colour");
}

TEST_F(MenuBarOfVantle, AClickOpensThePanelUnderIt) {
  const TrayItem item(engine, panel, bar);
  appKit.screens = {NSMakeRect(0, 0, 800, 800)}; // as the toolkit's own, here
  appKit.buttonWindow = {400, 776};
  appKit.press(NSEventTypeLeftMouseUp);
  ASSERT_TRUE(until([this] { return panel.isOpen(); }));
  const QRect place = panel.window()->geometry();
  EXPECT_NEAR(place.center().x(), 414, 2) << place.x();
  EXPECT_GE(place.top(), 24);
}

} // namespace
} // namespace vantle
