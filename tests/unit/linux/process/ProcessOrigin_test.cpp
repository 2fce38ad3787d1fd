// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcessOrigin.h"

#include "platform/linux/process/ProcfsProcessTable.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <filesystem>
#include <gtest/gtest.h>
#include <map>
#include <string>
#include <vector>

namespace vantle {
namespace {

using Environment = std::map<std::string, std::string, std::less<>>;

std::string originIn(const Environment& environment, const std::string& executable) {
  return originOf(executable, [&](std::string_view variable) {
    const auto found = environment.find(variable);
    return found == environment.end() ? std::string() : found->second;
  });
}

TEST(ProcessOrigin, IsThePrefixOfWhatWineRuns) {
  const Environment ordinary{{"HOME", "/home/person"}};
  const Environment chosen{{"HOME", "/home/person"}, {"WINEPREFIX", "/games/prefix"}};
  for (const char* program : {"/usr/lib/wine/wine64", "/usr/lib/wine/wineserver64",
                              "/opt/wine/bin/wineserver", "/usr/lib/wine/wine64-preloader.static"}) {
    EXPECT_EQ(originIn(ordinary, program), "wine:/home/person/.wine") << program;
    EXPECT_EQ(originIn(chosen, program), "wine:/games/prefix") << program;
    EXPECT_EQ(originIn({}, program), "") << program;
  }
}

TEST(ProcessOrigin, IsTheFileOfAnImage) {
  const Environment inside{{"APPIMAGE", "/home/person/Downloads/Fine.AppImage"}};
  EXPECT_EQ(originIn(inside, "/tmp/.mount_FinexY1z/usr/bin/fine"),
            "image:/home/person/Downloads/Fine.AppImage");
  EXPECT_EQ(originIn({}, "/home/person/Downloads/Fine.AppImage"),
            "image:/home/person/Downloads/Fine.AppImage");
  EXPECT_EQ(originIn(inside, "/usr/bin/xdg-open"), "") << "what the image's app has started outside";
  EXPECT_EQ(originIn({}, "/tmp/.mount_FinexY1z/usr/bin/fine"), "image:/tmp/.mount_FinexY1z");
  EXPECT_EQ(furtherOriginsOf("/tmp/.mount_FinexY1z/usr/bin/fine"),
            std::vector<std::string>{"image:/tmp/.mount_FinexY1z"});
  EXPECT_EQ(originIn({}, "/tmp/.mount_FinexY1z"), "");
}

TEST(ProcessOrigin, IsAFolderThatIsOneProgramsOwn) {
  struct Case {
    const char* executable;
    const char* origin;
  };
  const std::vector<Case> cases{
      {"/usr/lib/firefox-esr/crashhelper", "folder:/usr/lib/firefox-esr"},
      {"/usr/lib/chromium/chrome_crashpad_handler", "folder:/usr/lib/chromium"},
      {"/opt/zoom/zoom", "folder:/opt/zoom"},
      {"/opt/google/chrome/chrome", "folder:/opt/google/chrome"},
      {"/home/person/apps/Notes/notes", "folder:/home/person/apps/Notes"},
      {"/home/person/Downloads/tool", ""},
      {"/home/person/tool", ""},
      {"/usr/bin/emacsclient.emacs", ""},
      {"/usr/games/scummvm", ""},
      {"/usr/local/bin/tool", ""},
      {"/home/person/.local/bin/tool", ""},
      {"/usr/lib/jvm/java-17-openjdk-amd64/bin/java", ""},
      {"/usr/libexec/gvfsd", ""},
      {"/usr/lib/x86_64-linux-gnu/tool", ""},
      {"/usr/lib/tool", ""},
      {"/opt/tool", ""},
      {"/opt/bin/tool", ""},
      {"/opt/acme/bin/acme", "folder:/opt/acme"},
      {"/opt/acme/lib/acmed", "folder:/opt/acme"},
      {"/opt/acme/suite/libexec/acmed", "folder:/opt/acme/suite"},
      {"/usr/libexec/acme/acme-helper", "folder:/usr/libexec/acme"},
      {"/usr/libexec/acme/bin/acme-helper", ""},
      {"/tmp/a/b/tool", "folder:/tmp/a/b"},
      {"/tool", ""},
      {"", ""},
  };
  for (const Case& each : cases) EXPECT_EQ(originIn({}, each.executable), each.origin) << each.executable;
}

// An app brings along what stands in the folder of its name.
TEST(ProcessOrigin, OfHelpersIsOneOfTheirAppsFurtherOrigins) {
  const auto isBroughtBy = [](const char* app, const char* helper) {
    const std::vector<std::string> further = furtherOriginsOf(app);
    return std::find(further.begin(), further.end(), originIn({}, helper)) != further.end();
  };
  EXPECT_TRUE(isBroughtBy("/usr/bin/acme", "/usr/lib/acme/acme-helper"));
  EXPECT_TRUE(isBroughtBy("/usr/bin/acme", "/usr/libexec/acme/acmed"));
  EXPECT_TRUE(isBroughtBy("/usr/games/acme", "/usr/lib/games/acme/acmed"));
  EXPECT_TRUE(isBroughtBy("/usr/local/bin/acme", "/usr/local/lib/acme/acmed"));
  EXPECT_FALSE(isBroughtBy("/usr/bin/acme", "/usr/local/lib/acme/acmed"));
  EXPECT_FALSE(isBroughtBy("/usr/bin/acme", "/usr/bin/acme")) << "another copy of it is somebody's own";
  EXPECT_FALSE(isBroughtBy("/usr/bin/acme", "/usr/lib/acmes/acmed"));
  EXPECT_FALSE(isBroughtBy("/home/me/bin/acme", "/usr/lib/acme/acmed"));
  EXPECT_FALSE(isBroughtBy("/usr/bin/python3.11", "/usr/lib/python3.11/tool"));
}

// With the real kernel: a program's file, and the environment that it was started with.
TEST(ProcessOrigin, IsReadFromTheProcess) {
  const desktop::TemporaryFolder folder;
  const std::string loader = (folder.folder("wine") / "wine64").string();
  std::filesystem::copy_file("/bin/sleep", loader);
  desktop::Start start{.command = {loader, "1000"}};
  start.environment = {{"WINEPREFIX", "/games/prefix"}};
  const desktop::Program program(start);
  const ProcfsProcessTable table{BootEpoch(0)};
  EXPECT_TRUE(desktop::waitUntil([&] { return table.origin(program.pid()) == "wine:/games/prefix"; }));
  EXPECT_EQ(table.origin(0x7ffffff0), "");
}

} // namespace
} // namespace vantle
