// SPDX-License-Identifier: MIT
// What a screen reader is told about the window.
#include "settings/SettingsWindow.h"

#include "look/ports/MacWords.h"
#include "tests/unit/look/ScreenReader.h"
#include "tests/unit/settings/ShownSettings.h"

#include <algorithm>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <set>

namespace vantle {

namespace {

using testing::Contains;
using testing::Each;
using testing::IsSupersetOf;

// It listens before there is a window.
struct Listening {
  ScreenReader reader;
};

class Accessibility : protected Listening, public ShownSettings {
 protected:
  explicit Accessibility(const PlaceWords& placeWords = macWords) : ShownSettings(placeWords) {}

  std::set<std::string> told() { return ScreenReader::linesOf(&view()); }
  std::set<std::string> toldOn(Pane pane) {
    model().setPaneIndex(static_cast<int>(pane));
    return told();
  }
};

TEST_F(Accessibility, SidebarTellsItsPanesAndTheChosenOne) {
  EXPECT_THAT(told(), IsSupersetOf({"tab: General", "tab: Boost, selected", "tab: Appearance", "tab: Updates",
                                    "tab: About", "heading: Boost"}));
}

TEST_F(Accessibility, SidebarIsAsWideAsItIsDraggedWithinLimits) {
  QQuickItem* handle = nullptr;
  QQuickItem* sidebar = nullptr;
  for (QQuickItem* each : view().rootObject()->findChildren<QQuickItem*>()) {
    const std::string type = each->metaObject()->className();
    if (type.rfind("SplitHandle_", 0) == 0) handle = each;
    if (type.rfind("Sidebar_", 0) == 0) sidebar = each;
  }
  ASSERT_TRUE(handle != nullptr && sidebar != nullptr);
  EXPECT_EQ(sidebar->width(), 190);
  for (const auto& [wanted, given] : {std::pair{50., 180.}, {205., 205.}, {700., 220.}}) {
    QMetaObject::invokeMethod(handle, "dragged", Q_ARG(double, wanted));
    EXPECT_EQ(sidebar->width(), given);
  }
}

TEST_F(Accessibility, GeneralPane) {
  EXPECT_THAT(toldOn(Pane::general),
              IsSupersetOf({"tab: General, selected", "heading: General",
                            "switch: Start Boost automatically when a Boost app opens, checked",
                            "switch: Open Vantle at login"}));
}

TEST_F(Accessibility, TheQuestionBeforeAnExtensionIsInstalled) {
  EXPECT_THAT(toldOn(Pane::general), IsSupersetOf({"text: GNOME", "switch: See native apps"}));
  model().extension()->toggle();
  const std::set<std::string> asked = told();
  EXPECT_THAT(asked, IsSupersetOf({"switch: See native apps", "button: Cancel", "button: Install"}));
  EXPECT_TRUE(std::any_of(asked.begin(), asked.end(), [](const std::string& line) {
    return line.starts_with("text: Install a small extension in GNOME?");
  }));
  extension.answer(ShellExtension::State::waiting);
  EXPECT_THAT(told(), IsSupersetOf({"switch: See native apps, checked",
                                    "text: Log out and in again once. GNOME starts the extension then."}));
}

TEST_F(Accessibility, BoostPane) {
  EXPECT_THAT(
      toldOn(Pane::boost),
      IsSupersetOf(
          {"text: Boost these apps",
           "text: None yet. Add an app here, or use “Always boost” in the menu bar panel.",
           "button: Add App…",
           "text: When one of these is in front, everything else moves to the background. Add anything: an "
           "editor, a design tool, a game.",
           "text: Also boost games automatically",
           "switch: Games launched with CrossOver, Wine, checked",
           "switch: Minecraft, Java Edition, checked",
           "switch: Steam games, steamapps folder, checked",
           "switch: Apps in the “Games” category, App Store, checked",
           "text: Never slowed down",
           "row: Spotify",
           "button: Remove Spotify",
           "row: com.apple.Music",
           "text: Also protected automatically: apps playing audio, downloading or keeping the Mac awake, "
           "and "
           "system processes.",
           "text: When memory runs low",
           "choice: Only show a notification, checked",
           "choice: Quit the apps I mark as quittable",
           "text: Quittable apps",
           "text: None yet.",
           "button: Add Quittable App…",
           "text: Not used right now. Choose “Quit the apps I mark as quittable” above to turn this on."}));
}

// A system without such a service has no games that register with it.
TEST_F(Accessibility, BoostPaneOffersWhatTheSystemHas) {
  for (const std::string& line : toldOn(Pane::boost))
    EXPECT_EQ(line.find("GameMode"), std::string::npos) << line;
}

TEST_F(Accessibility, AppearancePaneHasOneSelectedSwatch) {
  settings.accent.set(AccentTheme::teal);
  const std::set<std::string> lines = toldOn(Pane::appearance);
  EXPECT_THAT(lines, IsSupersetOf({"text: Accent color", "choice: Blue", "choice: Graphite",
                                   "choice: Teal, checked, selected", "choice: System, checked",
                                   "choice: Light", "choice: Dark"}));
  EXPECT_EQ(std::count_if(lines.begin(), lines.end(),
                          [](const std::string& line) {
                            return line.rfind("choice", 0) == 0 && line.find("selected") != std::string::npos;
                          }),
            1);
}

TEST_F(Accessibility, UpdatesPane) {
  EXPECT_THAT(toldOn(Pane::updates),
              IsSupersetOf({"text: Current version: 1.2", "switch: Check for updates automatically, checked",
                            "text: Not checked yet", "button: Check Now",
                            "text: Vantle only looks up the latest version number. It never downloads or "
                            "installs anything by itself."}));
  model().updates()->act();
  EXPECT_THAT(told(), IsSupersetOf({"text: Update checks aren't set up in this build."}));
}

TEST_F(Accessibility, AboutPane) {
  EXPECT_THAT(toldOn(Pane::about),
              IsSupersetOf(std::vector<std::string>{
                  "text: Version: 1.2", "text: Memory used by Vantle: " + byteText(engine.ownFootprint()),
                  "text: Boost moves other apps to the efficiency cores while you work or play, and "
                  "puts everything back when you stop. Vantle never quits anything unless you "
                  "allow it."}));
}

class OnLinux : public Accessibility {
 protected:
  OnLinux() : Accessibility(linuxWords) {}
};

TEST_F(OnLinux, NoPaneSpeaksOfAMac) {
  EXPECT_THAT(
      toldOn(Pane::boost),
      IsSupersetOf({"text: None yet. Add an app here, or use “Always boost” in the panel.",
                    "switch: Apps in the “Games” category, app menu, checked",
                    "switch: Games using GameMode, gamemoderun",
                    "text: Also protected automatically: apps playing audio, downloading or keeping the "
                    "computer awake, and system processes."}));
  EXPECT_THAT(toldOn(Pane::about),
              Contains("text: Boost moves other apps to the background while you work or play, and puts "
                       "everything back when you stop. Vantle never quits anything unless you allow it."));
  for (const Pane each : allPanes) EXPECT_THAT(toldOn(each), Each(ofNoMac())) << titleOf(each);
  model().picker()->openFor(model().boost()->userGames());
  EXPECT_THAT(told(), Each(ofNoMac()));
}

TEST_F(Accessibility, PickerIsADialog) {
  model().picker()->openFor(model().boost()->userGames());
  EXPECT_THAT(told(), IsSupersetOf({"dialog: Add App", "field: Search installed apps", "list: Installed apps",
                                    "row: Firefox", "button: Other…", "button: Cancel", "button: Add"}));
}

} // namespace

} // namespace vantle
