// SPDX-License-Identifier: MIT
#include "platform/linux/apps/InterpretedProgram.h"

#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vantle {
namespace {

using Words = std::vector<std::string>;

TEST(InterpretedProgram, IsUnderstoodFromTheCommandLine) {
  struct Case {
    const char* interpreter;
    Words arguments;
    InterpretedProgram program;
  };
  const std::vector<Case> cases{
      {"python3.11", {"python3", "-u", "-W", "ignore", "run_game.py", "--fullscreen"}, {"run_game.py", ""}},
      {"python3.11", {"python3", "-m", "game.main", "x"}, {"", "game"}},
      {"python3.11", {"python3", "-c", "import game"}, {}},
      {"python3.11", {"python3"}, {}},
      {"python3.11", {"python3", "-m"}, {}},
      {"java",
       {"java", "-classpath", "/a.jar:/b.jar", "-Xmx2000M", "--add-opens", "java.desktop/sun=ALL",
        "net.sf.freecol.FreeCol", "--no-intro"},
       {"", "FreeCol", "/a.jar"}},
      {"java", {"java", "-cp", "lib/*:game.jar", "Main"}, {"", "Main", "lib"}},
      {"java", {"java", "-Xmx1G", "-jar", "/opt/game/Game.jar", "-x"}, {"/opt/game/Game.jar", ""}},
      {"java", {"java", "-p", "mods", "-m", "org.example.game/org.example.Game"}, {"", "Game", "mods"}},
      {"java", {"java", "@args", "-jar"}, {}},
      {"wine64", {"C:\\Games\\Half-Life\\hl.EXE", "-game"}, {"C:\\Games\\Half-Life\\hl.EXE", ""}},
      {"wine64", {"wine64", "/home/me/setup.exe"}, {"/home/me/setup.exe", ""}},
      {"wine64", {"wine64", "winecfg"}, {}},
      {"bash", {"bash", "-c", "sleep 1"}, {}},
      {"bash", {"bash", "-lc", "start.sh"}, {}},
      {"perl", {"perl", "-lc", "start.pl"}, {"start.pl", ""}},
      {"bash", {"bash", "-u", "start.sh"}, {"start.sh", ""}},
      {"perl", {"perl", "-e", "print"}, {}},
      {"perl", {}, {}},
  };
  for (const Case& each : cases) {
    const InterpretedProgram found = interpretedProgram(each.interpreter, each.arguments);
    EXPECT_EQ(found.file, each.program.file) << each.interpreter << testing::PrintToString(each.arguments);
    EXPECT_EQ(found.name, each.program.name) << each.interpreter << testing::PrintToString(each.arguments);
    EXPECT_EQ(found.from, each.program.from) << each.interpreter << testing::PrintToString(each.arguments);
  }
}

TEST(Loader, IsKnownByItsName) {
  for (const char* name : {"ld-linux-x86-64.so.2", "ld-linux.so.2", "ld-musl-x86_64.so.1", "ld-2.31.so"})
    EXPECT_TRUE(isLoader(name)) << name;
  for (const char* name : {"ld", "ld-gold", "x86_64-linux-gnu-ld.so", "", "libld-2.31.so"})
    EXPECT_FALSE(isLoader(name)) << name;
}

TEST(InterpretedProgram, IsCalledByItsFileOrTheFolderOfItsPackage) {
  struct Case {
    InterpretedProgram program;
    const char* path;
    Words names;
  };
  const std::vector<Case> cases{
      {{"run_game.py", ""}, "/usr/share/games/whichwayisup/run_game.py", {"whichwayisup"}},
      {{"monsterz.py", ""}, "", {"monsterz"}},
      {{"/usr/share/games/monsterz/monsterz.py", ""},
       "/usr/share/games/monsterz/monsterz.py",
       {"monsterz", "monsterz"}},
      {{"main.py", ""}, "/home/me/firefox/main.py", {}},
      {{"", "FreeCol"}, "", {"FreeCol"}},
      {{"/opt/game/lib/Main.jar", ""}, "/opt/game/lib/Main.jar", {"game"}},
      {{"/usr/bin/terminator", ""}, "/usr/bin/terminator", {"terminator"}},
      {{"C:\\Games\\hl.EXE", ""}, "", {"hl"}},
      {{}, "", {}},
  };
  for (const Case& each : cases) EXPECT_EQ(programNames(each.program, each.path), each.names) << each.path;
}

TEST(InterpretedProgram, HasAnEndingThatNobodyReads) {
  EXPECT_EQ(withoutProgramEnding("monsterz.py"), "monsterz");
  EXPECT_EQ(withoutProgramEnding("Setup.EXE"), "Setup");
  EXPECT_EQ(withoutProgramEnding("org.gnome.Maps"), "org.gnome.Maps");
  EXPECT_EQ(withoutProgramEnding("armagetronad.real"), "armagetronad");
  EXPECT_EQ(withoutProgramEnding("thunderbird-bin"), "thunderbird");
  EXPECT_EQ(withoutProgramEnding(".py"), ".py");
  EXPECT_EQ(withoutProgramEnding(""), "");
}

} // namespace
} // namespace vantle
