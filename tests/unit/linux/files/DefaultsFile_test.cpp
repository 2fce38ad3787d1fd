// SPDX-License-Identifier: MIT
// The settings and the journal on real files, whatever stands in their place.
#include "engine/AppSettings.h"
#include "engine/Journal.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/shared/JsonUserDefaults.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"

#include <fstream>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantle {
namespace {

namespace fs = std::filesystem;

class DefaultsFileTest : public testing::Test {
 protected:
  JsonUserDefaults open() { return {files, folder.path(), "domain"}; }
  // Sets a choice over whatever stands there and reads it back from the file.
  std::string setAndRead() {
    JsonUserDefaults defaults = open();
    if (defaults.contains("a")) return "something was read";
    defaults.set("a", true);
    if (defaults.object("a") != UserDefaults::Value(true)) return "not in force";
    return open().object("a") == UserDefaults::Value(true) ? "" : "not in the file";
  }

  desktop::TemporaryFolder folder;
  PosixFileStore files{folder.path(), PosixFileStore::Sync::none};
  fs::path path = folder.path() / "domain/defaults.json";
  fs::path aside = folder.path() / "domain/defaults.json.corrupt";
};

TEST_F(DefaultsFileTest, IsMadeForItsOwnerWithItsFolder) {
  EXPECT_EQ(setAndRead(), "");
  struct stat about {};
  ASSERT_EQ(::stat(path.c_str(), &about), 0);
  EXPECT_EQ(about.st_mode & 0777, 0600U);
  EXPECT_FALSE(fs::exists(aside));
}

TEST_F(DefaultsFileTest, IsSetAsideWhenItIsHuge) {
  folder.write("domain/defaults.json", "{");
  fs::resize_file(path, std::uintmax_t{100} << 20U);
  EXPECT_EQ(setAndRead(), "");
  EXPECT_EQ(fs::file_size(aside), std::uintmax_t{100} << 20U);
}

TEST_F(DefaultsFileTest, IsSetAsideWhenItCannotBeRead) {
  folder.write("domain/defaults.json", R"({"b": true})");
  ::chmod(path.c_str(), 0);
  ::chmod(folder.path().c_str(), 0755);
  const uid_t self = ::geteuid();
  const uid_t person = self == 0 ? test::ordinaryUser : self;
  ASSERT_EQ(::chown(path.parent_path().c_str(), person, static_cast<gid_t>(-1)), 0);
  EXPECT_EQ(test::asOrdinaryUser([&] { return setAndRead(); }), "");
  ASSERT_EQ(::chown(path.parent_path().c_str(), self, static_cast<gid_t>(-1)), 0);
  ::chmod(aside.c_str(), 0600);
  EXPECT_EQ(files.read(aside, 100), R"({"b": true})");
}

TEST_F(DefaultsFileTest, IsSetAsideWhenItIsNoFile) {
  folder.folder("domain");
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  EXPECT_EQ(setAndRead(), "");
  EXPECT_TRUE(fs::is_fifo(aside));
  fs::remove(path);
  fs::remove(aside);
  folder.write("domain/defaults.json/inside", "x");
  EXPECT_EQ(setAndRead(), "");
  EXPECT_TRUE(fs::exists(aside / "inside"));
}

TEST_F(DefaultsFileTest, StaysInMemoryWhereNothingCanBeWritten) {
  ::chmod(folder.path().c_str(), 0555);
  const auto check = [&]() -> std::string {
    JsonUserDefaults defaults = open();
    AppSettings settings(defaults);
    settings.accent.set(AccentTheme::teal);
    if (defaults.object("accent") != UserDefaults::Value(std::string("teal"))) return "not in force";
    return fs::exists(path) ? "written all the same" : "";
  };
  EXPECT_EQ(test::asOrdinaryUser(check), "");
  ::chmod(folder.path().c_str(), 0700);
}

class JournalFileTest : public DefaultsFileTest {
 protected:
  const ProcessIdentity identity{4711, 1'700'000'000, 120'000};
  fs::path journal = folder.path() / "Vantle/journal.json";
};

TEST_F(JournalFileTest, ComesBackAfterARestart) {
  { Journal(files).add({identity}); }
  EXPECT_TRUE(Journal(files).entries().contains(identity));
  struct stat about {};
  ASSERT_EQ(::stat(journal.c_str(), &about), 0);
  EXPECT_EQ(about.st_mode & 0777, 0600U);
}

TEST_F(JournalFileTest, IsEmptyAndUsableWhateverStandsThere) {
  const auto isUsable = [&] {
    Journal loaded(files);
    if (!loaded.entries().empty()) return false;
    loaded.add({identity});
    return Journal(files).entries().contains(identity);
  };
  for (const std::string& bytes :
       {std::string(), std::string("[{\"pid\":1"), std::string("{}"), std::string("\xff\xfe"),
        std::string(1'000'000, '['), std::string(R"([{"pid":4294967296,"startSec":1,"startUsec":1}])")}) {
    folder.write("Vantle/journal.json", bytes);
    EXPECT_TRUE(isUsable()) << bytes.substr(0, 30);
  }
  folder.write("Vantle/journal.json", "[");
  fs::resize_file(journal, std::uintmax_t{100} << 20U);
  EXPECT_TRUE(isUsable()) << "huge";
  fs::remove(journal);
  ASSERT_EQ(::mkfifo(journal.c_str(), 0600), 0);
  EXPECT_TRUE(isUsable()) << "a pipe";
}

TEST_F(JournalFileTest, LivesInMemoryWhereNothingCanBeWritten) {
  folder.write("Vantle/journal.json", "[]");
  for (const char* closed : {"", "Vantle"}) ::chmod((folder.path() / closed).c_str(), 0555);
  ::chmod(journal.c_str(), 0);
  const auto check = [&]() -> std::string {
    Journal loaded(files);
    loaded.add({identity});
    return loaded.entries().contains(identity) ? "" : "forgotten";
  };
  EXPECT_EQ(test::asOrdinaryUser(check), "");
  for (const char* closed : {"", "Vantle"}) ::chmod((folder.path() / closed).c_str(), 0700);
}

TEST_F(JournalFileTest, TakesOverTheFormerEditionsOnce) {
  folder.write("Murn/kayit.json", R"([{"pid":7,"startSec":1,"startUsec":2}])");
  folder.write("Murn/other", "x");
  EXPECT_TRUE(Journal(files).entries().contains(ProcessIdentity{7, 1, 2}));
  EXPECT_FALSE(fs::exists(folder.path() / "Murn"));
}

} // namespace
} // namespace vantle
