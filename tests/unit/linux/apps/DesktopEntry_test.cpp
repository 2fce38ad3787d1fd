// SPDX-License-Identifier: MIT
#include "platform/linux/apps/DesktopEntries.h"
#include "platform/linux/apps/ExecLine.h"
#include "platform/linux/apps/OneLineName.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"
#include "tests/unit/linux/SilentFileSystem.h"

#include <algorithm>
#include <exception>
#include <filesystem>
#include <glib.h>
#include <gtest/gtest.h>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace vantle {
namespace {

using desktop::TemporaryFolder;
using Words = std::vector<std::string>;

TEST(Category, GamesAreGames) {
  EXPECT_EQ(categoryOf("Game;"), "public.app-category.games");
  EXPECT_EQ(categoryOf("Game;ArcadeGame"), "public.app-category.games");
  EXPECT_EQ(categoryOf("GTK;Education;Game;"), "public.app-category.games");
}

TEST(Category, OnlyGamesAreGames) {
  for (const char* categories : {"Utility;TextEditor;GTK;", "Games;", "game;", "X-Game;", "ArcadeGame;", "",
                                 ";;", "Audio;Player;", "\xff\xfe"}) {
    EXPECT_EQ(categoryOf(categories).find("games"), std::string::npos) << categories;
  }
  EXPECT_EQ(categoryOf("Utility;"), "public.app-category.utilities");
  EXPECT_EQ(categoryOf("Nonsense;"), "");
}

TEST(Category, StoresOfGamesAreNone) {
  EXPECT_EQ(categoryOf("Network;FileTransfer;Game;"), "public.app-category.social-networking");
  EXPECT_EQ(categoryOf("Game;PackageManager;"), "");
}

TEST(ExecLine, IsTakenApart) {
  EXPECT_EQ(programOf("mousepad %U"), (Words{"mousepad"}));
  EXPECT_EQ(programOf("\"/opt/My App/run\" --new \"two words\" %f"),
            (Words{"/opt/My App/run", "--new", "two words"}));
  EXPECT_EQ(programOf("env A=b C=d /usr/bin/app -x"), (Words{"/usr/bin/app", "-x"}));
  EXPECT_EQ(programOf("/usr/bin/env A=b app"), (Words{"app"}));
  EXPECT_EQ(programOf("env A=b"), Words{});
  EXPECT_EQ(programOf("flatpak run --file-forwarding org.x.Y @@u %U @@"),
            (Words{"flatpak", "run", "--file-forwarding", "org.x.Y"}));
  EXPECT_EQ(programOf("\"never closed"), Words{});
  EXPECT_EQ(programOf(""), Words{});
  EXPECT_EQ(programOf("%U"), Words{});
}

TEST(ExecLine, IsWithoutWhatRunsAnotherProgram) {
  const std::vector<std::string> cases{"gamemoderun",
                                       "mangohud",
                                       "mangohud --dlsym",
                                       "nice -n 5",
                                       "nice -5",
                                       "nice -n5",
                                       "ionice -c2 -n0",
                                       "ionice -c 2 -n 0",
                                       "taskset -c 0",
                                       "taskset 0x1",
                                       "prime-run",
                                       "setarch -R",
                                       "setarch x86_64 -R",
                                       "pasuspender --",
                                       "nohup",
                                       "env A=1 gamemoderun",
                                       "setsid",
                                       "stdbuf -o0",
                                       "env -u A B=1 nice",
                                       "dbus-run-session --",
                                       "strangle 60",
                                       "obs-gamecapture",
                                       "setpriv --no-new-privs",
                                       "setpriv --reuid 1000 --regid=1000 --clear-groups --",
                                       "choom -n 200 --",
                                       "choom -n 200",
                                       "unshare -n -r",
                                       "unshare --map-user 1000 -n",
                                       "/lib64/ld-linux-x86-64.so.2",
                                       "/opt/bundle/ld-2.31.so --library-path lib --argv0 game",
                                       "/usr/games/gamemoderun"};
  for (const std::string& prefix : cases)
    EXPECT_EQ(programOf(prefix + " /opt/game/run -n 5 %U"), (Words{"/opt/game/run", "-n", "5"})) << prefix;
  EXPECT_EQ(programOf("gamemoderun"), Words{});
  EXPECT_EQ(programOf("nice -n"), Words{});
  EXPECT_EQ(programOf("choom -n 200 -p 42"), Words{});
  EXPECT_EQ(programOf("nicer /opt/game"), (Words{"nicer", "/opt/game"}));
}

// As desktop files quote a shell's text.
std::string shell(const std::string& text, const std::string& start = "sh -c") {
  std::string quoted;
  for (const char letter : text)
    quoted += (std::string_view("\"$\\`").find(letter) != std::string_view::npos ? "\\" : "") +
              std::string(1, letter);
  return start + " \"" + quoted + "\"";
}

TEST(ExecLine, IsTheProgramThatAShellIsToldToStart) {
  const auto inner = [](const std::string& exec) { return innerProgramOf(exec).words; };
  EXPECT_EQ(inner("sh -c 'cd /opt/bar && ./bar.py'"), Words{"/opt/bar/bar.py"});
  EXPECT_EQ(inner("bash -c \"cd '/opt/a b'; exec bin/run -x\" %U"), (Words{"/opt/a b/bin/run", "-x"}));
  EXPECT_EQ(inner("sh -c 'exec gamemoderun /opt/bar/run'"), Words{"/opt/bar/run"});
  EXPECT_EQ(inner("sh -c /opt/a name"), Words{"/opt/a"});
  EXPECT_EQ(inner("nice /opt/game %U"), Words{"/opt/game"});
  EXPECT_EQ(programOf("sh -c /opt/bar/run"), (Words{"sh", "-c", "/opt/bar/run"}));
  const std::string home = g_get_home_dir();
  for (const char* start : {"bash -lc", "bash -l -c", "bash -ic", "dash -ec", "bash --login -c"})
    EXPECT_EQ(inner(shell("/opt/a", start)), Words{"/opt/a"}) << start;
  for (const char* text : {"FOO=1 /opt/a",
                           "LD_PRELOAD= exec /opt/a",
                           "A=1 B='x y' exec env C=2 /opt/a",
                           "export A=1; exec /opt/a",
                           "ulimit -c 0; exec /opt/a",
                           "export A=\"$HOME/b\" && umask 022 && /opt/a",
                           "pkexec true || exec /opt/a",
                           "sleep 2; /opt/a",
                           "set -e; exec /opt/a",
                           "xset s off && xset s 0 ; exec /opt/a",
                           "/opt/b & exec /opt/a",
                           "exec > /dev/null; /opt/a",
                           "exec /opt/a > /dev/null",
                           "exec /opt/a >/dev/null 2>&1",
                           "/opt/a >>\"$HOME/my log\" 2>&1 </dev/null",
                           "/opt/a &> /dev/null",
                           "exec /opt/a \"$@\"",
                           "exec /opt/a $*",
                           "cd /opt && ./a $1",
                           "cd /opt; exec ./a %F",
                           "/opt/a & wait",
                           "/opt/a &",
                           "\n/opt/a;\n",
                           "exec -a name /opt/a",
                           "'/opt'/\\a"}) {
    EXPECT_EQ(inner(shell(text) + " sh %U"), Words{"/opt/a"}) << text;
  }
  EXPECT_EQ(inner(shell("exec $HOME/a")), Words{home + "/a"});
  EXPECT_EQ(inner(shell("exec \"${HOME}/a b\" '$x' \"a;b\"")), (Words{home + "/a b", "$x", "a;b"}));
  EXPECT_EQ(inner(shell("exec ~/a a~")), (Words{home + "/a", "a~"}));
  EXPECT_EQ(inner(shell("cd ~ && ./a")), Words{home + "/a"});
  EXPECT_EQ(inner(shell("exec /opt/a --new \"$@\" x") + " sh -1 %U '-2 3'"),
            (Words{"/opt/a", "--new", "-1", "-2 3", "x"}));
  EXPECT_EQ(inner("/bin/sh -c game"), Words{"game"});
  EXPECT_EQ(inner("/opt/odd%%25 %%f"), (Words{"/opt/odd%25", "%f"}));
  EXPECT_EQ(innerProgramOf("nice sh -c /opt/a name %U").told, (Words{"sh", "-c", "/opt/a", "name"}));
  EXPECT_EQ(innerProgramOf("sh -c true").told, Words());
}

TEST(ExecLine, IsAShellWhereNobodyElseCanBeSure) {
  for (const char* text : {"true",
                           "",
                           "cd x && ./run",
                           "/opt/a & /opt/b",
                           "/opt/a; /opt/b",
                           "/opt/a && /opt/b",
                           "/opt/a & /opt/b & wait",
                           "cd /opt && ./a && ./b",
                           "/opt/a | /opt/b",
                           "/opt/a |& /opt/b",
                           "cd $OLD && ./a",
                           "cd /opt || ./a",
                           "cd /opt || exec ./a",
                           "test -d /x && cd /opt; exec ./a",
                           "cd /opt & exec ./a",
                           "cd /opt -x; ./a",
                           "/opt/b || /opt/a",
                           "exec /opt/b || exec /opt/a",
                           "exec /opt/b; exec /opt/a",
                           "exec $(which a)",
                           "exec `which a`",
                           "exec \"`which a`\"",
                           "exec $HOMES/a",
                           "exec $0",
                           "exec \"$@\"",
                           "exec $1",
                           "exec ~other/a",
                           "exec /opt/a$@",
                           "exec /opt/*/a",
                           "exec /opt/a <<END",
                           "(cd /opt; exec ./a)",
                           "{ /opt/a; }",
                           "if true; then exec /opt/a; fi",
                           "while true; do /opt/a; done",
                           "for x in 1 2; do exec /opt/a",
                           "time /opt/a",
                           "! /opt/a",
                           "# exec /opt/a",
                           "HOME=/x; exec $HOME/a",
                           "HOME=/x exec ~/a",
                           "PATH=/x exec a",
                           "export PATH=/x; a",
                           "A=1",
                           "export A=/opt/a",
                           "cd /opt/a",
                           "exec",
                           "exec >/opt/a",
                           "eval /opt/a",
                           ". /opt/a",
                           "wait",
                           "/opt/a &&",
                           "/opt/a ||",
                           "/opt/a >",
                           ";; /opt/a",
                           "exec '/opt/a",
                           "exec \"/opt/a",
                           "/opt/a \\",
                           "/opt/a $"}) {
    EXPECT_EQ(innerProgramOf(shell(text)).words, (Words{"sh", "-c", text})) << text;
  }
  EXPECT_EQ(innerProgramOf("env HOME=/x sh -c 'exec $HOME/a'").words, (Words{"sh", "-c", "exec $HOME/a"}));
  EXPECT_EQ(innerProgramOf("sh -c 'exec \"$1\"' sh /opt/a").words,
            (Words{"sh", "-c", "exec \"$1\"", "sh", "/opt/a"}));
  EXPECT_EQ(innerProgramOf("bash -o posix -c /opt/a").words, (Words{"bash", "-o", "posix", "-c", "/opt/a"}));
  EXPECT_EQ(innerProgramOf("bash -nc /opt/a").words, (Words{"bash", "-nc", "/opt/a"}));
  EXPECT_EQ(innerProgramOf("sh /opt/a -c").words, (Words{"sh", "/opt/a", "-c"}));
  EXPECT_EQ(innerProgramOf("zshy -c /opt/a").words, (Words{"zshy", "-c", "/opt/a"}));
  EXPECT_EQ(innerProgramOf("bash -c").words, (Words{"bash", "-c"}));
  EXPECT_EQ(innerProgramOf("bash").words, Words{"bash"});
}

TEST(ExecLine, IsStartedWhereItSays) {
  EXPECT_EQ(programOf("env -C /opt/game ./run -x"), (Words{"/opt/game/run", "-x"}));
  EXPECT_EQ(programOf("env --chdir=/opt/game A=1 nice ../run"), Words{"/opt/run"});
  EXPECT_EQ(programOf("env -C /opt/game run"), Words{"run"});
  EXPECT_EQ(programOf("env -C game ./run"), Words{}) << "wherever that is";
  EXPECT_EQ(programOf("unshare -r --wd /opt ./run"), Words{"/opt/run"});
  EXPECT_EQ(programOf("env -C"), Words{});
  EXPECT_EQ(programOf("env --chdir"), Words{});
}

TEST(DisplayText, IsOneCleanLine) {
  EXPECT_EQ(oneLineName("Mines"), "Mines");
  EXPECT_EQ(oneLineName("  a\tb\nc  "), "a b c");
  EXPECT_EQ(oneLineName("\n\n"), "");
  EXPECT_EQ(oneLineName(""), "");
  EXPECT_EQ(oneLineName("caf\xc3\xa9"), "caf\xc3\xa9");
  EXPECT_EQ(oneLineName(std::string(10'000, 'a')), std::string(200, 'a'));
  std::string long4;
  for (int count = 0; count < 300; ++count) long4 += "\xf0\x9f\x98\x80";
  EXPECT_EQ(oneLineName(long4), long4.substr(0, 800)) << "whole characters only";
}

class DesktopEntriesTest : public testing::Test {
 protected:
  void install(const std::string& path, const std::string& more, const std::string& folder = "high") {
    m_folder.write(folder + "/applications/" + path, "[Desktop Entry]\nType=Application\n" + more);
  }
  // Two changes of a folder within one tick of the file system's clock look like one.
  void touchLater() {
    const auto folder = m_folder.path() / "high/applications";
    const auto now = std::filesystem::last_write_time(folder);
    std::filesystem::last_write_time(folder, now + std::chrono::seconds(1));
  }
  const DesktopEntry* find(const std::string& id) {
    const std::vector<DesktopEntry>& all = m_entries.all();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const DesktopEntry& entry) { return entry.id == id; });
    return found == all.end() ? nullptr : &*found;
  }

  TemporaryFolder m_folder;
  DesktopEntries m_entries{{(m_folder.path() / "high").string(), (m_folder.path() / "low").string()}};
};

TEST_F(DesktopEntriesTest, ReadsWhatCounts) {
  install("org.example.Game.desktop", "Name=A Game\nExec=sh -c true %U\nIcon=game\nCategories=Game;\n"
                                      "StartupWMClass=Gamey\nNoDisplay=true\n");
  const DesktopEntry* entry = find("org.example.Game");
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->name, "A Game");
  EXPECT_EQ(entry->icon, "game");
  EXPECT_EQ(entry->windowClass, "Gamey");
  EXPECT_EQ(entry->category, "public.app-category.games");
  EXPECT_TRUE(entry->executable.ends_with("/sh"));
  EXPECT_EQ(entry->arguments, (Words{"-c", "true"}));
  EXPECT_TRUE(entry->isHidden);
}

TEST_F(DesktopEntriesTest, FindsAProgramInTheFolderThatItIsStartedIn) {
  const std::filesystem::path program = m_folder.write("games/run.sh", "#!/bin/sh\n");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  install("game.desktop", "Name=Game\nExec=./run.sh\nPath=" + program.parent_path().string() + "\n");
  install("nowhere.desktop", "Name=Game\nExec=./run.sh\n");
  ASSERT_NE(find("game"), nullptr);
  EXPECT_EQ(find("game")->executable, program.string());
  EXPECT_TRUE(find("game")->isScript);
  EXPECT_EQ(find("nowhere"), nullptr);
}

TEST_F(DesktopEntriesTest, KnowsTheProgramThatAShellIsToldToStart) {
  const std::filesystem::path program = m_folder.write("odd%25/game", "");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  const std::string folder = m_folder.path().string() + "/odd%%25";
  install("told.desktop", "Name=Game\nExec=bash -lc 'FOO=1 exec " + folder + "/game -x >/dev/null' %U\n");
  install("own.desktop", "Name=Game\nExec=sh -lc nowhere\n");
  install("plain.desktop", "Name=Game\nExec=" + folder + "/game\n");
  ASSERT_NE(find("told"), nullptr);
  EXPECT_EQ(find("told")->realPath, program.string());
  EXPECT_EQ(find("told")->arguments, Words{"-x"});
  EXPECT_EQ(find("told")->told, (Words{"-lc", "FOO=1 exec " + program.string() + " -x >/dev/null"}));
  EXPECT_TRUE(find("own")->executable.ends_with("/sh")) << "wherever that finds it";
  EXPECT_EQ(find("own")->arguments, (Words{"-lc", "nowhere"}));
  EXPECT_EQ(find("own")->told, Words());
  ASSERT_NE(find("plain"), nullptr);
  EXPECT_EQ(find("plain")->realPath, program.string());
  EXPECT_EQ(find("plain")->told, Words());
}

TEST_F(DesktopEntriesTest, KnowsWhatAScriptBecomes) {
  const std::string game = m_folder.write("game", "").string();
  auto becomes = [&, count = 0](const std::string& text) mutable {
    const std::string name = "script" + std::to_string(++count);
    const std::filesystem::path script = m_folder.write(name, text);
    std::filesystem::permissions(script, std::filesystem::perms::owner_all);
    install(name + ".desktop", "Name=Game\nExec=" + script.string() + "\n");
    touchLater();
    desktop::require(name.c_str(),
                     [&] { return find(name) != nullptr; }); // a busy machine may be late with news
    return find(name)->becomes.program;
  };
  EXPECT_EQ(becomes("#!/bin/sh\ncd /\nexec " + game + " \"$@\"\n"), game);
  EXPECT_EQ(becomes("#!/bin/sh\nif true; then\n  exec " + game + "\nfi\nexec " + game + "\n"), game);
  EXPECT_EQ(becomes("#!/bin/sh\nexec " + game + " data\n"), game);
  EXPECT_EQ(becomes("#!/bin/sh\nexec sleep 5\n"), std::filesystem::canonical("/bin/sleep"))
      << "as PATH finds it";
  EXPECT_EQ(becomes("#!/bin/sh\nexec no-such-program 5\n"), "");
  EXPECT_EQ(becomes("#!/bin/sh\nexec " + game + "\nexec /bin/sh\n"), "");
  EXPECT_EQ(becomes("#!/bin/sh\nexec \"/$x/game\"\n"), "");
  EXPECT_EQ(becomes("#!/bin/sh\nexec ./game\n"), "");
  EXPECT_EQ(becomes("#!/bin/sh\n" + game + "\n"), "");
  EXPECT_EQ(becomes("exec " + game + "\n"), "") << "no script";
  EXPECT_EQ(becomes("#!/bin/sh\ncd \"$(dirname \"$0\")\"\nexec ./game\n"), game) << "beside it";
  EXPECT_EQ(becomes("#!/bin/sh\ncd \"$(dirname \"$0\")\"\nexec ./another\n"), "") << "which is not there";
}

TEST_F(DesktopEntriesTest, EarlierFoldersHideLaterOnes) {
  install("app.desktop", "Name=Own\nExec=sh\n");
  install("app.desktop", "Name=System\nExec=sh\n", "low");
  install("other.desktop", "Name=Other\nExec=sh\n", "low");
  ASSERT_EQ(m_entries.all().size(), 2U);
  EXPECT_EQ(find("app")->name, "Own");
}

TEST_F(DesktopEntriesTest, FoldersBelowArePartOfTheId) {
  install("kde/org.x/app.desktop", "Name=Deep\nExec=sh\n");
  EXPECT_NE(find("kde-org.x-app"), nullptr);
}

TEST_F(DesktopEntriesTest, NoticesChanges) {
  EXPECT_TRUE(m_entries.all().empty());
  install("one.desktop", "Name=One\nExec=sh\n");
  EXPECT_EQ(m_entries.all().size(), 1U) << "the folder was not there before";
  std::filesystem::remove(m_folder.path() / "high/applications/one.desktop");
  touchLater();
  EXPECT_TRUE(m_entries.all().empty());
}

// Two hundred files take longer than anybody waits for the one that is new.
TEST_F(DesktopEntriesTest, ReadsOnlyWhatHasChanged) {
  const auto file = m_folder.path() / "high/applications/one.desktop";
  install("one.desktop", "Name=Old\nExec=sh\n");
  ASSERT_NE(find("one"), nullptr);
  const auto time = std::filesystem::last_write_time(file);
  install("one.desktop", "Name=New\nExec=sh\n");
  std::filesystem::last_write_time(file, time); // so that it looks like the one before
  install("two.desktop", "Name=Two\nExec=sh\n");
  touchLater();
  desktop::require("the new one", [&] { return find("two") != nullptr; });
  EXPECT_EQ(find("one")->name, "Old");
  std::filesystem::last_write_time(file, time + std::chrono::seconds(1));
  touchLater();
  EXPECT_TRUE(desktop::waitUntil([&] { return find("one")->name == "New"; }));
}

TEST_F(DesktopEntriesTest, ReadsAFileAgainWhoseProgramHasChanged) {
  const auto program = m_folder.write("game", "#!/bin/sh\nexec /bin/sh\n");
  std::filesystem::permissions(program, std::filesystem::perms::owner_all);
  install("game.desktop", "Name=Game\nExec=" + program.string() + "\n");
  ASSERT_NE(find("game"), nullptr);
  EXPECT_TRUE(find("game")->isScript);
  m_folder.write("game", std::string("\x7f"
                                     "ELF\0\0",
                                     6));
  touchLater();
  EXPECT_TRUE(desktop::waitUntil([&] { return !find("game")->isScript; }));
}

TEST_F(DesktopEntriesTest, SurvivesWhateverIsInTheFolder) {
  install("good.desktop", "Name=Good\nExec=sh\n");
  install("hidden.desktop", "Name=Hidden\nExec=sh\nHidden=true\n");
  install("absent.desktop", "Name=Absent\nExec=/nowhere/at/all\nTryExec=/nowhere/at/all\n");
  install("bad\xff name.desktop", "Name=Bad\xff\nExec=sh\n");
  m_folder.write("high/applications/empty.desktop", "");
  m_folder.write("high/applications/binary.desktop", std::string("\0\xff\0[Desktop", 11));
  m_folder.write("high/applications/link.desktop", "[Desktop Entry]\nType=Link\nURL=x\nName=L\n");
  m_folder.write("high/applications/readme.txt", "[Desktop Entry]\nType=Application\nName=T\nExec=sh\n");
  const std::string folder = (m_folder.path() / "high/applications").string();
  ASSERT_EQ(::mkfifo((folder + "/pipe.desktop").c_str(), 0600), 0);
  ASSERT_EQ(::symlink(folder.c_str(), (folder + "/loop").c_str()), 0);
  EXPECT_NE(find("good"), nullptr);
  for (const char* id : {"hidden", "absent", "empty", "binary", "link", "readme", "pipe"}) {
    EXPECT_EQ(find(id), nullptr) << id;
  }
}

// A file that is opened and read, and nothing else is done to it, waits for whoever writes to it.
std::string pipeAt(const std::filesystem::path& path) {
  EXPECT_EQ(::mkfifo(path.c_str(), 0700), 0);
  return path.string();
}

TEST_F(DesktopEntriesTest, WaitsForNoPipe) {
  const std::string pipe = pipeAt(m_folder.path() / "pipe");
  install("pipe.desktop", "Name=Pipe\nExec=" + pipe + "\n");
  ASSERT_NE(find("pipe"), nullptr);
  EXPECT_FALSE(find("pipe")->isScript);
  EXPECT_FALSE(readDesktopEntry(pipe, "pipe"));
}

TEST_F(DesktopEntriesTest, ReadsNothingThatIsTooLargeToBeOne) {
  install("large.desktop", "Name=Large\nExec=sh\n");
  const auto file = m_folder.path() / "high/applications/large.desktop";
  std::filesystem::resize_file(file, 300'000'000);
  EXPECT_FALSE(readDesktopEntry(file.string(), "large"));
}

// What answers is there, whatever does not; what answers late is there from then on.
TEST_F(DesktopEntriesTest, LeavesOutWhatDoesNotAnswer) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs a file system of its own";
  const std::filesystem::path mount = m_folder.folder("mount");
  std::optional<test::SilentFileSystem> silent;
  try {
    silent.emplace(mount);
  } catch (const std::exception& error) {
    GTEST_SKIP() << error.what();
  }
  install("game.desktop", "Name=Game\nExec=" + (mount / "game").string() + "\n");
  install("zzz.desktop", "Name=Last\nExec=sh\n");
  EXPECT_NE(find("zzz"), nullptr);
  EXPECT_EQ(find("game"), nullptr);
  silent.reset(); // it answers with a failure from now on
  EXPECT_TRUE(desktop::waitUntil([&] { return find("zzz") != nullptr; }));
}

// A desktop's libraries read the caches of all folders before the first entry; one of them may never answer.
TEST_F(DesktopEntriesTest, AsksNothingButTheFileItself) {
  install("game.desktop", "Name=Game\nExec=sh\n");
  const std::string path = (m_folder.path() / "high/applications/game.desktop").string();
  for (const char* cache : {"mimeinfo.cache", "defaults.list", "mimeapps.list"}) {
    ASSERT_EQ(::mkfifo((m_folder.path() / "high/applications" / cache).c_str(), 0600), 0);
  }
  const auto check = [&]() -> std::string {
    ::alarm(20);
    ::setenv("XDG_DATA_HOME", (m_folder.path() / "high").c_str(), 1);
    const auto entry = readDesktopEntry(path, "game");
    return entry && entry->name == "Game" ? "" : "not read";
  };
  EXPECT_EQ(test::inChild(check), "");
}

// Its programs are in the image, so none of them is where a desktop would look.
TEST(DesktopEntry, OfAnImageIsTheFirstOfAnApp) {
  const desktop::TemporaryFolder image;
  EXPECT_FALSE(readImagesEntry(image.path()));
  image.write("a.desktop", "[Desktop Entry]\nType=Link\nName=Page\nURL=https://example.org\n");
  image.write("b.txt", "[Desktop Entry]\nType=Application\nName=Text\n");
  EXPECT_FALSE(readImagesEntry(image.path()));
  image.write("fine.desktop",
              "[Desktop Entry]\nType=Application\nName=Fine Game\nExec=nowhere %f\nCategories=Game;\n"
              "TryExec=nowhere\n");
  image.write("more.desktop", "[Desktop Entry]\nType=Application\nName=More\nExec=nowhere\n");
  const std::optional<DesktopEntry> entry = readImagesEntry(image.path());
  ASSERT_TRUE(entry);
  EXPECT_EQ(entry->id, "fine");
  EXPECT_EQ(entry->name, "Fine Game");
  EXPECT_EQ(entry->category, gamesCategory);
  EXPECT_EQ(entry->executable, "");
  EXPECT_FALSE(readImagesEntry(image.path() / "nowhere"));
}

} // namespace
} // namespace vantle
