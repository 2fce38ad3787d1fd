// SPDX-License-Identifier: MIT
// The settings window on a real X server with a real window manager: pressed with a real pointer and real
// keys, over real files.
#include "engine/AppSettings.h"
#include "platform/linux/files/PosixFileStore.h"
#include "platform/shared/JsonUserDefaults.h"
#include "tests/desktop/harness/VirtualDesktop.h"
#include "tests/desktop/harness/Wait.h"

#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <iterator>
#include <sstream>
#include <sys/stat.h>

namespace vantle::desktop {
namespace {

using testing::HasSubstr;
using testing::Not;

struct SettingsOnADesktop : testing::Test {
  SettingsOnADesktop() {
    desktop.setEnvironment("XDG_DATA_DIRS", (desktop.folder().path() / "nothing").string());
    start();
  }

  void start() {
    ::mkfifo(pipe().c_str(), 0600);
    program = &desktop.launch({VANTLE_TEST_SETTINGS, pipe().string()});
    said.clear();
    say("show");
    const auto window = desktop.waitForWindow(program->pid());
    windowId = std::to_string(window.id);
    require("the window is active", [&] { return tells("state").find("active") != std::string::npos; });
  }
  std::filesystem::path pipe() const { return desktop.folder().path() / "commands"; }

  std::string log() const {
    std::string newest;
    std::filesystem::file_time_type time{};
    for (const auto& file : std::filesystem::directory_iterator(desktop.logs())) {
      if (file.path().string().find("vantle_test_settings") == std::string::npos) continue;
      if (!newest.empty() && file.last_write_time() < time) continue;
      time = file.last_write_time();
      newest = file.path();
    }
    std::ifstream stream(newest);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
  // Has the program obey the line, and returns what it said meanwhile.
  std::string tells(const std::string& line) {
    std::ofstream(pipe()) << line << std::endl;
    std::string text;
    require(line.c_str(), [&] {
      text = log();
      return text.size() > said.size() && text.find("done " + line + "\n", said.size()) != std::string::npos;
    });
    return text.substr(std::exchange(said, text).size());
  }
  void say(const std::string& line) { tells(line); }

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
  Program* program = nullptr;
  std::string said;
  std::string windowId;
};

TEST_F(SettingsOnADesktop, OpensCentredOnTheBoostPaneAndOnlyOnce) {
  EXPECT_THAT(tells("state"), HasSubstr("windows 1, pane 1, size 760x560, off centre 0 0"));
  desktop.launch({VANTLE_TEST_WINDOW});
  require("something else is in front", [&] { return tells("state").find("active") == std::string::npos; });
  say("show");
  require("the window is in front again", [&] { return tells("state").find("active") != std::string::npos; });
  EXPECT_THAT(tells("state"), HasSubstr("windows 1, pane 1"));
}

TEST_F(SettingsOnADesktop, IsNeverSmallerThanItsContentNeeds) {
  ASSERT_TRUE(desktop.run({"wmctrl", "-i", "-r", windowId, "-e", "0,-1,-1,300,200"}));
  require("the window shrank", [&] { return tells("state").find("760x560") == std::string::npos; });
  EXPECT_THAT(tells("state"), HasSubstr("size 680x480"));
}

TEST_F(SettingsOnADesktop, ComesBackAsItWasLeft) {
  click("Updates");
  ASSERT_TRUE(desktop.run({"wmctrl", "-i", "-r", windowId, "-e", "0,120,90,720,500"}));
  require("it moved", [&] { return tells("state").find("size 720x500") != std::string::npos; });
  const std::string place = tells("state");
  for (const char* patience : {"600000", "0"}) { // still in memory, and made anew
    say(std::string("release-after ") + patience);
    ASSERT_TRUE(desktop.run({"wmctrl", "-i", "-c", windowId}));
    require("it is gone", [&] { return desktop.windows().ofProcess(program->pid()).empty(); });
    if (*patience == '0')
      require("nothing is kept", [&] { return tells("state").rfind("no window", 0) == 0; });
    say("show");
    windowId = std::to_string(desktop.waitForWindow(program->pid()).id);
    require("it is back", [&] { return tells("state").find("active") != std::string::npos; });
    EXPECT_TRUE(waitUntil([&] { return tells("state") == place; })) << tells("state") << "was\n" << place;
  }
}

TEST_F(SettingsOnADesktop, EveryChoiceIsOnDiskAtOnceAndReadByTheNextStart) {
  const std::pair<const char*, const char*> switches[] = {
      {"Games launched with CrossOver, Wine", "detectCrossOver"},
      {"Minecraft, Java Edition", "detectMinecraft"},
      {"Steam games, steamapps folder", "detectSteam"},
      {"Apps in the “Games” category, App Store", "detectGamesCategory"}};
  for (const auto& [label, key] : switches) {
    click(label);
    EXPECT_TRUE(becomes(key, false, true)) << label;
  }
  click("Remove com.apple.Music");
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
  ASSERT_TRUE(program->waitForEnd());
  PosixFileStore files({}, PosixFileStore::Sync::none);
  JsonUserDefaults defaults(files, desktop.configHome().string(), "com.halvo.vantle");
  AppSettings settings(defaults);
  EXPECT_FALSE(settings.detectCrossOver.get() || settings.detectMinecraft.get() ||
               settings.detectSteam.get() || settings.detectGamesCategory.get() ||
               settings.checkUpdatesAutomatically.get());
  EXPECT_EQ(settings.protectedApps.get().size(), 5U);
  EXPECT_EQ(settings.ramAction.get(), RAMAction::quitMarked);
  EXPECT_EQ(settings.accent.get(), AccentTheme::teal);
  EXPECT_EQ(settings.appearance.get(), AppearanceMode::dark);
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

TEST_F(SettingsOnADesktop, LooksAsInThePictures) {
  const std::filesystem::path folder = VANTLE_PICTURES;
  std::filesystem::create_directories(folder);
  const char* panes[] = {"general", "boost", "appearance", "updates", "about"};
  for (const char* scheme : {"Light", "Dark"}) {
    say(std::string("appearance ") + scheme);
    for (std::size_t pane = 0; pane < std::size(panes); ++pane) {
      say("pane " + std::to_string(pane));
      const auto file = folder / (std::string("settings-") + panes[pane] + "-" + scheme + ".png");
      std::filesystem::remove(file);
      say("grab " + file.string());
      EXPECT_GT(std::filesystem::file_size(file), 5000U) << file;
    }
  }
}

} // namespace
} // namespace vantle::desktop
