// SPDX-License-Identifier: MIT
#include "platform/linux/power/HolderSearch.h"

#include "platform/linux/process/BootEpoch.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/posix/files/PosixFileStore.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace vantle {
namespace {

using desktop::Program;
using desktop::TemporaryFolder;
using testing::ElementsAre;
using testing::IsEmpty;

namespace fs = std::filesystem;

struct Holders : testing::Test {
  // A real process that runs a program of that name: this machine's sleep, which may say what it is by its
  // own name alone.
  Program start(const std::string& name) const {
    const fs::path path = folder.path() / "bin" / name;
    fs::create_directories(path.parent_path());
    fs::copy_file("/bin/sleep", path, fs::copy_options::overwrite_existing);
    return Program({.command = {path, "60"}});
  }
  std::set<Pid> find(const std::string& app) const { return HolderSearch(sources).find({{}, {}, app}); }

  TemporaryFolder folder;
  PosixFileStore files{folder.path().string(), PosixFileStore::Sync::none};
  ProcfsProcessTable processes{BootEpoch::load(files, {}, "today")};
  HolderSources sources{processes, folder.path() / "flatpak",
                        std::make_shared<DesktopEntries>(std::vector<std::string>{folder.path() / "data"})};
};

TEST_F(Holders, AProcessThatTheBusKnowsIsEnough) {
  HolderSearch search(sources);
  EXPECT_THAT(search.find({{}, {77, 78}, "sleep"}), ElementsAre(77));
}

TEST_F(Holders, AnAppIsFoundByItsProgramAndByItsNameInTheMenus) {
  const Program player = start("dragon-vantle-test");
  folder.write("data/applications/org.kde.dragontest.desktop",
               "[Desktop Entry]\nType=Application\nName=Dragon Player of the test\nExec=" +
                   (folder.path() / "bin/dragon-vantle-test").string() + " %U\n");
  for (const char* name : {"dragon-vantle-test", "Dragon-Vantle-Test", "org.kde.dragon-vantle-test",
                           "/usr/bin/dragon-vantle-test", "Dragon Player of the test",
                           "dragon player of the test", "org.kde.dragontest"}) {
    EXPECT_THAT(find(name), ElementsAre(player.pid())) << name;
  }
  for (const char* name : {"", "dragon-vantle", "Dragon Player", "org.kde", "/", "."}) {
    const std::set<Pid> found = find(name);
    EXPECT_EQ(found.contains(player.pid()), std::string(name) == "dragon-vantle") << name; // dragon-vantle-…
  }
}

TEST_F(Holders, AProxyOfNoSandboxLeavesTheName) {
  const Program proxy = start("xdg-dbus-proxy");
  const Program player = start("vantle-test-player");
  HolderSearch search(sources);
  EXPECT_THAT(search.find({{}, {proxy.pid()}, "vantle-test-player"}), ElementsAre(player.pid()));
  EXPECT_THAT(search.find({{}, {proxy.pid()}, "nobody-is-called-so"}), IsEmpty());
  EXPECT_THAT(search.find({{}, {proxy.pid(), 77}, "vantle-test-player"}), ElementsAre(77));
}

// Flatpak leaves folders behind, and numbers are given away again.
TEST_F(Holders, WhatIsLeftOfASandboxMeansNobody) {
  const Program stranger = start("vantle-test-stranger");
  const std::string self = std::to_string(::getpid()); // whose child the stranger is
  folder.write("flatpak/1/info", "[Application]\nname=org.example.Player\n");
  folder.write("flatpak/1/pid", self);
  folder.write("flatpak/2/info", "[Application]\nname=org.example.Player\n");
  folder.write("flatpak/2/pid", "no number");
  folder.write("flatpak/3/info", "nothing that Flatpak writes");
  folder.write("flatpak/3/pid", self);
  folder.folder("flatpak/4");
  folder.write("flatpak/file", "");
  const std::vector<FlatpakInstance> instances = flatpakInstances(sources.flatpakFolder);
  ASSERT_EQ(instances.size(), 1U);
  EXPECT_EQ(instances.front().app, "org.example.Player");
  EXPECT_EQ(instances.front().pid, ::getpid());
  EXPECT_THAT(processesInside(instances.front(), processes.scan()), IsEmpty());
  EXPECT_THAT(find("org.example.Player"), IsEmpty());
  EXPECT_THAT(flatpakInstances(folder.path() / "nowhere"), IsEmpty());
  EXPECT_THAT(flatpakInstances(""), IsEmpty());
}

TEST(FlatpakApp, IsReadFromItsOwnGroup) {
  EXPECT_EQ(flatpakApp("[Application]\nname=org.example.Player\nruntime=x\n"), "org.example.Player");
  EXPECT_EQ(flatpakApp("[Instance]\nname=other\n[Application]\nname=org.example.Player"),
            "org.example.Player");
  EXPECT_EQ(flatpakApp("[Runtime]\nname=org.example.Platform\n"), "");
  EXPECT_EQ(flatpakApp(""), "");
}

} // namespace
} // namespace vantle
