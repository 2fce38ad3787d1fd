// SPDX-License-Identifier: MIT
// The hooks, and the examples of what people use, with a copy that runs a Boost among real apps.
#include "tests/desktop/CommandStage.h"

#include <gmock/gmock.h>
#include <regex>
#include <sstream>

namespace vantle::desktop {
namespace {

namespace fs = std::filesystem;
using testing::ElementsAre;

class Scripting : public CommandStage {
 protected:
  void SetUp() override {
    CommandStage::SetUp();
    // What the examples call is found in the PATH.
    const fs::path folder = m_desktop->folder().folder("bin");
    fs::create_symlink(VANTLE_PROGRAM, folder / "vantle");
    m_desktop->setEnvironment("PATH", folder.string() + ":/usr/bin:/bin");
  }

  fs::path written() const { return m_desktop->folder().path() / "tmp/written"; }
  std::vector<std::string> writtenLines() const {
    std::istringstream file(contents(written()));
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);) lines.push_back(line);
    return lines;
  }
  void installHook(const std::string& name, const std::string& text) {
    m_desktop->folder().folder("home/.config/Vantle");
    m_desktop->folder().folder("home/.config/Vantle/hooks");
    const fs::path file = m_desktop->folder().write("home/.config/Vantle/hooks/" + name, text);
    fs::permissions(file, fs::perms(0755));
  }
  // The lines that one of the examples prints, as they come.
  Program& launchExample(const std::string& name) {
    const fs::path example = fs::path(VANTLE_EXAMPLES) / name;
    return m_desktop->launch({"sh", "-c", R"(exec "$0" >"$1")", example.string(), written().string()});
  }
  std::string lastWritten() const {
    const std::vector<std::string> lines = writtenLines();
    return lines.empty() ? std::string() : lines.back();
  }
};

TEST_F(Scripting, HooksRunWithTheBoostAppsNameAndIdentifier) {
  for (const char* name : {"boost-start", "boost-end"}) {
    installHook(name,
                "#!/bin/sh\necho \"$(basename \"$0\") $VANTLE_APP_NAME $VANTLE_APP_ID $VANTLE_APP_PID\" >>" +
                    written().string() + "\n");
  }
  ASSERT_NO_FATAL_FAILURE(startBoost());
  const std::string app = " Game org.example.Game " + std::to_string(m_game->pid());
  require("the first hook", [&] { return writtenLines().size() == 1; });
  m_game->kill();
  require("the second hook", [&] { return writtenLines().size() == 2; });
  EXPECT_THAT(writtenLines(), ElementsAre("boost-start" + app, "boost-end" + app));
}

TEST_F(Scripting, TheLastHookRunsWhenTheProgramEndsThoughAnotherOneIsNotDone) {
  installHook("boost-start", "#!/bin/sh\necho $$ >>" + written().string() + "\nexec sleep 1000\n");
  installHook("boost-end", "#!/bin/sh\necho over >>" + written().string() + "\n");
  ASSERT_NO_FATAL_FAILURE(startBoost());
  require("the first hook", [&] { return writtenLines().size() == 1; });
  const Pid first = std::stoi(writtenLines().front());
  m_vantle->signal(SIGTERM);
  EXPECT_EQ(m_vantle->exitStatus(), 0);
  require("the second hook", [&] { return lastWritten() == "over"; });
  EXPECT_TRUE(waitUntil([&] { return !isAlive(first); }));
}

TEST_F(Scripting, ABoostWaitsForNoHook) {
  installHook("boost-start", "#!/bin/sh\nexec sleep 1000\n");
  ASSERT_NO_FATAL_FAILURE(startBoost());
  EXPECT_EQ(vantle({"off"}).status, 0);
  EXPECT_TRUE(waitUntil([&] { return isAtFullSpeed(m_mail->pid()); }));
}

TEST_F(Scripting, TheHooksOfTheExamplesHoldNoticesBack) {
  // Stands in for dunst's own tool.
  const fs::path tool =
      m_desktop->folder().write("bin/dunstctl", "#!/bin/sh\necho \"$@\" >>" + written().string() + "\n");
  fs::permissions(tool, fs::perms(0755));
  for (const char* name : {"boost-start", "boost-end"}) {
    installHook(name, contents(fs::path(VANTLE_EXAMPLES) / "hooks" / name));
  }
  ASSERT_NO_FATAL_FAILURE(startBoost());
  m_game->kill();
  EXPECT_TRUE(waitUntil([&] { return writtenLines().size() == 2; }));
  EXPECT_THAT(writtenLines(), ElementsAre("set-paused true", "set-paused false"));
}

TEST_F(Scripting, TheWaybarModuleFollowsABoost) {
  m_mail = &app("Mail");
  m_game = &app("Game");
  startVantle();
  Program& module = launchExample("waybar/vantle-waybar");
  require("its first line", [&] { return !writtenLines().empty(); });
  EXPECT_EQ(Json::parse(lastWritten())->textAt("class"), "idle");
  m_desktop->activate(*m_game);
  require("the Boost", [&] { return lastWritten().find("\"boost\"") != std::string::npos; });
  const Json line = *Json::parse(lastWritten());
  EXPECT_EQ(line.textAt("text"), "⚡ Game · 1");
  EXPECT_EQ(line.textAt("tooltip"), "Mail");
  m_vantle->kill();
  EXPECT_EQ(module.exitStatus(), 0) << "Waybar starts it again";
  EXPECT_EQ(Json::parse(lastWritten())->textAt("class"), "stopped");
  // What Waybar reads names the script and the commands.
  const std::string config = contents(fs::path(VANTLE_EXAMPLES) / "waybar/config.jsonc");
  const std::optional<Json> parsed = Json::parse(config.substr(config.find('{')));
  ASSERT_TRUE(parsed);
  EXPECT_EQ(parsed->find("custom/vantle")->textAt("exec"), "vantle-waybar");
}

TEST_F(Scripting, ThePolybarModuleFollowsABoost) {
  ASSERT_NO_FATAL_FAILURE(startBoost());
  launchExample("polybar/vantle-polybar");
  require("the Boost", [&] { return lastWritten() == "boost: Game (1)"; });
  EXPECT_EQ(vantle({"off"}).status, 0);
  EXPECT_TRUE(waitUntil([&] { return lastWritten().empty() && writtenLines().size() > 1; }));
}

TEST_F(Scripting, NoNameGivesPolybarACommand) {
  m_desktop->installDesktopFile(
      "org.example.Odd", "[Desktop Entry]\nType=Application\nExec=true\nName=%%{{A1:touch owned:}%%%{o}\n"
                         "StartupWMClass=Odd\nCategories=Game;\n");
  Program& odd = app("Odd");
  startVantle();
  m_desktop->activate(odd);
  launchExample("polybar/vantle-polybar");
  require("the Boost", [&] { return lastWritten().starts_with("boost: "); });
  EXPECT_EQ(lastWritten(), "boost: {{A1:touch owned:}{o} (0)");
}

TEST_F(Scripting, HooksAreToldOfNamesInOneLineOfWhatIsSeen) {
  m_desktop->installDesktopFile(
      "org.example.Odd", "[Desktop Entry]\nType=Application\nExec=true\nName=a\u009b\u202eb\u2028c\u200b\n"
                         "StartupWMClass=Odd\nCategories=Game;\n");
  installHook("boost-start", "#!/bin/sh\necho \"$VANTLE_APP_NAME\" >>" + written().string() + "\n");
  Program& odd = app("Odd");
  startVantle();
  m_desktop->activate(odd);
  require("the hook", [&] { return writtenLines().size() == 1; });
  EXPECT_THAT(writtenLines(), ElementsAre("a?b?c"));
}

TEST_F(Scripting, TheLineOfTheOverlayTellsOfABoost) {
  ASSERT_NO_FATAL_FAILURE(startBoost());
  const std::string config = contents(fs::path(VANTLE_EXAMPLES) / "mangohud/MangoHud.conf");
  std::smatch command;
  ASSERT_TRUE(std::regex_search(config, command, std::regex("\nexec=(.*)\n")));
  ASSERT_TRUE(m_desktop->run({"sh", "-c", command[1].str() + " >" + written().string()}));
  EXPECT_THAT(writtenLines(), ElementsAre("Boost on for Game"));
}

} // namespace
} // namespace vantle::desktop
