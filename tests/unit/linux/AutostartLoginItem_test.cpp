// SPDX-License-Identifier: MIT
#include "platform/linux/login/AutostartLoginItem.h"

#include "platform/linux/login/AutostartEntry.h"
#include "tests/support/InChild.h"

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <gio/gdesktopappinfo.h>
#include <gtest/gtest.h>
#include <iterator>
#include <thread>
#include <unistd.h>

namespace vantle {

namespace {

namespace fs = std::filesystem;

class LoginItemTest : public testing::Test {
 protected:
  LoginItemTest() {
    std::string name = testing::TempDir() + "/vantle-login-XXXXXX";
    root = mkdtemp(name.data());
    setup.program = program("vantle");
    other = program("other");
    setup.userFolder = root / "config/autostart";
    setup.systemFolders = {root / "xdg-a/autostart", root / "xdg-b/autostart"};
    setup.desktops = {"ubuntu", "GNOME"};
  }
  ~LoginItemTest() override { fs::remove_all(root); }

  AutostartLoginItem item() const { return AutostartLoginItem(setup); }
  fs::path own() const { return fs::path(setup.userFolder) / "com.halvo.vantle.desktop"; }
  std::string program(const std::string& name) const {
    const fs::path path = root / "bin" / name;
    write(path, "#!/bin/sh\n");
    fs::permissions(path, fs::perms(0755));
    return path;
  }
  static void write(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream(path) << text;
  }
  // What a key says last counts.
  std::string entry(const std::string& lines) const {
    return "[Desktop Entry]\nType=Application\nName=Vantle\nExec=" + setup.program + "\n" + lines;
  }
  void writeOwn(const std::string& lines) const { write(own(), entry(lines)); }
  void writeSystem(std::size_t at, const std::string& lines = {}) const {
    write(fs::path(setup.systemFolders.at(at)) / "com.halvo.vantle.desktop", entry(lines));
  }
  std::string ownText() const {
    std::ifstream file(own());
    return {std::istreambuf_iterator<char>(file), {}};
  }

  fs::path root;
  AutostartSetup setup;
  std::string other; // a program, too
};

TEST_F(LoginItemTest, IsOffWithoutAnyEntry) { EXPECT_FALSE(item().isEnabled()); }

TEST_F(LoginItemTest, RegistersAndUnregisters) {
  EXPECT_TRUE(item().registerItem());
  EXPECT_TRUE(item().isEnabled());
  EXPECT_NE(ownText().find("Exec=\"" + setup.program + "\"\n"), std::string::npos) << ownText();
  EXPECT_TRUE(item().registerItem());
  EXPECT_TRUE(item().unregisterItem());
  EXPECT_FALSE(item().isEnabled());
  EXPECT_FALSE(fs::exists(own()));
  EXPECT_TRUE(item().unregisterItem());
}

TEST_F(LoginItemTest, ReadsWhatDesktopsWriteIntoTheEntry) {
  const std::vector<std::pair<const char*, bool>> cases{
      {"", true},
      {"Hidden=true\n", false},
      {"Hidden=false\n", true},
      {"X-GNOME-Autostart-enabled=false\n", false},
      {"X-GNOME-Autostart-enabled=true\n", true},
      {"X-GNOME-Autostart-enabled=true\nHidden=true\n", false},
      {"OnlyShowIn=KDE;XFCE;\n", false},
      {"OnlyShowIn=XFCE;GNOME;\n", true},
      {"NotShowIn=GNOME;\n", false},
      {"NotShowIn=KDE;\n", true},
      {"TryExec=/nowhere/vantle\n", false},
      {"TryExec=/bin/sh\n", true},
      {"Exec=\n", false},
      {"Type=Link\n", false},
      {"Type=\n", false},
  };
  for (const auto& [lines, enabled] : cases) {
    writeOwn(lines);
    EXPECT_EQ(item().isEnabled(), enabled) << lines;
  }
}

TEST_F(LoginItemTest, IsOnForThisVeryProgramAlone) {
  const fs::path link = root / "link";
  fs::create_symlink(setup.program, link);
  const fs::path dangling = root / "dangling";
  fs::create_symlink(root / "gone", dangling);
  const std::string program = setup.program;
  const std::vector<std::pair<std::string, bool>> cases{
      {program, true},
      {program + " %U", true},
      {program + " -platform xcb", true},
      {program + " --test", false}, // and ends
      {"\"" + program + "\" status", false},
      {"\"" + program + "\" %f", true},
      {link.string(), true},
      {"env A=b " + program, true},
      {"/usr/bin/env A=b C=d \"" + program + "\"", true},
      {other, false},
      {other + " " + program, false},
      {"env A=b " + other, false},
      {(root / "gone").string(), false},
      {dangling.string(), false},
      {root.string(), false}, // a folder
      {"vantle-that-is-nowhere", false},
      {"sh", false},
      {"/bin/sh -c \"exec \\\\\"\\\\$0\\\\\"\" " + program, true},
      {"/bin/sh -c \"exec \\\\\"\\\\$0\\\\\"\" " + other, false},
      {"/bin/sh -c " + program, false},
      {"\"" + program, false}, // never ends
      {"%U", false},
  };
  for (const auto& [exec, enabled] : cases) {
    writeOwn("Exec=" + exec + "\n");
    EXPECT_EQ(item().isEnabled(), enabled) << exec;
    EXPECT_TRUE(item().registerItem()) << exec;
    EXPECT_TRUE(item().isEnabled()) << exec;
  }
}

TEST_F(LoginItemTest, IsOffAsSoonAsItsProgramIsGoneOrMayNotRun) {
  ASSERT_TRUE(item().registerItem());
  fs::permissions(setup.program, fs::perms(0644));
  EXPECT_FALSE(item().isEnabled());
  fs::permissions(setup.program, fs::perms(0755));
  EXPECT_TRUE(item().isEnabled());
  fs::remove(setup.program);
  EXPECT_FALSE(item().isEnabled());
}

// A package leaves it in place when it goes, so that its entry starts nothing any more.
TEST_F(LoginItemTest, RegisteringKeepsAConditionThatHoldsAndRepairsOneThatNeverWould) {
  writeOwn("Hidden=true\nTryExec=" + other + "\n");
  EXPECT_TRUE(item().registerItem());
  EXPECT_NE(ownText().find("TryExec=" + other + "\n"), std::string::npos) << ownText();
  writeOwn("TryExec=/nowhere\n");
  EXPECT_FALSE(item().isEnabled());
  EXPECT_TRUE(item().registerItem());
  EXPECT_TRUE(item().isEnabled());
  EXPECT_NE(ownText().find("TryExec=" + setup.program + "\n"), std::string::npos) << ownText();
}

TEST_F(LoginItemTest, AnotherCopyThatTheSystemStartsIsSwitchedOffAsWell) {
  writeSystem(0, "Exec=" + other + "\n");
  EXPECT_FALSE(item().isEnabled());
  EXPECT_TRUE(item().registerItem());
  EXPECT_TRUE(item().isEnabled());
  EXPECT_TRUE(item().unregisterItem());
  EXPECT_NE(ownText().find("Hidden=true"), std::string::npos) << ownText();
}

TEST_F(LoginItemTest, EntryThatIsNoneIsOffAndReplaced) {
  for (const char* text : {"", "garbage", "[Other]\nExec=vantle\n", "\xff\xfe"}) {
    write(own(), text);
    EXPECT_FALSE(item().isEnabled()) << text;
    EXPECT_TRUE(item().registerItem()) << text;
    EXPECT_TRUE(item().isEnabled()) << text;
  }
}

TEST_F(LoginItemTest, RegisteringKeepsWhatTheDesktopAdded) {
  writeOwn("Hidden=true\nX-GNOME-Autostart-enabled=false\nX-GNOME-Autostart-Delay=20\nName[de]=Fantel\n"
           "# mine\nOnlyShowIn=GNOME;KDE;\nTryExec=/nowhere\n");
  EXPECT_TRUE(item().registerItem());
  for (const char* kept : {"X-GNOME-Autostart-Delay=20", "Name[de]=Fantel", "# mine", "OnlyShowIn=GNOME;KDE;",
                           "X-GNOME-Autostart-enabled=true"})
    EXPECT_NE(ownText().find(kept), std::string::npos) << kept << " in " << ownText();
  EXPECT_EQ(ownText().find("Hidden"), std::string::npos);
}

TEST_F(LoginItemTest, RegisteringLiftsWhatStandsThereTwice) {
  writeOwn("Hidden=true\nNotShowIn=GNOME;\nHidden=true\nNotShowIn=GNOME;\n");
  EXPECT_TRUE(item().registerItem());
  EXPECT_TRUE(item().isEnabled()) << ownText();
}

TEST_F(LoginItemTest, RegisteringOnAnotherDesktopLiftsTheRestriction) {
  writeOwn("OnlyShowIn=KDE;\n");
  EXPECT_TRUE(item().registerItem());
  EXPECT_TRUE(item().isEnabled());
}

TEST_F(LoginItemTest, SystemEntryCountsUntilThePersonHidesIt) {
  writeSystem(1);
  EXPECT_TRUE(item().isEnabled());
  EXPECT_TRUE(item().unregisterItem());
  EXPECT_FALSE(item().isEnabled());
  EXPECT_NE(ownText().find("Hidden=true"), std::string::npos);
  EXPECT_TRUE(item().registerItem());
  EXPECT_TRUE(item().isEnabled());
}

TEST_F(LoginItemTest, FirstSystemFolderOutranksTheSecond) {
  writeSystem(0, "Hidden=true\n");
  writeSystem(1);
  EXPECT_FALSE(item().isEnabled());
}

TEST_F(LoginItemTest, OwnEntryOutranksTheSystems) {
  writeSystem(0);
  writeOwn("Hidden=true\n");
  EXPECT_FALSE(item().isEnabled());
  fs::remove(own());
  fs::create_symlink("/dev/null", own());
  EXPECT_FALSE(item().isEnabled());
}

TEST_F(LoginItemTest, FolderThatCannotBeWrittenIsAFailure) {
  // A file where the folder should be stops root as well, whom permissions do not.
  write(setup.userFolder, "in the way");
  EXPECT_FALSE(item().registerItem());
  EXPECT_FALSE(item().isEnabled());
}

TEST_F(LoginItemTest, ReadOnlyFolderIsAFailureBothWays) {
  fs::permissions(root, fs::perms(01777)); // as a temporary folder has
  fs::create_directories(setup.userFolder);
  const auto asOrdinaryUser = [&](const std::function<bool()>& call) {
    return test::asOrdinaryUser([&]() -> std::string { return call() ? "yes" : "no"; }) == "yes";
  };
  fs::permissions(setup.userFolder, fs::perms(0555));
  EXPECT_FALSE(asOrdinaryUser([&] { return item().registerItem(); }));
  EXPECT_FALSE(asOrdinaryUser([&] { return item().isEnabled(); }));

  fs::permissions(setup.userFolder, fs::perms(0755));
  writeOwn("");
  fs::permissions(setup.userFolder, fs::perms(0555));
  EXPECT_FALSE(asOrdinaryUser([&] { return item().unregisterItem(); }));
  EXPECT_TRUE(asOrdinaryUser([&] { return item().isEnabled(); }));
  fs::permissions(setup.userFolder, fs::perms(0755));
}

TEST_F(LoginItemTest, PathThatIsNotUtf8IsAFailure) {
  setup.program = "/opt/\xff/vantle";
  EXPECT_FALSE(item().registerItem());
  EXPECT_FALSE(item().isEnabled());
}

// The desktop's own reader must start exactly the program that was registered.
TEST_F(LoginItemTest, ExecSurvivesEveryCharacterOfAPath) {
  for (const char* name :
       {"plain", "with space", "a\"b", "a'b", "a$HOME", "a`id`", "a\\b", "a\\\\b", "100%f", "%%", "a;b&c|d",
        "(x) <y> *?", "#tag", "~", "ü 日本", " lead", "tab\there", "a=b"}) {
    const fs::path program = root / name / "vantle";
    write(program, "#!/bin/sh\nprintf %s \"$#$0\" > \"${0%/*}/ran.part\"\nmv \"${0%/*}/ran.part\" "
                   "\"${0%/*}/ran\"\n");
    fs::permissions(program, fs::perms(0755));
    setup.program = program;
    ASSERT_TRUE(item().registerItem()) << name;

    GDesktopAppInfo* info = g_desktop_app_info_new_from_filename(own().c_str());
    ASSERT_NE(info, nullptr) << name << "\n" << ownText();
    EXPECT_TRUE(g_app_info_launch(G_APP_INFO(info), nullptr, nullptr, nullptr)) << name;
    g_object_unref(info);

    const fs::path ran = program.parent_path() / "ran";
    const auto guard = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!fs::exists(ran) && std::chrono::steady_clock::now() < guard)
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    std::ifstream file(ran);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), "0" + program.string()) << ownText();
  }
}

TEST(AutostartSetup, LooksWhereTheSessionLooks) {
  XdgFolders folders;
  folders.config = "/h/.config";
  folders.systemConfig = {"/a", "/b"};
  const auto none = AutostartSetup::from(
      folders, [](const char*) { return nullptr; }, "/bin/v");
  EXPECT_EQ(none.userFolder, "/h/.config/autostart");
  EXPECT_EQ(none.systemFolders, (std::vector<std::string>{"/a/autostart", "/b/autostart"}));
  EXPECT_TRUE(none.desktops.empty());
  const auto some = AutostartSetup::from(
      folders, [](const char*) { return "ubuntu::GNOME"; }, "/bin/v");
  EXPECT_EQ(some.desktops, (std::vector<std::string>{"ubuntu", "GNOME"}));
}

} // namespace

} // namespace vantle
