// SPDX-License-Identifier: MIT
#include "platform/linux/apps/DesktopIdentity.h"

#include "platform/linux/apps/IdentifierMap.h"

#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <iterator>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace vantle {
namespace {

DesktopEntry entry(std::string id, std::string program, std::vector<std::string> arguments = {},
                   std::string windowClass = {}, bool isHidden = false) {
  DesktopEntry made;
  made.path = "/usr/share/applications/" + id + ".desktop";
  made.name = id + " by name";
  made.id = std::move(id);
  made.windowClass = std::move(windowClass);
  made.executable = program;
  made.realPath = std::move(program);
  made.arguments = std::move(arguments);
  made.isHidden = isHidden;
  return made;
}

DesktopEntry game(DesktopEntry made) {
  made.category = "public.app-category.games";
  return made;
}

DesktopEntry script(DesktopEntry made) {
  made.isScript = true;
  return made;
}

DesktopEntry store(DesktopEntry made) {
  made.isStore = true;
  return made;
}

// A small menu with the traps that real ones have.
const std::vector<DesktopEntry>& installed() {
  static const std::vector<DesktopEntry> entries{
      entry("org.xfce.mousepad", "/usr/bin/mousepad"),
      entry("org.xfce.mousepad-settings", "/usr/bin/mousepad", {"--preferences"}),
      entry("debian-xterm", "/usr/bin/xterm", {}, "XTerm"),
      script(entry("debian-uxterm", "/usr/bin/uxterm", {}, "UXTerm")),
      entry("galculator", "/usr/bin/galculator"),
      script(entry("org.mozilla.firefox", "/usr/lib/firefox/firefox.sh", {}, "firefox")),
      entry("firefox_firefox", "/snap/firefox/firefox"),
      entry("org.gnome.Nautilus", "/usr/bin/nautilus", {"--new-window"}),
      entry("nautilus-autorun", "/usr/bin/nautilus-autorun", {}, {}, true),
      entry("python3.11", "/usr/bin/python3.11"),
      entry("org.gnome.Lollypop", "/usr/bin/lollypop.py"),
      entry("chrome-abc-Default", "/opt/google/chrome/chrome", {"--app-id=abc"}, "crx_abc"),
      entry("google-chrome", "/opt/google/chrome/chrome", {}, "Google-chrome"),
      entry("kobodeluxe", "/usr/games/kobodl"),
      entry("hidden-tool", "/usr/bin/hidden-tool", {}, {}, true),
      entry("com.spotify.Client", "/app/bin/spotify"),
      store(script(entry("steam", "/usr/games/steam"))),
      script(game(entry("Fine Game", "/usr/games/steam", {"steam://rungameid/42"}))),
      script(game(entry("whichwayisup", "/usr/games/whichwayisup"))),
      game(entry("monsterz", "/usr/games/monsterz")),
      script(game(entry("freecol", "/usr/games/freecol"))),
      script(entry("jmol", "/usr/bin/jmol")),
      game(entry("scummvm", "/usr/games/scummvm")),
      game(entry("flight-of-the-amazon-queen", "/usr/games/scummvm",
                 {"-p", "/usr/share/scummvm/flight-of-the-amazon-queen", "queen"})),
      script(game(entry("beneath-a-steel-sky", "/usr/games/sky"))),
      script(game(entry("armagetronad", "/usr/games/armagetronad"))),
      game(entry("org.chocolate_doom.Doom", "/usr/games/chocolate-doom")),
      script(game(entry("io.github.freedoom.Phase1", "/usr/games/freedoom1"))),
      script(game(entry("hero", "/opt/gog/start.sh"))),
      game(entry("tavern", "/usr/bin/dash", {"-c", "cd /opt/$NAME && ./bar.py"})),
      game(entry("super", "/home/me/Super.AppImage")),
      entry("love", "/usr/bin/love"),
      game(entry("org.games.x", "/usr/bin/love", {"/games/x.love"})),
      game(entry("nethack", "/usr/games/xnethack", {}, "NetHack")),
      game(entry("chromium-bsu", "/usr/games/chromium-bsu")),
      script(entry("chromium", "/usr/bin/chromium")),
      script(game(entry("io.github.freedoom.Phase2", "/usr/games/freedoom2"))),
  };
  return entries;
}

AppEvidence running(const std::string& program) {
  AppEvidence evidence;
  evidence.pid = 4242;
  evidence.executable = program;
  evidence.program = program;
  evidence.arguments = {program};
  return evidence;
}

std::string idOf(const AppEvidence& evidence) {
  const DesktopEntry* found = findEntry(evidence, installed());
  return found == nullptr ? "none" : found->id;
}

Wrapper waiting(std::string executable, std::string program, std::vector<std::string> arguments) {
  Wrapper wrapper;
  wrapper.pid = 4200;
  wrapper.executable = std::move(executable);
  wrapper.program = std::move(program);
  wrapper.arguments = std::move(arguments);
  return wrapper;
}

// One family of programs a line, each with what stands against it in a later rank.
TEST(DesktopIdentity, EachRuleDecidesForItsFamilyBeforeTheNext) {
  struct Case {
    const char* rule;
    const char* id;
    AppEvidence evidence;
  };
  const auto with = [](const std::string& program, const std::function<void(AppEvidence&)>& change) {
    AppEvidence evidence = running(program);
    change(evidence);
    return evidence;
  };
  const std::vector<Case> cases{
      {"store's number", "Fine Game",
       with("/app/bin/fine",
            [](AppEvidence& one) {
              one.storeAddress = "steam://rungameid/42";
              one.sandboxId = "com.spotify.Client";
            })},
      {"sandbox", "com.spotify.Client",
       with("/app/bin/client",
            [](AppEvidence& one) {
              one.sandboxId = "com.spotify.Client";
              one.unit = UnitId{"debian-xterm", "4242"};
            })},
      {"own unit", "debian-xterm",
       with("/usr/bin/something",
            [](AppEvidence& one) {
              one.unit = UnitId{"debian-xterm", "4242"};
              one.launchedFile = "/usr/share/applications/galculator.desktop";
            })},
      {"launched file", "galculator",
       with("/usr/bin/something",
            [](AppEvidence& one) {
              one.launchedFile = "/usr/share/applications/galculator.desktop";
              one.applicationId = "org.gnome.Nautilus";
            })},
      {"application id", "org.gnome.Nautilus",
       with("/usr/bin/something",
            [](AppEvidence& one) {
              one.applicationId = "org.gnome.Nautilus";
              one.windowInstance = "crx_abc";
            })},
      {"window class", "chrome-abc-Default",
       with("/opt/google/chrome/chrome",
            [](AppEvidence& one) {
              one.windowInstance = "crx_abc";
              one.windowClass = "GOOGLE-CHROME";
            })},
      {"window class in any case", "google-chrome",
       with("/usr/games/scummvm",
            [](AppEvidence& one) {
              one.windowClass = "GOOGLE-CHROME";
              one.arguments = {"scummvm", "-p", "/usr/share/scummvm/flight-of-the-amazon-queen", "queen"};
            })},
      {"whole command", "flight-of-the-amazon-queen",
       with("/usr/games/scummvm",
            [](AppEvidence& one) {
              one.windowClass = "scummvm";
              one.arguments = {"scummvm", "-p", "/usr/share/scummvm/flight-of-the-amazon-queen", "queen"};
            })},
      {"wrapper", "hero",
       with("/opt/gog/game/Hero.x86_64",
            [](AppEvidence& one) {
              one.wrappers = {waiting("/usr/bin/bash", "/opt/gog/start.sh", {"bash", "/opt/gog/start.sh"})};
              one.windowClass = "Galculator";
            })},
      {"window class as id", "galculator",
       with("/usr/games/kobodl", [](AppEvidence& one) { one.windowClass = "Galculator"; })},
      {"program", "kobodeluxe",
       with("/usr/games/kobodl", [](AppEvidence& one) { one.windowClass = "Lollypop"; })},
      {"last part of the id", "org.gnome.Lollypop",
       with("/usr/bin/python3.12",
            [](AppEvidence& one) {
              one.program = "/opt/lollypop.py";
              one.names = {"monsterz"};
            })},
      {"script's name", "monsterz",
       with("/usr/bin/python3.12",
            [](AppEvidence& one) {
              one.program = "/usr/share/games/monsterz/main.py";
              one.names = {"monsterz"};
              one.unit = UnitId{"jmol", "a1b2"};
            })},
      {"unit of a script", "jmol",
       with("/usr/lib/something",
            [](AppEvidence& one) {
              one.unit = UnitId{"jmol", "a1b2"};
            })},
      {"engine's data", "io.github.freedoom.Phase1",
       with("/usr/games/chocolate-doom",
            [](AppEvidence& one) {
              one.arguments = {"doom", "-iwad", "freedoom1.wad"};
            })},
  };
  std::set<std::string_view> covered;
  for (const Case& each : cases) {
    const IdentityMatch match = matchEntry(each.evidence, installed());
    ASSERT_NE(match.rule, nullptr) << each.rule;
    EXPECT_EQ(match.rule->name, each.rule);
    EXPECT_EQ(match.entry->id, each.id) << each.rule;
    covered.insert(match.rule->name);
  }
  EXPECT_TRUE(covered.contains("engine's data"));
  for (const IdentityRule& rule : identityRules()) {
    EXPECT_TRUE(covered.contains(rule.name)) << "no case for " << rule.name;
    EXPECT_NE(rule.reason, "") << rule.name;
  }
  EXPECT_EQ(matchEntry(running("/opt/nobodys"), installed()).rule, &ownNameRule);
}

std::string fileOf(const char* document) {
  std::ifstream file(std::string(VANTLE_DOCS) + "/" + document);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(DesktopIdentity, TheDocumentsTellOfEachRule) {
  const std::string guide = fileOf("scripting.md");
  const std::string schema = fileOf("status.schema.json");
  std::vector<IdentityRule> all(identityRules().begin(), identityRules().end());
  for (const IdentityRule* rule : {&enginesDataRule, &uninstalledFileRule, &imagesFileRule, &ownNameRule})
    all.push_back(*rule);
  for (const IdentityRule& rule : all) {
    const std::string name(rule.name);
    EXPECT_NE(guide.find("| `" + name + "` | " + std::string(rule.reason) + " |\n"), std::string::npos)
        << name;
    EXPECT_NE(schema.find("\"" + name + "\""), std::string::npos) << name;
  }
}

// The first word of a process and that of a window: whoever asks is told which evidence it was.
TEST(DesktopIdentity, AnIdentityKeepsTheRuleThatDecided) {
  AppEvidence evidence = running("/opt/google/chrome/chrome");
  EXPECT_EQ(identityOf(evidence, matchEntry(evidence, installed())).rule->name, "program");
  evidence.windowInstance = "crx_abc";
  const IdentityMatch known = matchEntry(running("/opt/google/chrome/chrome"), installed());
  EXPECT_EQ(identityOf(evidence, matchWindow(evidence, known, installed())).rule->name, "window class");
  evidence.windowInstance = "something";
  EXPECT_EQ(matchWindow(evidence, known, installed()).rule, known.rule);
  EXPECT_EQ(identityOf(running("/opt/nobodys"), {}).rule->name, "own name");
}

TEST(DesktopIdentity, SandboxIsTheSurestEvidence) {
  AppEvidence evidence = running("/usr/bin/galculator");
  evidence.sandboxId = "com.spotify.Client";
  EXPECT_EQ(idOf(evidence), "com.spotify.Client");
  evidence.sandboxId = "firefox_firefox";
  EXPECT_EQ(idOf(evidence), "firefox_firefox");
  evidence.sandboxId = "galculator_calc";
  EXPECT_EQ(idOf(evidence), "galculator");
  evidence.sandboxId = "org.nowhere.App";
  EXPECT_EQ(idOf(evidence), "galculator");
}

TEST(DesktopIdentity, UnitNamesItsOwnApp) {
  AppEvidence evidence = running("/usr/lib/firefox/firefox");
  evidence.unit = UnitId{"org.mozilla.firefox", "4242"};
  EXPECT_EQ(idOf(evidence), "org.mozilla.firefox");
  evidence.unit->random = "a1b2c3";
  EXPECT_EQ(idOf(evidence), "org.mozilla.firefox") << "a script may start a program of another name";
}

TEST(DesktopIdentity, UnitOfATerminalDoesNotNameWhatItsShellStarts) {
  AppEvidence evidence = running("/usr/bin/galculator");
  evidence.unit = UnitId{"debian-xterm", "1000"};
  EXPECT_EQ(idOf(evidence), "galculator");
  evidence = running("/opt/games/unknown");
  evidence.unit = UnitId{"debian-xterm", "1000"};
  EXPECT_EQ(idOf(evidence), "none");
}

TEST(DesktopIdentity, LaunchedFileBeatsTheWindow) {
  AppEvidence evidence = running("/usr/bin/galculator");
  evidence.launchedFile = "/usr/share/applications/kobodeluxe.desktop";
  evidence.windowClass = "XTerm";
  EXPECT_EQ(idOf(evidence), "kobodeluxe");
}

TEST(DesktopIdentity, WindowNamesItsApp) {
  AppEvidence evidence = running("/usr/bin/something");
  evidence.applicationId = "org.xfce.mousepad";
  evidence.windowClass = "XTerm";
  EXPECT_EQ(idOf(evidence), "org.xfce.mousepad");
  evidence.applicationId = "org.nowhere.App";
  EXPECT_EQ(idOf(evidence), "debian-xterm");
  evidence.windowClass = "uXtErM";
  EXPECT_EQ(idOf(evidence), "debian-uxterm") << "StartupWMClass, whatever the letter case";
  evidence.windowClass = "Galculator";
  EXPECT_EQ(idOf(evidence), "galculator") << "the id is the class in lower case";
  evidence.windowClass.clear();
  evidence.windowInstance = "galculator";
  EXPECT_EQ(idOf(evidence), "galculator");
}

TEST(DesktopIdentity, ProgramNamesItsApp) {
  EXPECT_EQ(idOf(running("/usr/games/kobodl")), "kobodeluxe");
  EXPECT_EQ(idOf(running("/usr/bin/mousepad")), "org.xfce.mousepad")
      << "an Exec without arguments is preferred";
  EXPECT_EQ(idOf(running("/usr/bin/nautilus")), "org.gnome.Nautilus")
      << "but one with arguments is better than none";
  EXPECT_EQ(idOf(running("/usr/bin/hidden-tool")), "hidden-tool") << "by the last part of its id only";
  AppEvidence app = running("/opt/google/chrome/chrome");
  EXPECT_EQ(idOf(app), "google-chrome");
  app.arguments.emplace_back("--app-id=abc");
  EXPECT_EQ(idOf(app), "chrome-abc-Default");
}

TEST(DesktopIdentity, InterpretersAreNotTheirScripts) {
  AppEvidence evidence = running("/usr/bin/python3.11");
  evidence.program = "/usr/bin/lollypop.py";
  EXPECT_EQ(idOf(evidence), "org.gnome.Lollypop");
  evidence.program = "/home/somebody/own.py";
  EXPECT_EQ(idOf(evidence), "none");
}

TEST(DesktopIdentity, LastPartOfTheIdIsTheLastResort) {
  AppEvidence evidence = running("/opt/elsewhere/bin/nautilus");
  EXPECT_EQ(idOf(evidence), "org.gnome.Nautilus");
  evidence = running("/opt/elsewhere/bin/x");
  evidence.windowClass = "Mousepad";
  EXPECT_EQ(idOf(evidence), "org.xfce.mousepad");
}

TEST(DesktopIdentity, NothingFitsAProgramThatNobodyInstalled) {
  EXPECT_EQ(idOf(running("/usr/bin/glmark2")), "none");
  EXPECT_EQ(idOf(AppEvidence{}), "none");
  EXPECT_EQ(findEntry(running("/usr/bin/xterm"), {}), nullptr);
}

// Programs as they run on a Debian desktop, with what their windows say.
TEST(DesktopIdentity, FindsTenOfElevenRealApps) {
  struct Case {
    const char* program;
    const char* windowInstance;
    const char* windowClass;
    const char* id;
  };
  const std::vector<Case> cases{
      {"/usr/bin/mousepad", "mousepad", "Mousepad", "org.xfce.mousepad"},
      {"/usr/bin/xterm", "xterm", "XTerm", "debian-xterm"},
      {"/usr/bin/xterm", "xterm", "UXTerm", "debian-uxterm"},
      {"/usr/bin/galculator", "galculator", "Galculator", "galculator"},
      {"/usr/lib/firefox/firefox", "Navigator", "firefox", "org.mozilla.firefox"},
      {"/usr/bin/nautilus", "org.gnome.Nautilus", "org.gnome.Nautilus", "org.gnome.Nautilus"},
      {"/opt/google/chrome/chrome", "google-chrome", "Google-chrome", "google-chrome"},
      {"/opt/google/chrome/chrome", "crx_abc", "Google-chrome", "chrome-abc-Default"},
      {"/usr/games/kobodl", "", "", "kobodeluxe"},
      {"/app/bin/spotify", "spotify", "Spotify", "com.spotify.Client"},
      {"/usr/bin/glmark2", "", "", "none"},
  };
  for (const Case& each : cases) {
    AppEvidence evidence = running(each.program);
    evidence.windowInstance = each.windowInstance;
    evidence.windowClass = each.windowClass;
    if (std::string(each.id) == "chrome-abc-Default") evidence.arguments.emplace_back("--app-id=abc");
    EXPECT_EQ(idOf(evidence), each.id) << each.program;
  }
}

// What /proc and the windows said of Debian 12's own, started by command.
TEST(DesktopIdentity, FindsGamesThatAnInterpreterOrAnEngineRuns) {
  struct Case {
    const char* executable;
    const char* program;
    std::vector<std::string> names;
    std::vector<std::string> arguments;
    const char* windowClass;
    const char* id;
  };
  const std::vector<Case> cases{
      {"/usr/bin/python3.11",
       "/usr/share/games/whichwayisup/run_game.py",
       {"whichwayisup"},
       {"python3", "run_game.py"},
       "run_game.py",
       "whichwayisup"},
      {"/usr/bin/python3.11",
       "/usr/share/games/monsterz/monsterz.py",
       {"monsterz", "monsterz"},
       {"python3", "/usr/share/games/monsterz/monsterz.py", "--outfd", "42"},
       "monsterz.py",
       "monsterz"},
      {"/usr/lib/jvm/java-17-openjdk-amd64/bin/java",
       "",
       {"FreeCol"},
       {"java", "-classpath", "/usr/share/java/FreeCol.jar", "net.sf.freecol.FreeCol"},
       "net-sf-freecol-FreeCol",
       "freecol"},
      {"/usr/lib/jvm/java-17-openjdk-amd64/bin/java",
       "/usr/share/jmol/Jmol.jar",
       {"Jmol", "jmol"},
       {"java", "-jar", "/usr/share/jmol/Jmol.jar"},
       "org-openscience-jmol-app-jmolpanel-JmolPanel",
       "jmol"},
      {"/usr/games/scummvm",
       "/usr/games/scummvm",
       {},
       {"scummvm", "-p", "/usr/share/scummvm/flight-of-the-amazon-queen", "queen"},
       "scummvm",
       "flight-of-the-amazon-queen"},
      {"/usr/games/scummvm", "/usr/games/scummvm", {}, {"scummvm"}, "scummvm", "scummvm"},
      {"/usr/games/scummvm",
       "/usr/games/scummvm",
       {},
       {"scummvm", "-p", "/usr/share/scummvm/beneath-a-steel-sky", "sky"},
       "scummvm",
       "beneath-a-steel-sky"},
      {"/usr/games/armagetronad.real",
       "/usr/games/armagetronad.real",
       {},
       {"/usr/games/armagetronad.real"},
       "Armagetron Advanced",
       "armagetronad"},
      {"/usr/games/chocolate-doom",
       "/usr/games/chocolate-doom",
       {},
       {"/usr/games/doom", "-iwad", "freedoom1.wad"},
       "chocolate-doom",
       "io.github.freedoom.Phase1"},
      {"/usr/games/chocolate-doom",
       "/usr/games/chocolate-doom",
       {},
       {"/usr/games/doom", "-iwad", "doom2.wad"},
       "chocolate-doom",
       "org.chocolate_doom.Doom"},
      {"/usr/bin/python3.11",
       "/home/somebody/galculator/main.py",
       {},
       {"python3", "main.py"},
       "main.py",
       "none"},
      {"/usr/bin/galculator",
       "/usr/bin/galculator",
       {},
       {"galculator", "freedoom1.wad"},
       "Galculator",
       "galculator"},
  };
  for (const Case& each : cases) {
    AppEvidence evidence = running(each.executable);
    evidence.program = each.program;
    evidence.names = each.names;
    evidence.arguments = each.arguments;
    evidence.windowClass = evidence.windowInstance = each.windowClass;
    EXPECT_EQ(idOf(evidence), each.id) << each.arguments.back();
  }
}

TEST(DesktopIdentity, AProgramThatWineRunsHasItsLoaderAsExecutable) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"/usr/lib/wine/wine64", "/usr/lib/wine/wine64-preloader"},
      {"/usr/lib/wine/wine", "/usr/lib/wine/wine-preloader"},
      {"/opt/wine-stable/bin/wine64-preloader", "/opt/wine-stable/bin/wine64-preloader"},
      {"/usr/lib/wine/wineserver64", "/usr/lib/wine/wineserver64"},
  };
  DesktopEntry menu = entry("wine-Programs-Game", "/usr/bin/wine");
  for (const auto& [executable, loader] : cases) {
    EXPECT_EQ(identityOf(running(executable), {}).executablePath, loader);
    const bool isLoader = loader.ends_with("loader") && executable != loader;
    EXPECT_EQ(identityOf(running(executable), {&menu}).executablePath, isLoader ? loader : "/usr/bin/wine");
  }
}

// One that declares itself to be another app's is believed over what the process is known as.
TEST(DesktopIdentity, WindowsOfOneProcessMayBeSeveralApps) {
  const auto shownBy = [](const char* known, const char* instance, const char* className,
                          const std::string& sandbox = {}) {
    AppEvidence evidence = running("/opt/google/chrome/chrome");
    evidence.windowInstance = instance;
    evidence.windowClass = className;
    evidence.sandboxId = sandbox;
    evidence.arguments = {"chrome", "--app-id=abc"};
    evidence.launchedFile = "/usr/share/applications/chrome-abc-Default.desktop";
    const std::vector<DesktopEntry>& entries = installed();
    const auto entry = std::find_if(entries.begin(), entries.end(),
                                    [known](const DesktopEntry& each) { return each.id == known; });
    const DesktopEntry* const found =
        matchWindow(evidence, {entry == entries.end() ? nullptr : &*entry}, entries).entry;
    return found == nullptr ? std::string() : found->id;
  };
  EXPECT_EQ(shownBy("google-chrome", "crx_abc", "Google-chrome"), "chrome-abc-Default");
  EXPECT_EQ(shownBy("chrome-abc-Default", "google-chrome", "Google-chrome"), "google-chrome");
  EXPECT_EQ(shownBy("chrome-abc-Default", "crx_abc", "Google-chrome"), "chrome-abc-Default");
  EXPECT_EQ(shownBy("google-chrome", "something", "else"), "google-chrome") << "by its program";
  EXPECT_EQ(shownBy("galculator", "dialog", "Dialog"), "galculator") << "which declares no window";
  EXPECT_EQ(shownBy("", "dialog", "Dialog"), "");
  EXPECT_EQ(shownBy("com.spotify.Client", "crx_abc", "", "com.spotify.Client"), "com.spotify.Client")
      << "nobody outside is in a sandbox";
}

TEST(DesktopIdentity, AProgramIsTheAppOfTheWrapperThatWaitsForIt) {
  const Wrapper script = waiting("/usr/bin/bash", "/opt/gog/start.sh", {"/bin/bash", "./start.sh"});
  struct Case {
    const char* program;
    std::vector<Wrapper> wrappers;
    const char* id;
  };
  const std::vector<Case> cases{
      {"/opt/gog/game/Hero.x86_64", {script}, "hero"},
      {"/opt/gog/game/Hero.x86_64",
       {waiting("/usr/bin/bash", "/opt/gog/game/real.sh", {"bash", "real.sh"}), script},
       "hero"},
      {"/opt/NAME/bar.py",
       {waiting("/usr/bin/dash", "", {"sh", "-c", "cd /opt/$NAME && ./bar.py"})},
       "tavern"},
      {"/opt/NAME/bar.py", {waiting("/usr/bin/dash", "", {"sh", "-c", "cd /opt/other && ./bar.py"})}, "none"},
      {"/tmp/.mount_Super/usr/bin/superb",
       {waiting("/home/me/Super.AppImage", "/home/me/Super.AppImage", {"Super.AppImage"})},
       "super"},
      {"/opt/steam/steamwebhelper",
       {waiting("/usr/bin/bash", "/usr/games/steam", {"bash", "/usr/games/steam", "steam://rungameid/42"})},
       "none"},
      {"/usr/bin/galculator", {script}, "galculator"},
      {"/usr/games/scummvm", {waiting("/usr/bin/bash", "/opt/mine.sh", {"bash", "/opt/mine.sh"})}, "scummvm"},
  };
  for (const Case& each : cases) {
    AppEvidence evidence = running(each.program);
    evidence.wrappers = each.wrappers;
    EXPECT_EQ(idOf(evidence), each.id) << each.program;
  }
  AppEvidence evidence = running("/opt/gog/game/Hero.x86_64");
  evidence.windowClass = "weird";
  evidence.launchedFile = "/usr/share/applications/super.desktop";
  evidence.launchedProcess = script.pid;
  evidence.wrappers = {script};
  EXPECT_EQ(idOf(evidence), "super") << "by the file that the wrapper was started from";
  evidence.windowClass = "XTerm";
  EXPECT_EQ(idOf(evidence), "debian-xterm") << "which is no word of the program itself";
}

TEST(DesktopIdentity, AProgramIsTheAppOfTheScriptThatHasBecomeIt) {
  DesktopEntry hero = script(game(entry("hero", "/opt/start.sh")));
  hero.becomes.program = "/opt/game/run";
  std::vector<DesktopEntry> entries{hero};
  const AppEvidence evidence = running("/opt/game/run");
  ASSERT_NE(findEntry(evidence, entries), nullptr);
  entries.push_back(entry("run", "/opt/game/run"));
  EXPECT_EQ(findEntry(evidence, entries)->id, "run") << "which starts it itself";
  EXPECT_EQ(findEntry(AppEvidence(), {&hero, 1}), nullptr);
}

// Of an engine that has many games.
TEST(DesktopIdentity, AProgramIsTheAppOfTheScriptThatCallsItSo) {
  const auto becomes = [](const char* id, const char* script, ScriptsProgram program) {
    DesktopEntry made = game(vantle::script(entry(id, script)));
    made.becomes = std::move(program);
    return made;
  };
  const char* const engine = "/usr/bin/engine-11";
  std::vector<DesktopEntry> entries{
      becomes("any", "/usr/games/any", {engine, {}, true}),
      becomes("rescue", "/usr/games/rescue", {engine, {"/data/r.pak"}}),
      becomes("rescue-hard", "/usr/games/hard", {engine, {"/data/r.pak", "--hard"}, true}),
      becomes("full", "/usr/games/full", {engine, {"--fullscreen"}, true}),
      becomes("near", "/usr/games/near", {engine, {"n.pak"}, false, "/data/near"}),
      becomes("here", "/usr/games/here", {engine, {"--data=."}, false, "/data/here"}),
      becomes("twin", "/usr/games/twin", {engine, {"t.pak"}}),
      becomes("other-twin", "/usr/games/other", {engine, {"t.pak"}, true}),
      becomes("snake", "/usr/games/snake", {"/usr/bin/python3", {"-I", "/data/s.py"}, true}),
      becomes("python", "/usr/games/python", {"/usr/bin/python3", {"-I"}, true}),
      becomes("inner", "/usr/games/inner", {"/data/in.sh", {"-x"}}),
  };
  struct Case {
    std::vector<std::string> arguments;
    const char* folder;
    const char* id;
  };
  const std::vector<Case> cases{
      {{"/data/r.pak"}, "/", "rescue"},
      {{"/data/r.pak", "--hard", "2"}, "/", "rescue-hard"},
      {{"/data/r.pak", "2"}, "/", "any"},
      {{"/data/another.pak"}, "/", "any"},
      {{"--fullscreen", "x"}, "/", "full"},
      {{"x", "--fullscreen"}, "/", "any"},
      {{"n.pak"}, "/data/near", "near"},
      {{"n.pak"}, "/data/far", "any"},
      {{"--data=."}, "/data/here", "here"},
      {{"--data=."}, "/data/far", "any"},
      {{"t.pak"}, "/", "none"},
      {{}, "/", "any"},
  };
  const auto idOf = [&](const AppEvidence& evidence) {
    const DesktopEntry* const found = findEntry(evidence, entries);
    return found == nullptr ? "none" : found->id;
  };
  for (const Case& each : cases) {
    AppEvidence evidence = running(engine);
    evidence.arguments.insert(evidence.arguments.end(), each.arguments.begin(), each.arguments.end());
    evidence.workingFolder = each.folder;
    EXPECT_EQ(idOf(evidence), each.id) << testing::PrintToString(each.arguments) << each.folder;
  }
  AppEvidence evidence = running("/usr/bin/python3");
  evidence.program = "/data/s.py";
  evidence.arguments = {"python3", "-I", "/data/s.py"};
  EXPECT_EQ(idOf(evidence), "snake");
  evidence.program = evidence.arguments[2] = "/data/other.py";
  EXPECT_EQ(idOf(evidence), "none") << "an interpreter is what it runs";
  evidence.executable = "/usr/bin/dash";
  evidence.program = "/data/in.sh";
  evidence.arguments = {"/bin/sh", "/data/in.sh", "-x"};
  EXPECT_EQ(idOf(evidence), "inner");
  evidence.arguments = {"/bin/sh", "/data/in.sh", "-y"};
  EXPECT_EQ(idOf(evidence), "none");

  entries[1].executable = "/usr/games/r"; // called as its data
  AppEvidence called = running(engine);
  called.arguments.emplace_back("/data/r.pak");
  EXPECT_EQ(matchEntry(called, entries).rule->name, "whole command");

  entries.push_back(game(entry("engine", engine, {}, "Engine")));
  AppEvidence data = running(engine);
  data.windowClass = "Engine-11";
  data.arguments.emplace_back("/data/r.pak");
  EXPECT_EQ(idOf(data), "rescue") << "which says more than the program alone";
  data.arguments.back() = "--fullscreen";
  EXPECT_EQ(idOf(data), "engine");
}

// What was launched was the front end that has become this program.
TEST(DesktopIdentity, ASuccessorIsKnownByItselfFirst) {
  AppEvidence evidence = running("/usr/bin/xterm");
  evidence.launchedFile = "/usr/share/applications/galculator.desktop";
  evidence.launchedProcess = evidence.pid;
  EXPECT_EQ(idOf(evidence), "galculator");
  evidence.isSuccessor = true;
  EXPECT_EQ(idOf(evidence), "debian-xterm");
  evidence.executable = evidence.program = "/opt/unknown";
  EXPECT_EQ(idOf(evidence), "galculator");
}

// The shell may have become the program, or wait for it and whatever that has started.
TEST(DesktopIdentity, AProgramIsTheAppOfTheShellThatWasToldToStartIt) {
  DesktopEntry tavern = game(entry("tavern-night", "/opt/night/start"));
  tavern.told = {"-c", "export A=1; /opt/night/start"};
  std::vector<DesktopEntry> entries{tavern};
  const AppEvidence evidence = running("/opt/night/start");
  EXPECT_NE(findEntry(evidence, entries), nullptr);
  AppEvidence started = running("/opt/night/bin/night");
  started.wrappers = {waiting("/usr/bin/dash", "", {"/bin/sh", "-c", "export A=1; /opt/night/start"})};
  EXPECT_NE(findEntry(started, entries), nullptr);
  started.wrappers = {waiting("/usr/bin/dash", "", {"/bin/sh", "-c", "/opt/night/start"})};
  EXPECT_EQ(findEntry(started, entries), nullptr) << "which somebody else has told";
  started.wrappers = {waiting("", "", {})};
  EXPECT_EQ(findEntry(started, entries), nullptr);
  entries.push_back(entry("plain", "/opt/night/start"));
  EXPECT_EQ(findEntry(evidence, entries)->id, "plain") << "which starts nothing but it";
  AppEvidence shell = running("/usr/bin/dash");
  shell.program.clear();
  shell.arguments = {"sh"};
  EXPECT_EQ(findEntry(shell, entries), nullptr) << "a terminal's";
}

TEST(DesktopIdentity, WhoeverHasWindowsIsNobodysWrapper) {
  AppEvidence evidence = running("/opt/gog/game/Hero.x86_64");
  evidence.launchedFile = "/usr/share/applications/super.desktop";
  evidence.wrappers = {waiting("/usr/bin/bash", "/opt/a.sh", {"bash", "/opt/a.sh"}),
                       waiting("/usr/bin/bash", "/opt/gog/start.sh", {"bash", "/opt/gog/start.sh"})};
  evidence.wrappers[1].pid = evidence.launchedProcess = 4100;
  AppEvidence kept = evidence;
  dropWrappersFrom(kept, [](Pid pid) { return pid == 1; });
  EXPECT_EQ(idOf(kept), "super");
  dropWrappersFrom(evidence, [](Pid pid) { return pid == 4100; });
  EXPECT_EQ(evidence.wrappers.size(), 1U);
  EXPECT_EQ(idOf(evidence), "none");
}

TEST(DesktopIdentity, AnEngineWithOtherDataIsNotThatGame) {
  const auto idWith = [](const std::string& folder, std::vector<std::string> arguments,
                         const char* windowClass) {
    AppEvidence evidence = running("/usr/bin/love");
    evidence.workingFolder = folder;
    evidence.arguments = std::move(arguments);
    evidence.windowClass = windowClass;
    return idOf(evidence);
  };
  EXPECT_EQ(idWith("/", {"love", "/games/x.love"}, "love"), "org.games.x");
  EXPECT_EQ(idWith("/games", {"love", "x.love"}, "love"), "org.games.x");
  EXPECT_EQ(idWith("/games/sub", {"love", "../x.love", "--full"}, "love"), "org.games.x");
  EXPECT_EQ(idWith("/tmp", {"love", "x.love"}, "love"), "love");
  EXPECT_EQ(idWith("/tmp", {"love", "/tmp/other.love"}, "org.games.x"), "love") << "whatever its window says";
  AppEvidence alone = running("/usr/bin/love");
  DesktopEntry inFolder = game(entry("tetris", "/usr/bin/java", {"-jar", "Blocks.jar"}));
  inFolder.folder = "/opt/tetris";
  AppEvidence java = running("/usr/bin/java");
  java.program = "/opt/tetris/Blocks.jar";
  java.workingFolder = "/home/me";
  java.arguments = {"java", "-Xmx64m", "-jar", "/opt/tetris/Blocks.jar"};
  EXPECT_NE(findEntry(java, {&inFolder, 1}), nullptr) << "named in full";
  java.arguments.back() = "../../opt/tetris/Blocks.jar";
  EXPECT_NE(findEntry(java, {&inFolder, 1}), nullptr);
  java.arguments.back() = java.program = "/opt/other/Blocks.jar";
  EXPECT_EQ(findEntry(java, {&inFolder, 1}), nullptr);
  alone.arguments = {"love", "/tmp/other.love"};
  const std::vector<DesktopEntry> onlyGame{game(entry("org.games.x", "/usr/bin/love", {"/games/x.love"}))};
  EXPECT_EQ(findEntry(alone, onlyGame), nullptr);
}

TEST(DesktopIdentity, AnotherAppsProgramIsNoGameByItsWindowsName) {
  AppEvidence evidence = running("/usr/bin/xterm");
  evidence.windowInstance = "xterm";
  evidence.windowClass = "NetHack";
  EXPECT_EQ(idOf(evidence), "debian-xterm");
  const std::vector<DesktopEntry>& entries = installed();
  EXPECT_EQ(matchWindow(evidence, {}, entries).entry, nullptr);
  AppEvidence nobodys = running("/home/me/emulator");
  nobodys.windowClass = "NetHack-Status";
  EXPECT_EQ(matchWindow(nobodys, {}, entries).entry, nullptr);
  nobodys.windowClass = "Chromium-BSU";
  EXPECT_EQ(matchWindow(nobodys, {}, entries).entry->id, "chromium-bsu");
  nobodys.sandboxId = "org.nowhere.App";
  EXPECT_EQ(matchWindow(nobodys, {}, entries).entry, nullptr);
  evidence = running("/usr/lib/chromium/chromium"); // its desktop file starts a script that starts it
  evidence.windowInstance = evidence.windowClass = "chromium-bsu";
  EXPECT_EQ(idOf(evidence), "chromium");
  // A web game of the browser's is started by the same script, with an argument of its own.
  std::vector<DesktopEntry> withWebGame{
      game(entry("chrome-game-Default", "/usr/bin/chromium", {"--app-id=g"}))};
  withWebGame.insert(withWebGame.end(), entries.begin(), entries.end());
  EXPECT_EQ(findEntry(evidence, withWebGame)->id, "chromium");
  evidence = running("/usr/lib/games/nethack/nethack-x11");
  evidence.windowClass = "NetHack";
  EXPECT_EQ(idOf(evidence), "nethack");
}

TEST(DesktopIdentity, AClassOfALibraryIsItsGame) {
  const std::string library = "/home/me/.local/share/Steam/steamapps/common/";
  AppEvidence evidence = running("/usr/lib/jvm/bin/java");
  evidence.program.clear();
  evidence.names = {"Main"};
  evidence.windowClass = "com-fine-Main";
  for (const std::string& from : {library + "Fine Game/lib/fine.jar", library + "Fine Game"}) {
    evidence.classFrom = from;
    const AppIdentity identity = identityOf(evidence, {});
    EXPECT_EQ(identity.localizedName, "Fine Game");
    EXPECT_EQ(identity.executablePath, from);
  }
  evidence.classFrom = "/home/me/tool.jar";
  EXPECT_EQ(identityOf(evidence, {}).localizedName, "Main");
  EXPECT_EQ(identityOf(evidence, {}).executablePath, "/usr/lib/jvm/bin/java");
}

// What is started counts, whatever runs it; the library is known by its folder.
TEST(DesktopIdentity, AnInterpretedProgramHasItsScriptAsExecutable) {
  const std::string game = "/home/me/.local/share/Steam/steamapps/common/Fine Game/";
  struct Case {
    const char* executable;
    std::string program;
    std::vector<std::string> names;
    const char* windowClass;
    std::vector<Wrapper> wrappers;
    std::string path;
    const char* name;
  };
  const std::vector<Case> cases{
      {"/usr/bin/python3.11", game + "fine.py", {"fine"}, "Tk", {}, game + "fine.py", "Fine"},
      {"/usr/lib/jvm/bin/java", game + "q2.jar", {"q2"}, "Quake", {}, game + "q2.jar", "Q2"},
      {"/usr/bin/python3.11", game + "main.py", {}, "Pygame", {}, game + "main.py", "Fine Game"},
      {"/opt/engine/engine",
       "/opt/engine/engine",
       {},
       "Engine",
       {waiting("/usr/bin/dash", game + "run.sh", {"sh", "run.sh"})},
       game + "run.sh",
       "Fine Game"},
      {"/opt/engine/engine",
       "/opt/engine/engine",
       {},
       "Engine",
       {waiting("/usr/bin/dash", "/home/me/run.sh", {"sh", "run.sh"})},
       "/opt/engine/engine",
       "engine"},
      {"/usr/bin/python3.11", "/home/me/own.py", {"own"}, "Tk", {}, "/home/me/own.py", "Own"},
      {"/usr/bin/python3.11", "", {}, "Tk", {}, "/usr/bin/python3.11", "Tk"},
  };
  for (const Case& each : cases) {
    AppEvidence evidence = running(each.executable);
    evidence.program = each.program;
    evidence.names = each.names;
    evidence.windowClass = each.windowClass;
    evidence.wrappers = each.wrappers;
    const AppIdentity identity = identityOf(evidence, {});
    EXPECT_EQ(identity.executablePath, each.path);
    EXPECT_EQ(identity.localizedName, each.name) << each.path;
    const DesktopEntry engine = entry("engine", each.executable);
    const bool isInLibrary = each.path.starts_with(game);
    EXPECT_EQ(identityOf(evidence, {&engine}).executablePath, isInLibrary ? each.path : each.executable);
  }
}

// Its processes carry the store's number of it; what else a store's unit holds is no window of the store.
TEST(DesktopIdentity, AStoresGameIsItsShortcut) {
  AppEvidence evidence = running("/home/me/steamapps/common/Fine/Fine");
  evidence.windowClass = "steam_app_42";
  evidence.unit = UnitId{"steam", "77"};
  EXPECT_EQ(idOf(evidence), "none");
  evidence.storeAddress = "steam://rungameid/42";
  EXPECT_EQ(idOf(evidence), "Fine Game");
  const AppIdentity identity = identityOf(evidence, matchEntry(evidence, installed()));
  EXPECT_EQ(identity.localizedName, "Fine Game by name");
  EXPECT_EQ(identity.executablePath, "/home/me/steamapps/common/Fine/Fine") << "not the store";
  evidence.storeAddress = "steam://rungameid/4";
  EXPECT_EQ(idOf(evidence), "none");
}

TEST(DesktopIdentity, DescribesAnInstalledApp) {
  DesktopEntry made = entry("com.spotify.Client", "/app/bin/spotify");
  made.category = "public.app-category.music";
  made.icon = "spotify";
  const AppIdentity identity = identityOf(running("/app/bin/spotify"), {&made});
  EXPECT_EQ(identity.bundleIdentifier, "com.spotify.client");
  EXPECT_EQ(identity.localizedName, "com.spotify.Client by name");
  EXPECT_EQ(identity.bundlePath, "/usr/share/applications/com.spotify.Client.desktop");
  EXPECT_EQ(identity.executablePath, "/app/bin/spotify");
  EXPECT_EQ(identity.bundleCategory, "public.app-category.music");
  EXPECT_EQ(identity.iconName, "spotify");
}

TEST(DesktopIdentity, DescribesAProgramThatNobodyInstalled) {
  const AppIdentity identity = identityOf(running("/opt/demo/glmark2"), {});
  EXPECT_EQ(identity.bundleIdentifier, std::nullopt);
  EXPECT_EQ(identity.localizedName, "glmark2");
  EXPECT_EQ(identity.bundlePath, std::nullopt);
  EXPECT_EQ(identity.executablePath, "/opt/demo/glmark2");
  EXPECT_EQ(identity.bundleCategory, std::nullopt);
}

TEST(DesktopIdentity, NamesAnInterpretedProgramAfterItsWindowOrItsScript) {
  AppEvidence evidence = running("/usr/bin/wine64-preloader");
  evidence.windowClass = "game.exe";
  EXPECT_EQ(identityOf(evidence, {}).localizedName, "game.exe");
  evidence.names = {"HalfLife"};
  EXPECT_EQ(identityOf(evidence, {}).localizedName, "HalfLife");
  evidence = running("/usr/bin/python3.11");
  evidence.program = "/usr/share/games/whichwayisup/run_game.py";
  EXPECT_EQ(identityOf(evidence, {}).localizedName, "run_game.py");
  evidence.names = {"whichwayisup"};
  EXPECT_EQ(identityOf(evidence, {}).localizedName, "Whichwayisup");
  evidence.windowClass = "run_game.py";
  EXPECT_EQ(identityOf(evidence, {}).localizedName, "Whichwayisup");
  evidence.windowClass = "Terminator";
  EXPECT_EQ(identityOf(evidence, {}).localizedName, "Terminator") << "chosen by somebody";
  evidence = AppEvidence();
  evidence.pid = 7;
  EXPECT_EQ(identityOf(evidence, {}).localizedName, "pid 7");
}

TEST(DesktopIdentity, NamesAreFitToBeShown) {
  AppEvidence evidence = running("/tmp/a\nb\xff");
  EXPECT_EQ(identityOf(evidence, {}).localizedName, "a b\xef\xbf\xbd");
  evidence = running("/usr/bin/java");
  evidence.windowClass = std::string(10'000, 'x');
  EXPECT_EQ(identityOf(evidence, {}).localizedName, std::string(200, 'x'));
}

TEST(IdentifierMap, AnAppImageWithoutADesktopFileGoesByItsFile) {
  AppEvidence evidence = running("/tmp/.mount_KritaXy/usr/bin/krita");
  evidence.program = "/home/someone/Krita-5.2.AppImage";
  EXPECT_EQ(identityOf(evidence, {}).bundleIdentifier, "Krita-5.2");
  EXPECT_EQ(identityOf(evidence, {}).localizedName, "krita");
  evidence.program.clear(); // its environment cannot be read
  EXPECT_EQ(identityOf(evidence, {}).bundleIdentifier, std::nullopt);
}

TEST(IdentifierMap, LinuxEditionsCarryTheNamesOfTheBuiltInLists) {
  const std::vector<std::pair<std::string, std::string>> cases{
      {"spotify", "com.spotify.client"},
      {"com.spotify.Client", "com.spotify.client"},
      {"discord", "com.hnc.Discord"},
      {"com.discordapp.Discord", "com.hnc.Discord"},
      {"com.obsproject.Studio", "com.obsproject.obs-studio"},
      {"minecraft-launcher", "com.mojang.minecraftlauncher"},
      {"com.mojang.Minecraft", "com.mojang.minecraftlauncher"},
      {"crossover", "com.codeweavers.CrossOver"},
      {"org.mozilla.firefox", "org.mozilla.firefox"},
      {"Spotify", "Spotify"},
      {"", ""},
  };
  for (const auto& [id, identifier] : cases) EXPECT_EQ(bundleIdentifierOf(entry(id, {})), identifier);
}

// The whole way, as Debian installs and runs them: desktop file, program, identity.
TEST(SystemApps, AreWhatTheyAreOnEveryDesktop) {
  struct Case {
    const char* id;
    const char* program;
    const char* identifier;
  };
  const std::vector<Case> cases{
      {"org.gnome.Nautilus", "/usr/bin/nautilus", "com.apple.finder"},
      {"org.kde.dolphin", "/usr/bin/dolphin", "com.apple.finder"},
      {"thunar", "/usr/bin/thunar", "com.apple.finder"},
      {"caja-browser", "/usr/bin/caja", "com.apple.finder"},
      {"nemo", "/usr/bin/nemo", "com.apple.finder"},
      {"pcmanfm", "/usr/bin/pcmanfm", "com.apple.finder"},
      {"pcmanfm-qt", "/usr/bin/pcmanfm-qt", "com.apple.finder"},
      {"org.gnome.Settings", "/usr/bin/gnome-control-center", "com.apple.controlcenter"},
      {"gnome-wifi-panel", "/usr/bin/gnome-control-center", "com.apple.controlcenter"},
      {"systemsettings", "/usr/bin/systemsettings", "com.apple.controlcenter"},
      {"xfce-display-settings", "/usr/bin/xfce4-display-settings", "com.apple.controlcenter"},
      {"matecc", "/usr/bin/mate-control-center", "com.apple.controlcenter"},
      {"lxqt-config-monitor", "/usr/bin/lxqt-config-monitor", "com.apple.controlcenter"},
      {"gnome-system-monitor", "/usr/bin/gnome-system-monitor", "com.apple.ActivityMonitor"},
      {"org.kde.plasma-systemmonitor", "/usr/bin/plasma-systemmonitor", "com.apple.ActivityMonitor"},
      {"net.nokyan.Resources", "/usr/bin/resources", "com.apple.ActivityMonitor"},
      {"org.kde.plasmashell", "/usr/bin/plasmashell", "com.apple.systemuiserver"},
      {"org.xfce.mousepad", "/usr/bin/mousepad", "org.xfce.mousepad"},
  };
  for (const Case& each : cases) {
    const std::vector<DesktopEntry> menu{entry(each.id, each.program)};
    const AppEvidence evidence = running(each.program);
    EXPECT_EQ(identityOf(evidence, matchEntry(evidence, menu)).bundleIdentifier, each.identifier) << each.id;
    EXPECT_EQ(bundleIdentifierOf(menu.front()), each.identifier) << "the menu's " << each.id;
  }
}

TEST(SystemApps, AreKnownInsideASandbox) {
  const std::vector<DesktopEntry> menu{entry("org.gnome.Nautilus", "/usr/bin/flatpak", {"run"}),
                                       entry("net.nokyan.Resources", "/usr/bin/flatpak", {"run"})};
  AppEvidence evidence = running("/app/libexec/something");
  evidence.sandboxId = "net.nokyan.Resources";
  EXPECT_EQ(identityOf(evidence, matchEntry(evidence, menu)).bundleIdentifier, "com.apple.ActivityMonitor");
  EXPECT_EQ(identityOf(running("/app/bin/nautilus"), {}).bundleIdentifier, "com.apple.finder")
      << "without its desktop file";
}

TEST(SystemApps, AreKnownByTheirScript) {
  AppEvidence evidence = running("/usr/bin/python3.11");
  evidence.program = "/usr/share/cinnamon/cinnamon-settings/cinnamon-settings.py";
  EXPECT_EQ(identityOf(evidence, {}).bundleIdentifier, "com.apple.controlcenter");
  evidence.program = "/usr/bin/cinnamon-settings";
  EXPECT_EQ(identityOf(evidence, {}).bundleIdentifier, "com.apple.controlcenter");
  evidence.program = "/usr/bin/lollypop.py";
  EXPECT_EQ(identityOf(evidence, {}).bundleIdentifier, std::nullopt);
}

} // namespace
} // namespace vantle
