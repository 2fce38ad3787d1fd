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
#include <gtest/gtest.h>
#include <optional>
#include <string>
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
                                       "/usr/games/gamemoderun"};
  for (const std::string& prefix : cases)
    EXPECT_EQ(programOf(prefix + " /opt/game/run -n 5 %U"), (Words{"/opt/game/run", "-n", "5"})) << prefix;
  EXPECT_EQ(programOf("gamemoderun"), Words{});
  EXPECT_EQ(programOf("nice -n"), Words{});
  EXPECT_EQ(programOf("nicer /opt/game"), (Words{"nicer", "/opt/game"}));
}

TEST(ExecLine, IsTheProgramThatAShellIsToldToStart) {
  EXPECT_EQ(innerProgramOf("sh -c 'cd /opt/bar && ./bar.py'"), Words{"/opt/bar/bar.py"});
  EXPECT_EQ(innerProgramOf("bash -c \"cd '/opt/a b'; exec bin/run -x\" %U"),
            (Words{"/opt/a b/bin/run", "-x"}));
  EXPECT_EQ(innerProgramOf("sh -c 'exec gamemoderun /opt/bar/run'"), Words{"/opt/bar/run"});
  for (const char* text : {"true", "cd x && ./run", "/opt/a & /opt/b", "cd /opt && ./a && ./b",
                           "/opt/a | /opt/b", "cd $HOME && ./a", "cd /opt || ./a", ""}) {
    EXPECT_EQ(innerProgramOf("sh -c '" + std::string(text) + "'"), (Words{"sh", "-c", text}));
  }
  EXPECT_EQ(innerProgramOf("sh -c /opt/a name"), (Words{"sh", "-c", "/opt/a", "name"}));
  EXPECT_EQ(innerProgramOf("nice /opt/game %U"), Words{"/opt/game"});
  EXPECT_EQ(programOf("sh -c /opt/bar/run"), (Words{"sh", "-c", "/opt/bar/run"}));
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
    return find(name)->becomes;
  };
  EXPECT_EQ(becomes("#!/bin/sh\ncd /\nexec " + game + " \"$@\"\n"), game);
  EXPECT_EQ(becomes("#!/bin/sh\nif true; then\n  exec " + game + "\nfi\nexec " + game + "\n"), game);
  EXPECT_EQ(becomes("#!/bin/sh\nexec " + game + " data\n"), "") << "which may be an engine";
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
