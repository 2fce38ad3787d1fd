// SPDX-License-Identifier: MIT
#include "platform/linux/files/XdgFolders.h"

#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <map>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantle {
namespace {

XdgFolders foldersOf(const std::map<std::string, std::string>& environment) {
  return XdgFolders::from([&](const char* name) -> const char* {
    const auto found = environment.find(name);
    return found == environment.end() ? nullptr : found->second.c_str();
  });
}

TEST(XdgFolders, LieInTheHomeFolderByDefault) {
  const XdgFolders folders = foldersOf({{"HOME", "/home/player"}});
  EXPECT_EQ(folders.home, "/home/player");
  EXPECT_EQ(folders.data, "/home/player/.local/share");
  EXPECT_EQ(folders.config, "/home/player/.config");
  EXPECT_EQ(folders.allData(),
            (std::vector<std::string>{"/home/player/.local/share", "/usr/local/share", "/usr/share"}));
  EXPECT_EQ(folders.systemConfig, std::vector<std::string>{"/etc/xdg"});
}

TEST(XdgFolders, AreWhereTheEnvironmentSays) {
  const XdgFolders folders = foldersOf({{"HOME", "/h"},
                                        {"XDG_DATA_HOME", "/data"},
                                        {"XDG_CONFIG_HOME", "/config//"},
                                        {"XDG_DATA_DIRS", "/a/::data:/"},
                                        {"XDG_CONFIG_DIRS", "/b::relative:/c"}});
  EXPECT_EQ(folders.data, "/data");
  EXPECT_EQ(folders.config, "/config");
  EXPECT_EQ(folders.allData(), (std::vector<std::string>{"/data", "/a", "/"}));
  EXPECT_EQ(folders.systemConfig, (std::vector<std::string>{"/b", "/c"}));
}

TEST(XdgFolders, IgnoreWhatIsEmptyOrRelative) {
  for (const char* value : {"", "data", "./data", "~/data"}) {
    EXPECT_EQ(foldersOf({{"HOME", "/h"}, {"XDG_DATA_HOME", value}}).data, "/h/.local/share") << value;
  }
}

TEST(XdgFolders, FindTheHomeFolderWithoutTheEnvironment) {
  const passwd* entry = ::getpwuid(::getuid());
  ASSERT_NE(entry, nullptr);
  const std::string home = entry->pw_dir;
  EXPECT_EQ(foldersOf({}).home, home);
  EXPECT_EQ(foldersOf({{"HOME", "relative"}}).home, home);
}

TEST(XdgFolders, AreAbsoluteEvenForAUserThatNobodyKnows) {
  if (::geteuid() != 0) GTEST_SKIP() << "needs root to become somebody else";
  const std::string answer = test::asOrdinaryUser([] { return foldersOf({}).data; });
  EXPECT_EQ(answer, "/.local/share");
}

TEST(XdgFolders, TakeTheRuntimeFolderOnlyWhenItIsTheUsersOwn) {
  const desktop::TemporaryFolder folder;
  const std::string usual = "/run/user/" + std::to_string(::geteuid());
  struct stat about {};
  const auto fallback = ::stat(usual.c_str(), &about) == 0 ? std::optional(usual) : std::nullopt;
  EXPECT_EQ(foldersOf({{"XDG_RUNTIME_DIR", folder.path()}}).runtime, folder.path().string());
  EXPECT_EQ(foldersOf({}).runtime, fallback);
  EXPECT_EQ(foldersOf({{"XDG_RUNTIME_DIR", folder.path() / "none"}}).runtime, fallback);
  EXPECT_EQ(foldersOf({{"XDG_RUNTIME_DIR", folder.write("file", "")}}).runtime, fallback);
  EXPECT_EQ(foldersOf({{"XDG_RUNTIME_DIR", "relative"}}).runtime, fallback);
  EXPECT_EQ(foldersOf({{"XDG_RUNTIME_DIR", "/proc/1"}}).runtime,
            ::geteuid() == 0 ? std::optional<std::string>("/proc/1") : fallback);
}

} // namespace
} // namespace vantle
