// SPDX-License-Identifier: MIT
#include "desktop/Desktop.h"

#import "desktop/darwin/activation/Reopening.h"
#import "desktop/darwin/chooser/OpenPanel.h"
#import "desktop/darwin/heap/ZoneHeap.h"
#import "desktop/darwin/icons/BundleIcons.h"
#import "desktop/darwin/scheme/AppAppearance.h"
#include "look/AppIcons.h"
#include "look/ports/MacWords.h"
#import "tests/unit/mac/MacFixture.h"

#include <QColor>
#include <QDeadlineTimer>
#include <QElapsedTimer>

namespace vantle {
namespace {

using MacDesktopTest = MacTest;

TEST_F(MacDesktopTest, HasAllThatTheProgramAsksFor) {
  {
    const std::unique_ptr<Desktop> desktop = Desktop::make(loop);
    EXPECT_EQ(&desktop->words(), &macWords);
    EXPECT_NE(desktop->front(), nullptr);
    EXPECT_NE(desktop->appChooser(), nullptr);
    EXPECT_EQ(desktop->shellExtension().state(), ShellExtension::State::notOffered);
    EXPECT_EQ(desktop->shellExtension().observe([] {}), nullptr);
    const auto door = desktop->remoteDoor().open({});
    ASSERT_NE(door, nullptr);
    door->tell();
  }
  turn();
}

TEST_F(MacDesktopTest, TheToolkitLeavesTheAppInFrontWhereItIsFromTheStartOn) {
  constexpr const char* staysBehind = "QT_MAC_DISABLE_FOREGROUND_APPLICATION_TRANSFORM";
  qunsetenv(staysBehind);
  const std::unique_ptr<Registration> untilTheToolkitRuns = Desktop::chooseToolkit();
  EXPECT_EQ(untilTheToolkitRuns, nullptr) << "it is read later";
  EXPECT_EQ(qgetenv(staysBehind), "1");
  qputenv(staysBehind, "yes");
  EXPECT_EQ(Desktop::chooseToolkit(), nullptr);
  EXPECT_EQ(qgetenv(staysBehind), "yes") << "the person has said so himself";
  qunsetenv(staysBehind);
}

TEST_F(MacDesktopTest, MemoryIsGivenBackOfAllZones) {
  ZoneHeap().trim();
  EXPECT_EQ(appKit.reliefs, 1);
}

TEST_F(MacDesktopTest, AppearanceIsTheSystemsAndFollowsIt) {
  int changes = 0;
  {
    AppAppearance scheme;
    const auto observer = scheme.observe([&] { ++changes; });
    EXPECT_FALSE(scheme.isDark());
    appKit.becomeDrawnIn(NSAppearanceNameDarkAqua);
    EXPECT_EQ(changes, 1);
    EXPECT_TRUE(scheme.isDark());
    appKit.becomeDrawnIn(@"NSAppearanceNameAccessibilityHighContrastAqua");
    EXPECT_FALSE(scheme.isDark());
    appKit.becomeDrawnIn(@"NSAppearanceNameAccessibilityHighContrastDarkAqua");
    EXPECT_TRUE(scheme.isDark());
    EXPECT_EQ(changes, 3);
  }
  appKit.becomeDrawnIn(NSAppearanceNameAqua); // which nobody hears
  EXPECT_EQ(changes, 3);
}

TEST_F(MacDesktopTest, TitleBarsAreDrawnAsThePersonWants) {
  AppAppearance scheme;
  const auto observer = scheme.observe([&] { scheme.draw(true); }); // as it may well happen
  scheme.draw(std::nullopt);
  EXPECT_EQ(appKit.calls, Calls{}) << "nothing has changed";
  scheme.draw(true);
  scheme.draw(true);
  EXPECT_EQ(appKit.calls, Calls{"appearance NSAppearanceNameDarkAqua"});
}

TEST_F(MacDesktopTest, TitleBarsAreTheSystemsAgain) {
  AppAppearance scheme;
  scheme.draw(true);
  EXPECT_TRUE(scheme.isDark());
  scheme.draw(false);
  EXPECT_FALSE(scheme.isDark());
  scheme.draw(std::nullopt);
  appKit.becomeDrawnIn(NSAppearanceNameDarkAqua);
  EXPECT_TRUE(scheme.isDark());
  EXPECT_EQ(appKit.calls, (Calls{"appearance NSAppearanceNameDarkAqua", "appearance NSAppearanceNameAqua",
                                 "appearance nil"}));
}

TEST_F(MacDesktopTest, PicturesOfAppsAreTheSystems) {
  const BundleIcons icons;
  for (const int pixels : {20, 25, 64}) {
    const QImage picture = icons.pictureOf("/Applications/Mail.app", pixels);
    EXPECT_EQ(picture.size(), QSize(pixels, pixels));
    EXPECT_EQ(picture.pixelColor(pixels / 2, 1), QColor(255, 0, 0));
    const QColor lower = picture.pixelColor(pixels / 2, pixels - 1);
    EXPECT_EQ(lower.green(), 255);
    EXPECT_EQ(lower.alpha(), 128);
  }
  EXPECT_EQ(appKit.calls[0], "icon for file /Applications/Mail.app");
  EXPECT_EQ(appKit.calls[1], "flush");
  EXPECT_EQ(appKit.savedStates, 0);
  EXPECT_EQ(appKit.callsOf("drawn"), Calls{});
  EXPECT_EQ(appKit.callsOf("a bitmap"), Calls{});
}

TEST_F(MacDesktopTest, AnyAppHasAPictureAndNothingHasNone) {
  const BundleIcons icons;
  EXPECT_FALSE(appIcon(icons, icons.genericName(), 20).isNull());
  EXPECT_EQ(appKit.calls[0], "icon for any app");
  for (const char* source : {"", "folder", "org.example.app"})
    EXPECT_TRUE(icons.pictureOf(source, 20).isNull());
  appKit.canDraw = false;
  EXPECT_TRUE(icons.pictureOf("/Applications/Mail.app", 20).isNull());
  EXPECT_EQ(appKit.savedStates, 0);
}

class OpenPanelTest : public MacTest {
 protected:
  std::unique_ptr<Registration> choose() {
    return panel.choose([this](const std::string& path) { picked.push_back(path); });
  }

  OpenPanel panel{loop};
  Calls picked;
};

TEST_F(OpenPanelTest, OffersOneAppAndTellsOfItsPath) {
  appKit.answer = [] { return NSModalResponse(1); };
  appKit.chosenPath = @"/Applications/Mail.app";
  const auto choice = choose();
  EXPECT_EQ(appKit.calls, Calls{}) << "later: the caller goes on";
  turn();
  EXPECT_EQ(appKit.calls, Calls{"dialog for apps in /Applications, to Add"});
  EXPECT_EQ(picked, Calls{"/Applications/Mail.app"});
  turn();
  EXPECT_EQ(picked.size(), 1U);
}

TEST_F(OpenPanelTest, TellsNothingWhenNothingIsPicked) {
  appKit.answer = [] { return NSModalResponse(0); };
  appKit.chosenPath = @"/Applications/Mail.app";
  const auto choice = choose();
  turn();
  appKit.answer = [] { return NSModalResponse(1); };
  appKit.chosenPath = nil;
  const auto other = choose();
  turn();
  EXPECT_EQ(appKit.callsOf("dialog for").size(), 2U);
  EXPECT_EQ(picked, Calls{});
}

TEST_F(OpenPanelTest, IsClosedWhenNobodyAsksAnyMore) {
  appKit.chosenPath = @"/Applications/Mail.app";
  choose().reset();
  turn();
  EXPECT_EQ(appKit.calls, Calls{}) << "it is not even opened";
  for (const bool inTime : {true, false}) {
    appKit.cancelsInTime = inTime;
    auto choice = choose();
    appKit.answer = [&] { // the window goes while the dialog is open
      choice.reset();
      turn();
      return NSModalResponse(1);
    };
    turn();
    EXPECT_EQ(appKit.calls.back(), "dialog cancelled");
  }
  EXPECT_EQ(picked, Calls{});
}

TEST_F(OpenPanelTest, MayBeAskedForAgainByWhatItTells) {
  appKit.answer = [] { return NSModalResponse(1); };
  appKit.chosenPath = @"/Applications/Mail.app";
  std::unique_ptr<Registration> choice;
  int times = 0;
  choice = panel.choose([&](const std::string&) {
    ++times;
    choice.reset();
  });
  turn();
  EXPECT_EQ(times, 1);
  EXPECT_EQ(appKit.callsOf("dialog cancelled"), Calls{}) << "it was closed already";
}

class ReopeningTest : public MacTest {
 protected:
  ReopeningTest() { start(); }
  void start() {
    registration = reopening.answer({.show = [this] { ++shown; }, .settings = {}, .quit = {}});
  }
  template <class Condition> static bool until(Condition holds) {
    const QDeadlineTimer guard(20'000);
    while (!holds() && !guard.hasExpired()) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return holds();
  }

  Reopening reopening{loop};
  std::unique_ptr<Registration> registration;
  int shown = 0;
};

TEST_F(ReopeningTest, OutlastsWhatTheStartOfTheProgramSets) {
  appKit.finishLaunching(); // when the loop begins
  turn();
  ASSERT_TRUE(appKit.openAgain());
  EXPECT_EQ(shown, 0) << "the system waits";
  turn();
  EXPECT_EQ(shown, 1);
}

TEST_F(ReopeningTest, ShowsThePanelTwiceASecondAtMost) {
  turn();
  QElapsedTimer time;
  ASSERT_TRUE(appKit.openAgain());
  ASSERT_TRUE(appKit.openAgain());
  ASSERT_TRUE(until([this] { return shown == 1; }));
  time.start();
  ASSERT_TRUE(appKit.openAgain());
  turn();
  ASSERT_TRUE(until([this] { return shown == 2; }));
  EXPECT_GE(time.elapsed(), 450) << "the timer is a coarse one";
}

TEST_F(ReopeningTest, EndsWithTheRegistration) {
  turn();
  ASSERT_TRUE(appKit.openAgain());
  registration.reset();
  turn();
  EXPECT_EQ(shown, 0);
  EXPECT_FALSE(appKit.openAgain());
  start();
  registration.reset(); // before it has begun
  turn();
  EXPECT_FALSE(appKit.openAgain());
}

} // namespace
} // namespace vantle
