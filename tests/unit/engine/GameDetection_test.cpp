// SPDX-License-Identifier: MIT
#include "engine/GameDetection.h"

#include "platform/simulated/SimulatedMachine.h"

#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <vector>

namespace vantle {
namespace {

constexpr const char* crossOver = "com.codeweavers.CrossOver";

class GameDetectionTest : public testing::Test {
 protected:
  SimulatedMachine machine;
  AppSettings settings{machine.defaults};
  DeclaredGames declared{settings, machine.games, machine.processes, machine.workspace};
  GameDetection detection{settings, machine.processes, machine.text, declared};

  bool isGame(const AppSpec& spec) { return detection.isGame(*machine.launch(spec, Opening::inBackground)); }
  void allSwitches(bool on) {
    for (Setting<bool>* detect : {&settings.detectCrossOver, &settings.detectSteam, &settings.detectMinecraft,
                                  &settings.detectGamesCategory}) {
      detect->set(on);
    }
  }
};

TEST_F(GameDetectionTest, AnOrdinaryAppIsNoGame) {
  EXPECT_FALSE(isGame({.name = "Mail", .bundleID = "org.example.mail", .bundlePath = "/apps/mail"}));
  EXPECT_FALSE(isGame({}));
}

TEST_F(GameDetectionTest, AnAppOfThePersonsListIsAGameWithAllSwitchesOff) {
  allSwitches(false);
  settings.userGames.set({"org.example.editor", crossOver});
  EXPECT_TRUE(isGame({.bundleID = "org.example.editor"}));
  EXPECT_TRUE(isGame({.bundleID = crossOver})) << "even CrossOver itself";
}

TEST_F(GameDetectionTest, ThePersonsListIsComparedWholeAndByLetterCase) {
  settings.userGames.set({"org.example.editor"});
  EXPECT_FALSE(isGame({.bundleID = "org.example.Editor"}));
  EXPECT_FALSE(isGame({.bundleID = "org.example.editor2"}));
  EXPECT_FALSE(isGame({.bundleID = "org.example"}));
}

TEST_F(GameDetectionTest, AnAppWithoutABundleIdentifierIsMatchedByItsName) {
  settings.userGames.set({"Editor"});
  EXPECT_TRUE(isGame({.name = "Editor"}));
  EXPECT_FALSE(isGame({.name = "Editor", .bundleID = "org.example.editor"})) << "the identifier counts then";
}

TEST_F(GameDetectionTest, CrossOverItselfIsNoGameWithEverySwitchOn) {
  EXPECT_FALSE(isGame({.bundleID = crossOver,
                       .bundlePath = "/x/steamapps/bottles/CrossOver",
                       .category = "public.app-category.games",
                       .program = "/opt/minecraft"}));
}

TEST_F(GameDetectionTest, AMissingNameAndIdentifierLeaveTheOtherRules) {
  settings.userGames.set({""});
  EXPECT_FALSE(isGame({}));
  EXPECT_TRUE(isGame({.bundlePath = "/x/steamapps/game"}));
}

struct PathCase {
  const char* what;
  const char* path;
  bool isGame;
};

class GamePaths : public testing::TestWithParam<PathCase> {
 protected:
  // Where a path may come from.
  enum class From { bundle, executable, process };
  static AppSpec appAt(From from, const char* path) {
    AppSpec spec{.name = "X"};
    if (from == From::bundle) spec.bundlePath = path;
    if (from == From::executable) spec.executablePath = path;
    if (from == From::process) spec.program = path;
    return spec;
  }
};

TEST_P(GamePaths, CountWhicheverOfTheThreePathsItIs) {
  for (const From from : {From::bundle, From::executable, From::process}) {
    SimulatedMachine machine;
    AppSettings settings(machine.defaults);
    const DeclaredGames declared(settings, machine.games, machine.processes, machine.workspace);
    const GameDetection detection(settings, machine.processes, machine.text, declared);
    settings.detectMinecraft.set(false);
    const SimulatedAppRef app = machine.launch(appAt(from, GetParam().path), Opening::inBackground);
    EXPECT_EQ(detection.isGame(*app), GetParam().isGame)
        << GetParam().path << " from " << static_cast<int>(from);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Table, GamePaths,
    testing::Values(PathCase{"crossOverSupport", "/Apps/CrossOver.app/Contents/SharedSupport/x", true},
                    PathCase{"crossOverElsewhere", "/Apps/CrossOver.app/Contents/MacOS/x", false},
                    PathCase{"bottlesAnyCase", "/home/p/My BOTTLES/BoTTleS/Game.exe", true},
                    PathCase{"bottlesLastPart", "/home/p/Bottles", false},
                    PathCase{"bottlesWithinAName", "/home/p/mybottles/x", false},
                    PathCase{"wine64", "/opt/wine/bin/Wine64-Preloader", true},
                    PathCase{"wine", "/opt/wine/bin/wine-preloader", true},
                    PathCase{"wineItself", "/opt/wine/bin/wine", false},
                    PathCase{"steamFolderAnyCase", "/home/p/Library/SteamApps/common/game", true},
                    PathCase{"steamFile", "/home/p/steamapps", false},
                    PathCase{"steamWithinAName", "/home/p/mysteamapps/x", false},
                    PathCase{"upperCaseUmlaut", "/home/\xC3\x84/steamapps/x", true},
                    PathCase{"invalidBytes", "/home/\xFF/steamapps/x", true},
                    PathCase{"nothingSpecial", "/usr/bin/mail", false}),
    [](const auto& param) { return std::string(param.param.what); });

TEST_F(GameDetectionTest, EachRuleCountsOnlyWhileItsSwitchIsOn) {
  struct Rule {
    Setting<bool>& detect;
    AppSpec game;
  };
  const std::vector<Rule> rules{
      {settings.detectCrossOver, {.bundlePath = "/home/p/Bottles/game"}},
      {settings.detectSteam, {.bundlePath = "/home/p/steamapps/game"}},
      {settings.detectMinecraft, {.program = "/opt/Minecraft/java"}},
      {settings.detectGamesCategory, {.bundlePath = "/x", .category = "public.app-category.games"}},
  };
  for (const Rule& rule : rules) {
    allSwitches(false);
    EXPECT_FALSE(isGame(rule.game));
    rule.detect.set(true);
    EXPECT_TRUE(isGame(rule.game));
    allSwitches(true);
    rule.detect.set(false);
    EXPECT_FALSE(isGame(rule.game));
    allSwitches(true);
  }
}

TEST_F(GameDetectionTest, AJavaProcessBelowMinecraftsLauncherIsAGameAndOneFromAShellIsNot) {
  const Pid launcher = machine.processes.spawn({.executable = "/opt/MineCraft-Launcher/launcher"});
  const Pid helper = machine.processes.spawn({.parent = launcher, .executable = "/bin/sh"});
  const Pid shell = machine.processes.spawn({.executable = "/bin/sh"});
  EXPECT_TRUE(isGame({.name = "Java", .parent = helper, .program = "/usr/bin/java"}));
  EXPECT_FALSE(isGame({.name = "Java", .parent = shell, .program = "/usr/bin/java"}));
}

TEST_F(GameDetectionTest, AnAncestorThatCannotBeReadIsSkipped) {
  const Pid launcher = machine.processes.spawn({.executable = "/opt/minecraft/launcher"});
  const Pid helper = machine.processes.spawn({.parent = launcher, .executable = "/bin/sh"});
  machine.calls.refuse(Operation::readExecutablePath, helper);
  EXPECT_TRUE(isGame({.name = "Java", .parent = helper, .program = "/usr/bin/java"}));
  machine.calls.refuse(Operation::readExecutablePath, launcher);
  EXPECT_FALSE(isGame({.name = "Java", .parent = helper, .program = "/usr/bin/java"}));
}

TEST_F(GameDetectionTest, TheGamesCategoryAndItsSubcategoriesCount) {
  const auto withCategory = [](const char* category) {
    return AppSpec{.bundlePath = "/apps/x", .category = category};
  };
  EXPECT_TRUE(isGame(withCategory("public.app-category.games")));
  EXPECT_TRUE(isGame(withCategory("public.app-category.action-games")));
  EXPECT_FALSE(isGame(withCategory("public.app-category.utilities")));
  EXPECT_FALSE(isGame(withCategory("public.app-category.Games")));
}

TEST_F(GameDetectionTest, WithoutABundleThereIsNoCategory) {
  EXPECT_FALSE(isGame({.name = "X", .category = "public.app-category.games"}));
  EXPECT_FALSE(isGame({.name = "X", .bundlePath = "/apps/x"}));
}

TEST_F(GameDetectionTest, TheWalkOverTheAncestorsComesOnlyAfterEveryCheaperTest) {
  machine.calls.startTrace();
  EXPECT_TRUE(isGame({.bundlePath = "/x/steamapps/game"}));
  for (const std::string& line : machine.calls.takeTrace()) {
    EXPECT_FALSE(line.starts_with("processes.record")) << line;
  }
}

TEST_F(GameDetectionTest, TheOneProfileIsGamingAndReadsTheSwitchesAtEveryCall) {
  const Profile profile = gamingProfile(settings, machine.processes, machine.text, declared);
  EXPECT_EQ(profile.name, "Gaming");
  EXPECT_EQ(profile.defaultProtected, defaultProtectedApps());
  const SimulatedAppRef game = machine.launch({.bundlePath = "/x/steamapps/game"}, Opening::inBackground);
  EXPECT_TRUE(profile.isTrigger(*game));
  settings.detectSteam.set(false);
  EXPECT_FALSE(profile.isTrigger(*game));
}

} // namespace
} // namespace vantle
