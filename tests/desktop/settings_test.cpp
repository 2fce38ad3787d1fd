// SPDX-License-Identifier: MIT
// The settings window on a real X server with a real window manager: pressed with a real pointer and real
// keys, over real files.
#include "engine/AppSettings.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/shared/JsonUserDefaults.h"
#include "tests/support/Props.h"
#include "tests/support/SettingsProgram.h"
#include "tests/support/Wait.h"
#include "tests/support/XfceTray.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sstream>

namespace vantle::desktop {
namespace {

using testing::HasSubstr;
using testing::Not;

// No apps but those that a test installs. Only from here on: the window manager needs its theme.
VirtualDesktop& withoutApps(VirtualDesktop& desktop) {
  desktop.setEnvironment("XDG_DATA_DIRS", "/nowhere");
  return desktop;
}

// With its frame, but for its borders and for what the title bar takes less than was left for one.
bool isCentred(const std::string& state) {
  int x = 0;
  int y = 0;
  const std::size_t at = state.find("off centre ");
  return at != std::string::npos && std::sscanf(state.c_str() + at, "off centre %d %d", &x, &y) == 2 &&
         std::abs(x) <= 4 && std::abs(y) <= 20;
}

struct SettingsOnADesktop : testing::Test {
  SettingsOnADesktop() {
    say("show");
    windowId = std::to_string(desktop.waitForWindow(settings.program().pid()).id);
    require("the window is active", [&] { return settings.isActive(); });
  }

  std::string tells(const std::string& line) { return settings.tells(line); }
  void say(const std::string& line) { settings.say(line); }

  void click(const std::string& label) {
    std::string answer;
    require(("there is " + label).c_str(), [&] {
      answer = tells("where " + label);
      return answer.rfind("at ", 0) == 0;
    });
    std::istringstream words(answer.substr(3));
    std::string x;
    std::string y;
    words >> x >> y;
    ASSERT_TRUE(desktop.run({"xdotool", "mousemove", "--sync", "--window", windowId, x, y, "click", "1"}));
  }
  void press(const std::string& key) { ASSERT_TRUE(desktop.run({"xdotool", "key", key})); }
  void type(const std::string& text) { ASSERT_TRUE(desktop.run({"xdotool", "type", text})); }

  // What a new start of the program would read.
  template <class T> T onDisk(const std::string& key, const T& none = T()) const {
    PosixFileStore files({}, PosixFileStore::Sync::none);
    const JsonUserDefaults defaults(files, desktop.configHome().string(), "com.halvo.vantle");
    const auto value = defaults.object(key);
    return value && std::holds_alternative<T>(*value) ? std::get<T>(*value) : none;
  }
  template <class T> bool becomes(const std::string& key, const T& wanted, const T& none = T()) const {
    return waitUntil([&] { return onDisk<T>(key, none) == wanted; });
  }
  using Keys = std::vector<std::string>;

  VirtualDesktop desktop;
  SettingsProgram settings{withoutApps(desktop), VANTLE_TEST_SETTINGS};
  std::string windowId;
};

TEST_F(SettingsOnADesktop, OpensCentredOnTheBoostPaneAndOnlyOnce) {
  EXPECT_THAT(tells("state"), HasSubstr("windows 1, pane 1, size 760x560"));
  EXPECT_TRUE(waitUntil([&] { return isCentred(tells("state")); })) << tells("state");
  desktop.launch({testWindow()});
  require("something else is in front", [&] { return !settings.isActive(); });
  say("show");
  require("the window is in front again", [&] { return settings.isActive(); });
  EXPECT_THAT(tells("state"), HasSubstr("windows 1, pane 1"));
}

TEST_F(SettingsOnADesktop, IsNeverSmallerThanItsContentNeeds) {
  ASSERT_TRUE(desktop.run({"wmctrl", "-i", "-r", windowId, "-e", "0,-1,-1,300,200"}));
  require("the window shrank", [&] { return tells("state").find("760x560") == std::string::npos; });
  EXPECT_THAT(tells("state"), HasSubstr("size 680x480"));
}

TEST(SettingsOnASmallScreen, AreNoLargerThanIt) {
  VirtualDesktop::Options options;
  options.screen = "660x440x24";
  VirtualDesktop desktop(options);
  SettingsProgram settings(desktop, VANTLE_TEST_SETTINGS);
  settings.say("show");
  require("the window is active", [&] { return settings.isActive(); });
  EXPECT_TRUE(waitUntil([&] {
    const std::string state = settings.tells("state");
    return state.find("size 656x400") != std::string::npos && state.find("in sight") != std::string::npos;
  })) << settings.tells("state");
}

// The settings program starts after the window's program, and changes its mind while the window is open.
TEST(SettingsOnXfce, FollowScaleAndFontOfASettingsProgramThatComesLater) {
  VirtualDesktop::Options options;
  options.screen = "1600x1200x24";
  VirtualDesktop desktop(options);
  const XfceTray xfce(desktop); // with its store of settings
  SettingsProgram settings(desktop, VANTLE_TEST_SETTINGS);
  settings.say("show");
  require("the window is active", [&] { return settings.isActive(); });
  const auto publish = [&](const char* property, const char* type, const char* value) {
    ASSERT_TRUE(
        desktop.run({"xfconf-query", "-c", "xsettings", "-p", property, "-n", "-t", type, "-s", value}));
  };
  const auto becomesLike = [&](const std::string& look) {
    return waitUntil([&] { return settings.tells("look").rfind("look " + look + "\n", 0) == 0; });
  };
  const auto isWholeAndCentred = [&] {
    return waitUntil([&] {
      const std::string state = settings.tells("state");
      return isCentred(state) && state.find("in sight") != std::string::npos;
    });
  };
  publish("/Xft/DPI", "int", "192");
  publish("/Gtk/FontName", "string", "DejaVu Serif Bold 10");
  desktop.launch({"xfsettingsd", "--no-daemon"});
  EXPECT_TRUE(becomesLike("DejaVu Serif, scale 2")) << settings.tells("look");
  EXPECT_TRUE(isWholeAndCentred()) << settings.tells("state");
  EXPECT_THAT(settings.tells("state"), HasSubstr("size 760x560"));
  publish("/Xft/DPI", "int", "96");
  publish("/Gtk/FontName", "string", "DejaVu Sans 15");
  EXPECT_TRUE(becomesLike("DejaVu Sans, scale 1.5")) << settings.tells("look");
  EXPECT_TRUE(isWholeAndCentred()) << settings.tells("state");
  EXPECT_THAT(settings.tells("state"), HasSubstr("windows 1,"));
  ASSERT_TRUE(desktop.run({"xdotool", "key", "ctrl+w"}));
  require("it is gone", [&] { return desktop.windows().ofProcess(settings.program().pid()).empty(); });
  publish("/Gtk/FontName", "string", "DejaVu Sans 10");
  publish("/Xft/DPI", "int", "120");
  settings.say("show");
  EXPECT_TRUE(becomesLike("DejaVu Sans, scale 1.25")) << settings.tells("look");
  EXPECT_TRUE(isWholeAndCentred()) << settings.tells("state");
}

TEST(SettingsOnASmallScreen, FitOnItWithTheirTitle) {
  VirtualDesktop::Options options;
  options.screen = "1024x600x24";
  VirtualDesktop desktop(options);
  SettingsProgram settings(desktop, VANTLE_TEST_SETTINGS);
  settings.say("show");
  require("the window is active", [&] { return settings.isActive(); });
  std::string state;
  EXPECT_TRUE(waitUntil([&] {
    state = settings.tells("state");
    return state.find("framed") != std::string::npos && isCentred(state);
  })) << state;
  EXPECT_THAT(state, HasSubstr("in sight"));
}

// The bar is at the bottom of one of them; the toolkit by itself knows no bars where there is more than one
// screen.
TEST(SettingsOnTwoScreens, FitBetweenTheBarsOfTheirs) {
  VirtualDesktop::Options options;
  options.screen = "1600x900x24";
  VirtualDesktop desktop(options);
  require("two screens", [&] {
    return desktop.run({"xrandr", "--setmonitor", "left", "900/300x900/300+0+0", "screen"}) &&
           desktop.run({"xrandr", "--setmonitor", "right", "700/230x900/300+900+0", "none"});
  });
  const std::string bar =
      std::to_string(desktop.waitForWindow(desktop.launch({testWindow(), "--title", "bar"}).pid()).id);
  ASSERT_TRUE(desktop.run({"xprop", "-id", bar, "-f", "_NET_WM_STRUT_PARTIAL", "32c", "-set",
                           "_NET_WM_STRUT_PARTIAL", "0,0,0,400,0,0,0,0,0,0,0,899"}));
  SettingsProgram settings(desktop, VANTLE_TEST_SETTINGS);
  require("the bar is known", [&] { return settings.tells("free") == "free 900x500\ndone free\n"; });
  settings.say("show");
  std::string state;
  EXPECT_TRUE(waitUntil([&] {
    state = settings.tells("state");
    return state.find("size 760x460") != std::string::npos && isCentred(state);
  })) << state;
  EXPECT_THAT(state, HasSubstr("in sight"));
}

// Where no minimum size counts.
TEST(SettingsOnI3, AreOfUseInANarrowTile) {
  VirtualDesktop::Options options;
  options.windowManager = false;
  VirtualDesktop desktop(options);
  desktop.launch({"i3", "-c", desktop.folder().write("i3.config", "# i3 config file (v4)\n").string()});
  require("the window manager", [&] { return desktop.windows().hasWindowManager(); });
  SettingsProgram settings(desktop, VANTLE_TEST_SETTINGS);
  settings.say("show");
  require("the window is active", [&] { return settings.isActive(); });
  for (int count = 0; count < 4; ++count)
    desktop.waitForWindow(desktop.launch({testWindow(), "--title", "beside"}).pid());
  int width = 0;
  int height = 0;
  EXPECT_TRUE(waitUntil([&] {
    const std::string state = settings.tells("state");
    const std::size_t at = state.find("size ");
    return at != std::string::npos && std::sscanf(state.c_str() + at, "size %dx%d", &width, &height) == 2 &&
           width < 300;
  })) << settings.tells("state");
  for (const char* label : {"Games launched with CrossOver, Wine", "Remove Minecraft Launcher",
                            "Quit the apps I mark as quittable", "Add Quittable App…"}) {
    int x = 0;
    int y = 0;
    const std::string answer = settings.tells(std::string("where ") + label);
    ASSERT_EQ(std::sscanf(answer.c_str(), "at %d %d", &x, &y), 2) << answer;
    EXPECT_TRUE(x > 44 && x < width - 10 && y > 0 && y < height) << label << ": " << answer;
  }
}

TEST_F(SettingsOnADesktop, ComesBackAsItWasLeft) {
  click("Updates");
  ASSERT_TRUE(desktop.run({"wmctrl", "-i", "-r", windowId, "-e", "0,120,90,720,500"}));
  require("it moved", [&] { return tells("state").find("size 720x500") != std::string::npos; });
  const std::string place = tells("state");
  for (const char* patience : {"600000", "0"}) { // still in memory, and made anew
    say(std::string("release-after ") + patience);
    ASSERT_TRUE(desktop.run({"wmctrl", "-i", "-c", windowId}));
    require("it is gone", [&] { return desktop.windows().ofProcess(settings.program().pid()).empty(); });
    if (*patience == '0')
      require("nothing is kept", [&] { return tells("state").rfind("no window", 0) == 0; });
    say("show");
    windowId = std::to_string(desktop.waitForWindow(settings.program().pid()).id);
    require("it is back", [&] { return settings.isActive(); });
    EXPECT_TRUE(waitUntil([&] { return tells("state") == place; })) << tells("state") << "was\n" << place;
  }
}

TEST_F(SettingsOnADesktop, EveryChoiceIsOnDiskAtOnceAndReadByTheNextStart) {
  const std::pair<const char*, const char*> switches[] = {
      {"Games launched with CrossOver, Wine", "detectCrossOver"},
      {"Minecraft, Java Edition", "detectMinecraft"},
      {"Steam games, steamapps folder", "detectSteam"},
      {"Apps in the “Games” category, app menu", "detectGamesCategory"}};
  for (const auto& [label, key] : switches) {
    click(label);
    EXPECT_TRUE(becomes(key, false, true)) << label;
  }
  click("Games using GameMode, gamemoderun");
  EXPECT_TRUE(becomes("detectGameMode", true));
  click("Remove Music");
  EXPECT_TRUE(waitUntil([&] { return onDisk<Keys>("protectedApps").size() == 5; }));
  click("Quit the apps I mark as quittable");
  EXPECT_TRUE(becomes<std::string>("ramAction", "quitMarked"));
  click("General");
  click("Start Boost automatically when a Boost app opens");
  EXPECT_TRUE(becomes("otomatik", false, true));
  click("Open Vantle at login");
  const auto entry = desktop.configHome() / "autostart/com.halvo.vantle.desktop";
  EXPECT_TRUE(waitUntil([&] { return std::filesystem::exists(entry); }));
  click("Appearance");
  click("Teal");
  EXPECT_TRUE(becomes<std::string>("accent", "teal"));
  click("Dark");
  EXPECT_TRUE(becomes<std::string>("appearance", "dark"));
  click("Updates");
  click("Check for updates automatically");
  EXPECT_TRUE(becomes("checkUpdatesAutomatically", false, true));

  say("quit");
  ASSERT_TRUE(settings.program().waitForEnd());
  PosixFileStore files({}, PosixFileStore::Sync::none);
  JsonUserDefaults defaults(files, desktop.configHome().string(), "com.halvo.vantle");
  AppSettings read(defaults);
  EXPECT_FALSE(read.detectCrossOver.get() || read.detectMinecraft.get() || read.detectSteam.get() ||
               read.detectGamesCategory.get() || read.checkUpdatesAutomatically.get());
  EXPECT_TRUE(read.detectGameMode.get());
  EXPECT_EQ(read.protectedApps.get().size(), 5U);
  EXPECT_EQ(read.ramAction.get(), RAMAction::quitMarked);
  EXPECT_EQ(read.accent.get(), AccentTheme::teal);
  EXPECT_EQ(read.appearance.get(), AppearanceMode::dark);
}

TEST_F(SettingsOnADesktop, IsWorkedByKeyboardAlone) {
  const auto leadsTo = [&](const std::string& key, const std::string& label) {
    press(key);
    EXPECT_TRUE(waitUntil([&] { return tells("focus").rfind("focus " + label + "\n", 0) == 0; }))
        << key << " to " << label << ": " << tells("focus");
  };
  leadsTo("Tab", "Boost"); // the sidebar is one stop
  leadsTo("Down", "Appearance");
  leadsTo("Tab", "Blue");
  leadsTo("Right", "Purple");
  EXPECT_TRUE(becomes<std::string>("accent", "purple"));
  leadsTo("Down", "Teal"); // the one below, in the next row of six
  leadsTo("Tab", "System");
  leadsTo("End", "Dark");
  EXPECT_TRUE(becomes<std::string>("appearance", "dark"));
  leadsTo("shift+Tab", "Teal");
  leadsTo("shift+Tab", "Appearance");
  leadsTo("Home", "General");
  leadsTo("Tab", "Start Boost automatically when a Boost app opens");
  press("space");
  EXPECT_TRUE(becomes("otomatik", false, true));
}

// Where a walk by the Tab key through the pane leads, back to its beginning.
TEST_F(SettingsOnADesktop, EveryControlOfThePaneIsOnTheTabKeysWay) {
  std::vector<std::string> walk;
  for (int step = 0; step < 20 && (walk.empty() || walk.back() != "Boost" || walk.size() == 1); ++step) {
    press("Tab");
    const std::string last = walk.empty() ? "focus \n" : "focus " + walk.back() + "\n";
    std::string now;
    require("the next place", [&] { return (now = tells("focus")).rfind(last, 0) != 0; });
    walk.push_back(now.substr(6, now.find('\n') - 6));
  }
  EXPECT_THAT(walk, testing::ElementsAre("Boost", "Add App…", "Games launched with CrossOver, Wine",
                                         "Minecraft, Java Edition", "Steam games, steamapps folder",
                                         "Apps in the “Games” category, app menu",
                                         "Games using GameMode, gamemoderun", "Remove Spotify", "Add App…",
                                         "Only show a notification", "Add Quittable App…", "Boost"));
}

TEST_F(SettingsOnADesktop, KeysGoThroughAListAndThePlaceIsKept) {
  const auto leadsTo = [&](const std::string& key, const std::string& label) {
    press(key);
    EXPECT_TRUE(waitUntil([&] { return tells("focus").rfind("focus " + label + "\n", 0) == 0; }))
        << key << " to " << label << ": " << tells("focus");
  };
  leadsTo("Tab", "Boost");
  leadsTo("Tab", "Add App…");
  press("Return"); // the picker, with the search
  leadsTo("Escape", "Add App…");
  for (const char* label :
       {"Games launched with CrossOver, Wine", "Minecraft, Java Edition", "Steam games, steamapps folder",
        "Apps in the “Games” category, app menu", "Games using GameMode, gamemoderun"})
    leadsTo("Tab", label);
  leadsTo("Tab", "Remove Spotify");
  leadsTo("Down", "Remove Music");
  leadsTo("End", "Remove Minecraft Launcher");
  leadsTo("d", "Remove Discord");
  leadsTo("space", "Remove OBS Studio"); // which stands in its place
  EXPECT_TRUE(waitUntil([&] { return onDisk<Keys>("protectedApps").size() == 5; }));
  leadsTo("Home", "Remove Spotify");
  leadsTo("Tab", "Add App…");
  leadsTo("Tab", "Restore defaults");
  leadsTo("Return", "Add App…");
  EXPECT_TRUE(waitUntil([&] { return onDisk<Keys>("protectedApps").size() == 6; }));
  EXPECT_TRUE(waitUntil([&] { return tells("seen").rfind("seen", 0) == 0; })) << "below a list that grew";
  EXPECT_THAT(settings.log(), Not(HasSubstr("activeFocusOnTab")));
}

TEST_F(SettingsOnADesktop, IsClosedByKeys) {
  for (const char* key : {"Escape", "ctrl+w"}) {
    press(key);
    require("it is gone", [&] { return desktop.windows().ofProcess(settings.program().pid()).empty(); });
    say("show");
    desktop.waitForWindow(settings.program().pid());
    require("it is back", [&] { return settings.isActive(); });
  }
}

TEST_F(SettingsOnADesktop, IsScrolledByKeysWheelAndBarButNotByDraggingThePage) {
  int at = 0;
  int way = 0;
  const auto scrolled = [&] {
    return std::sscanf(tells("scrolled").c_str(), "scrolled %d of %d", &at, &way) == 2 ? at : -1;
  };
  const auto scrolls = [&](std::initializer_list<const char*> words, const char* what, auto holds) {
    std::vector<std::string> command{"xdotool"};
    command.insert(command.end(), words.begin(), words.end());
    ASSERT_TRUE(desktop.run(command));
    EXPECT_TRUE(waitUntil([&] { return holds(scrolled()); })) << what << ": " << at << " of " << way;
  };
  ASSERT_EQ(scrolled(), 0);
  ASSERT_GT(way, 100);
  scrolls({"key", "Next"}, "a page", [](int now) { return now > 100; });
  scrolls({"key", "End"}, "the end", [&](int now) { return now == way; });
  scrolls({"key", "Up"}, "an arrow", [&](int now) { return now < way && now > way - 100; });
  scrolls({"key", "Home"}, "the beginning", [](int now) { return now == 0; });
  const char* const window = windowId.c_str();
  scrolls({"mousemove", "--sync", "--window", window, "500", "300", "click", "5"}, "the wheel",
          [](int now) { return now > 0 && now < 200; });
  // At the right edge of the pane: within the bar wherever that is by now.
  scrolls({"mousemove", "--window", window, "755", "200", "mousedown", "1", "mousemove", "--window", window,
           "755", "700", "mouseup", "1"},
          "the bar", [&](int now) { return now == way; });
  scrolls({"mousemove", "--window", window, "755", "80", "click", "1"}, "beside the bar",
          [&](int now) { return now < way - 100; });
  const int before = scrolled();
  scrolls({"mousemove", "--window", window, "500",     "400", "mousedown", "1",
           "mousemove", "--window", window, "500",     "300", "mousemove", "--window",
           window,      "500",      "200",  "mouseup", "1",   "click",     "5"},
          "the wheel after a drag", [&](int now) { return now == std::min(before + 60, way); });
}

TEST_F(SettingsOnADesktop, PicksAnInstalledAppBySearchAndKeyboard) {
  desktop.installDesktopFile("org.example.Editor",
                             "[Desktop Entry]\nType=Application\nName=Editor\nExec=/bin/true\n");
  desktop.installDesktopFile("org.example.Other",
                             "[Desktop Entry]\nType=Application\nName=Other\nExec=/bin/true\n");
  click("Add App…");
  type("edit");
  press("Return");
  EXPECT_TRUE(becomes("userGames", Keys{"org.example.Editor"}));
  click("Add App…");
  press("Escape");
  EXPECT_TRUE(waitUntil([&] { return tells("where Remove Editor").rfind("at ", 0) == 0; }));
  click("Remove Editor");
  EXPECT_TRUE(becomes("userGames", Keys{}, Keys{"none"}));
}

TEST_F(SettingsOnADesktop, FollowsWhatIsChangedElsewhere) {
  say("boost-front");
  ASSERT_EQ(onDisk<Keys>("userGames").size(), 1U);
  EXPECT_TRUE(waitUntil(
      [&] { return tells("where Remove " + onDisk<Keys>("userGames").front()).rfind("at ", 0) == 0; }));
}

} // namespace
} // namespace vantle::desktop
