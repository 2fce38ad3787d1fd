// SPDX-License-Identifier: MIT
#include "platform/linux/catalog/DesktopCatalog.h"

#include "engine/AppSettings.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vantle {

namespace {

class DesktopCatalogTest : public testing::Test {
 protected:
  std::string write(const std::string& file, const std::string& lines) const {
    return folder.write(file, "[Desktop Entry]\nType=Application\nExec=/bin/true\n" + lines).string();
  }
  std::string install(const std::string& id, const std::string& lines) const {
    return write("data/applications/" + id + ".desktop", lines);
  }
  std::vector<std::string> keys() const {
    std::vector<std::string> keys;
    for (const InstalledApplication& each : catalog.installedApplications()) keys.push_back(each.key);
    return keys;
  }

  desktop::TemporaryFolder folder;
  DesktopCatalog catalog{std::make_shared<DesktopEntries>(
      std::vector{(folder.path() / "data").string(), (folder.path() / "more").string()})};
};

TEST_F(DesktopCatalogTest, TellsNameIconKeyAndPath) {
  const std::string path = install("org.example.Editor", "Name=Editor\nIcon=editor\n");
  const InstalledApplication editor{"org.example.Editor", "Editor", "editor", path, "true"};
  EXPECT_EQ(catalog.applicationForKey("org.example.Editor"), editor);
  EXPECT_EQ(catalog.applicationAt(path), editor);
  EXPECT_THAT(catalog.installedApplications(), testing::ElementsAre(editor));
}

TEST_F(DesktopCatalogTest, TellsByWhatElseAnAppIsLookedFor) {
  install("org.example.Editor", "Name=Editor\nGenericName=Word Processor\nKeywords=write;letter;\n");
  EXPECT_EQ(catalog.applicationForKey("org.example.Editor")->words, "Word Processor write;letter; true");
}

TEST_F(DesktopCatalogTest, LinuxEditionGoesByTheIdentifierOfTheBuiltInLists) {
  const std::string path = install("com.spotify.Client", "Name=Spotify\n");
  EXPECT_THAT(keys(), testing::ElementsAre("com.spotify.client"));
  ASSERT_TRUE(catalog.applicationForKey("com.spotify.client"));
  EXPECT_EQ(catalog.applicationForKey("com.spotify.client")->path, path);
}

TEST_F(DesktopCatalogTest, KnowsTheNamesOfWhatIsProtectedFromTheStart) {
  std::vector<std::string> names;
  for (const std::string& key : defaultProtectedApps()) names.push_back(catalog.knownName(key).value_or(key));
  EXPECT_THAT(names, testing::ElementsAre("Spotify", "Music", "Discord", "OBS Studio", "CrossOver",
                                          "Minecraft Launcher"));
  EXPECT_FALSE(catalog.knownName("org.example.Editor"));
}

TEST_F(DesktopCatalogTest, EachKeyOnce) {
  install("spotify", "Name=Spotify\n");
  install("com.spotify.Client", "Name=Spotify (another edition)\n");
  EXPECT_THAT(keys(), testing::ElementsAre("com.spotify.client"));
}

TEST_F(DesktopCatalogTest, SystemAppsCannotBeChosenButAKeyStillFinds) {
  const std::string path = install("org.gnome.Nautilus", "Name=Files\n");
  install("org.example.Editor", "Name=Editor\n");
  EXPECT_THAT(keys(), testing::ElementsAre("org.example.Editor"));
  EXPECT_FALSE(catalog.applicationAt(path));
  EXPECT_FALSE(catalog.applicationAt(write("elsewhere/thunar.desktop", "Name=Thunar\n")));
  ASSERT_TRUE(catalog.applicationForKey("com.apple.finder"));
  EXPECT_EQ(catalog.applicationForKey("com.apple.finder")->name, "Files");
}

TEST_F(DesktopCatalogTest, MenuHidesButAKeyStillFinds) {
  install("hidden", "Name=Helper\nNoDisplay=true\n");
  EXPECT_THAT(keys(), testing::IsEmpty());
  EXPECT_TRUE(catalog.applicationForKey("hidden"));
}

TEST_F(DesktopCatalogTest, AnswersInTheOrderOfTheQuestions) {
  install("one", "Name=One\n");
  install("two", "Name=Two\n");
  const ApplicationCatalog::Found found = catalog.applicationsForKeys({"two", "none", "one", "two"});
  ASSERT_EQ(found.size(), 4U);
  EXPECT_EQ(found[0]->name, "Two");
  EXPECT_FALSE(found[1]);
  EXPECT_EQ(found[2]->name, "One");
  EXPECT_EQ(found[3], found[0]);
}

TEST_F(DesktopCatalogTest, DeletedOrBrokenAppsAreNone) {
  install("gone", "Name=Gone\nHidden=true\n");
  folder.write("data/applications/broken.desktop", "[Desktop");
  folder.write("data/applications/link.desktop", "[Desktop Entry]\nType=Link\nName=L\nURL=https://x\n");
  EXPECT_THAT(keys(), testing::IsEmpty());
  EXPECT_FALSE(catalog.applicationForKey("gone"));
  EXPECT_FALSE(catalog.applicationForKey("broken"));
  EXPECT_FALSE(catalog.applicationForKey(""));
}

TEST_F(DesktopCatalogTest, SeesWhatIsInstalledLater) {
  install("one", "Name=One\n");
  EXPECT_THAT(keys(), testing::ElementsAre("one"));
  folder.write("more/applications/two.desktop",
               "[Desktop Entry]\nType=Application\nExec=/bin/true\nName=Two\n");
  EXPECT_THAT(keys(), testing::UnorderedElementsAre("one", "two"));
}

TEST_F(DesktopCatalogTest, FileElsewhereIsNamedAfterItself) {
  const std::string path = write("elsewhere/My Game.desktop", "Name=A Game\nIcon=/x/game.png\n");
  EXPECT_EQ(catalog.applicationAt(path),
            (InstalledApplication{"My Game", "A Game", "/x/game.png", path, "true"}));
  EXPECT_FALSE(catalog.applicationAt((folder.path() / "nowhere.desktop").string()));
  EXPECT_FALSE(catalog.applicationAt(folder.write("note.txt", "[Desktop Entry]\n").string()));
}

struct ProgramsOnDisk : DesktopCatalogTest {
  std::string program(const std::string& file, const std::string& bytes) const {
    const std::filesystem::path path = folder.write(file, bytes);
    std::filesystem::permissions(path, std::filesystem::perms::owner_all);
    return path.string();
  }
  // The key of the app, with "*" where it is only a name.
  std::string keyOf(const std::string& path) const {
    const auto application = catalog.applicationAt(path);
    return application ? application->key + (application->isByName ? "*" : "") : "none";
  }
  const std::string elf = std::string("\x7f"
                                      "ELF") +
                          std::string(4, '\0');
};

TEST_F(ProgramsOnDisk, AreCalledAsWhenTheyRun) {
  EXPECT_EQ(keyOf(program("opt/supergame", elf)), "supergame*");
  EXPECT_EQ(keyOf(program("opt/Krita-5.2.AppImage", elf + "AI\x02")), "Krita-5.2");
  EXPECT_EQ(keyOf(program("opt/no-ending", elf + "AI\x02")), "no-ending");
  EXPECT_EQ(keyOf(program("opt/old.appimage", "#!/bin/sh\n")), "old");
  EXPECT_EQ(keyOf(folder.write("wine/tetris.EXE", "MZ").string()), "Tetris*");
  EXPECT_EQ(keyOf(folder.write("wine/Half Life.exe", "MZ").string()), "Half Life*");
  EXPECT_EQ(keyOf(folder.write("wine/Game.exe", "MZ").string()), "game.exe*") << "as Wine calls the window";
}

TEST_F(ProgramsOnDisk, GoByTheirDesktopFile) {
  const std::string game = program("opt/supergame", elf);
  folder.write("data/applications/org.example.Super.desktop",
               "[Desktop Entry]\nType=Application\nName=Super Game\nExec=" + game + "\n");
  EXPECT_EQ(keyOf(game), "org.example.Super");
}

TEST_F(ProgramsOnDisk, AreNoneThatWouldNotBeKnownAgain) {
  EXPECT_EQ(keyOf(program("opt/start.sh", "#!/bin/sh\n")), "none") << "what it starts has the window";
  EXPECT_EQ(keyOf(program("opt/python3.11", elf)), "none");
  EXPECT_EQ(keyOf(program("opt/libgame.so.1", elf)), "none");
  EXPECT_EQ(keyOf(program("opt/nautilus", elf)), "none") << "a part of the system";
  EXPECT_EQ(keyOf(folder.write("opt/object", elf).string()), "none") << "nobody may run it";
  EXPECT_EQ(keyOf(folder.write("opt/text.exe", "text").string()), "none");
  EXPECT_EQ(keyOf(program("opt/empty", "")), "none");
}

TEST_F(DesktopCatalogTest, IconOfAnOldFileLosesItsEnding) {
  install("old", "Name=Old\nIcon=old.png\n");
  EXPECT_EQ(catalog.applicationForKey("old")->icon, "old");
}

} // namespace

} // namespace vantle
