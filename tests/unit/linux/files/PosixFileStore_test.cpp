// SPDX-License-Identifier: MIT
#include "platform/posix/files/PosixFileStore.h"

#include "tests/support/ForkedProcess.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"

#include <csignal>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantle {
namespace {

namespace fs = std::filesystem;
constexpr std::size_t limit = 1000;

class PosixFileStoreTest : public testing::TestWithParam<PosixFileStore::Sync> {
 protected:
  std::string at(const std::string& name) const { return folder.path() / name; }
  std::size_t filesIn(const fs::path& path) const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(path), fs::directory_iterator()));
  }
  // Writes as somebody, somewhere or under conditions where it must fail, and leave all as it was.
  std::string failedWrite(const std::string& bytes) {
    const bool isWritten = files.writeAtomically(at("file"), bytes);
    if (isWritten) return "it was written";
    if (files.read(at("file"), limit) != "old") return "the old content is lost";
    return filesIn(folder.path()) == 1 ? "" : "something was left behind";
  }

  desktop::TemporaryFolder folder;
  PosixFileStore files{folder.path(), GetParam()};
};

INSTANTIATE_TEST_SUITE_P(Syncs, PosixFileStoreTest,
                         testing::Values(PosixFileStore::Sync::none, PosixFileStore::Sync::disk),
                         [](const auto& sync) {
                           return std::string(sync.param == PosixFileStore::Sync::none ? "none" : "disk");
                         });

TEST_P(PosixFileStoreTest, ReadsWhatItWrote) {
  for (const std::string& bytes :
       {std::string(), std::string("text"), std::string("\0\xff\n", 3), std::string(limit, 'x')}) {
    EXPECT_TRUE(files.writeAtomically(at("file"), bytes));
    EXPECT_EQ(files.read(at("file"), limit), bytes);
  }
  EXPECT_EQ(filesIn(folder.path()), 1U);
}

TEST_P(PosixFileStoreTest, ReadsNothingBeyondTheLimit) {
  folder.write("file", std::string(limit, 'x'));
  EXPECT_TRUE(files.read(at("file"), limit));
  folder.write("file", std::string(limit + 1, 'x'));
  EXPECT_FALSE(files.read(at("file"), limit));
  fs::resize_file(at("file"), std::uintmax_t{100} << 20U);
  EXPECT_FALSE(files.read(at("file"), limit));
}

TEST_P(PosixFileStoreTest, ReadsOnlyRegularFilesAndNeverWaits) {
  ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
  EXPECT_FALSE(files.read(at("pipe"), limit));
  EXPECT_FALSE(files.read("/dev/zero", limit));
  EXPECT_FALSE(files.read("/dev/full", limit));
  EXPECT_FALSE(files.read(folder.path(), limit));
  EXPECT_FALSE(files.read(at("none"), limit));
  EXPECT_FALSE(files.read("", limit));
  EXPECT_FALSE(files.read(at(std::string(5000, 'x')), limit));
  fs::create_symlink("loop", at("loop"));
  EXPECT_FALSE(files.read(at("loop"), limit));
}

TEST_P(PosixFileStoreTest, ReadsFilesThatDoNotTellTheirSize) {
  EXPECT_EQ(files.read("/proc/self/comm", limit), "linux_tests\n");
  EXPECT_FALSE(files.read("/proc/self/status", 100));
  const auto status = files.read("/proc/self/status", 100'000);
  ASSERT_TRUE(status);
  EXPECT_NE(status->find("VmSwap"), std::string::npos);
}

TEST_P(PosixFileStoreTest, KeepsWhatItWritesToItsOwner) {
  const mode_t before = ::umask(0);
  EXPECT_TRUE(files.writeAtomically(at("new"), "x"));
  folder.write("open", "x");
  ::chmod(at("open").c_str(), 0666);
  EXPECT_TRUE(files.writeAtomically(at("open"), "y"));
  ::umask(0777);
  EXPECT_TRUE(files.writeAtomically(at("masked"), "z"));
  ::umask(before);
  for (const char* name : {"new", "open", "masked"}) {
    struct stat about {};
    ASSERT_EQ(::stat(at(name).c_str(), &about), 0);
    EXPECT_EQ(about.st_mode & 07777, 0600U) << name;
  }
}

TEST_P(PosixFileStoreTest, GivesReadersTheOldOrTheNewNeverAPart) {
  const std::string one(200'000, '1');
  const std::string two(300'000, '2');
  files.writeAtomically(at("file"), one);
  const test::ForkedProcess writer({}, [&] {
    for (;;) {
      files.writeAtomically(at("file"), two);
      files.writeAtomically(at("file"), one);
    }
  });
  bool sawTwo = false;
  for (int round = 0; round < 200 || !sawTwo; ++round) {
    const auto bytes = files.read(at("file"), 1'000'000);
    ASSERT_TRUE(bytes == one || bytes == two);
    sawTwo = sawTwo || bytes == two;
  }
}

TEST_P(PosixFileStoreTest, FollowsALinkWhenItWrites) {
  folder.write("real/settings", "old");
  fs::create_symlink("real/settings", at("relative"));
  fs::create_symlink(at("relative"), at("absolute"));
  EXPECT_TRUE(files.writeAtomically(at("absolute"), "new"));
  EXPECT_TRUE(fs::is_symlink(at("absolute")));
  EXPECT_TRUE(fs::is_symlink(at("relative")));
  EXPECT_EQ(files.read(at("real/settings"), limit), "new");
  EXPECT_EQ(filesIn(at("real")), 1U);

  fs::create_symlink("real/none yet", at("dangling"));
  EXPECT_FALSE(files.exists(at("dangling")));
  EXPECT_TRUE(files.writeAtomically(at("dangling"), "new"));
  EXPECT_TRUE(fs::is_symlink(at("dangling")));
  EXPECT_EQ(files.read(at("real/none yet"), limit), "new");
}

TEST_P(PosixFileStoreTest, NeverReplacesWhatIsNoFileBehindALink) {
  ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
  fs::create_symlink("pipe", at("to pipe"));
  fs::create_symlink("/dev/null", at("to null"));
  fs::create_symlink(folder.path(), at("to folder"));
  fs::create_symlink("loop", at("loop"));
  for (const char* name : {"to pipe", "to null", "to folder", "loop"}) {
    EXPECT_FALSE(files.writeAtomically(at(name), "x")) << name;
    EXPECT_TRUE(fs::is_symlink(at(name))) << name;
  }
  EXPECT_TRUE(fs::is_fifo(at("pipe")));
  EXPECT_TRUE(fs::is_character_file("/dev/null"));
  EXPECT_EQ(filesIn(folder.path()), 5U);
}

TEST_P(PosixFileStoreTest, TakesThePlaceOfAPipeButNotOfAFolder) {
  ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
  EXPECT_TRUE(files.writeAtomically(at("pipe"), "x"));
  EXPECT_EQ(files.read(at("pipe"), limit), "x");
  folder.folder("folder");
  EXPECT_FALSE(files.writeAtomically(at("folder"), "x"));
  EXPECT_EQ(filesIn(folder.path()), 2U);
}

TEST_P(PosixFileStoreTest, WritesNothingWhereItCannot) {
  EXPECT_FALSE(files.writeAtomically(at("none/file"), "x"));
  EXPECT_FALSE(files.writeAtomically("/proc/file", "x"));
  EXPECT_FALSE(files.writeAtomically("", "x"));
  EXPECT_FALSE(files.writeAtomically(at(std::string(300, 'x')), "x"));
  EXPECT_EQ(filesIn(folder.path()), 0U);
}

TEST_P(PosixFileStoreTest, ChangesNothingInAReadOnlyFolder) {
  folder.write("file", "old");
  ::chmod(at("file").c_str(), 0644);
  ::chmod(folder.path().c_str(), 0555);
  EXPECT_EQ(test::asOrdinaryUser([&] { return failedWrite("new"); }), "");
  ::chmod(folder.path().c_str(), 0700);
}

TEST_P(PosixFileStoreTest, ChangesNothingWhenTheFileWouldGrowTooLarge) {
  folder.write("file", "old");
  const std::string answer = test::inChild([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{4096, 4096};
    ::setrlimit(RLIMIT_FSIZE, &small);
    return failedWrite(std::string(10'000, 'x'));
  });
  EXPECT_EQ(answer, "");
}

TEST_P(PosixFileStoreTest, ChangesNothingOnAFullDisk) {
  const std::string answer = test::inChild([&]() -> std::string {
    if (::unshare(CLONE_NEWNS) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
      return test::notPossibleHere;
    if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return test::notPossibleHere;
    if (::mount("tiny", folder.path().c_str(), "tmpfs", 0, "size=64k") != 0) return test::notPossibleHere;
    folder.write("file", "old");
    std::string failure = failedWrite(std::string(200'000, 'x'));
    if (failure.empty() && !files.writeAtomically(at("file"), "new")) failure = "there was room for this";
    return failure;
  });
  if (answer == test::notPossibleHere) GTEST_SKIP() << "no mount namespaces here";
  EXPECT_EQ(answer, "");
}

TEST_P(PosixFileStoreTest, ClearsAwayWhatAKilledWriterLeft) {
  const std::string huge(std::size_t{64} << 20U, 'x');
  for (int round = 0; round < 5; ++round) {
    const test::ForkedProcess writer({}, [&] {
      for (;;) files.writeAtomically(at("file"), huge);
    });
    ::usleep(static_cast<useconds_t>(2000 * (round + 1)));
  }
  pid_t dead = 0;
  {
    const test::ForkedProcess child;
    dead = child.pid();
  }
  folder.write(".vantle-" + std::to_string(dead) + "-7.tmp", "of a process that is gone");
  folder.write(".vantle-1-0.tmp", "of a process that lives");
  folder.write(".vantle-x.tmp", "a name of somebody else's");
  folder.write(".vantle-12.tmp", "likewise");
  PosixFileStore next(folder.path(), GetParam());
  EXPECT_TRUE(next.writeAtomically(at("file"), "new"));
  EXPECT_EQ(next.read(at("file"), limit), "new");
  EXPECT_EQ(filesIn(folder.path()), 4U);
}

TEST_P(PosixFileStoreTest, MakesFoldersForTheirOwner) {
  files.createFolders(at("one/two/three"));
  for (const char* name : {"one", "one/two", "one/two/three"}) {
    struct stat about {};
    ASSERT_EQ(::stat(at(name).c_str(), &about), 0) << name;
    EXPECT_TRUE(S_ISDIR(about.st_mode));
    EXPECT_EQ(about.st_mode & 0777, 0700U);
  }
  files.createFolders(at("one/two/three")); // there already
  folder.write("file", "");
  files.createFolders(at("file/below"));
  files.createFolders("");
  EXPECT_TRUE(fs::is_regular_file(at("file")));
}

TEST_P(PosixFileStoreTest, RemovesAFolderWithAllItHoldsAndNothingElse) {
  folder.write("old/deep/file", "x");
  folder.write("kept/file", "x");
  fs::create_directory_symlink(at("kept"), at("old/link"));
  files.removeFolder(at("old"));
  EXPECT_FALSE(fs::exists(at("old")));
  EXPECT_TRUE(fs::exists(at("kept/file")));
  files.removeFolder(at("old"));
  fs::create_directory_symlink(at("kept"), at("old"));
  files.removeFolder(at("old"));
  EXPECT_FALSE(fs::is_symlink(at("old")));
  EXPECT_TRUE(fs::exists(at("kept/file")));
}

TEST_P(PosixFileStoreTest, RenamesOverWhatHasTheName) {
  folder.write("a", "new");
  folder.write("b", "old");
  EXPECT_TRUE(files.rename(at("a"), at("b")));
  EXPECT_EQ(files.read(at("b"), limit), "new");
  EXPECT_FALSE(files.rename(at("a"), at("b")));
  EXPECT_EQ(files.read(at("b"), limit), "new");
}

TEST_P(PosixFileStoreTest, KnowsWhatExists) {
  folder.write("file", "");
  EXPECT_TRUE(files.exists(at("file")));
  EXPECT_TRUE(files.exists(folder.path()));
  EXPECT_FALSE(files.exists(at("none")));
  EXPECT_FALSE(files.exists(""));
  EXPECT_EQ(files.applicationSupport(), folder.path().string());
}

// As with sudo, when the environment still names another person's folders.
class ForeignFolder : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "needs root";
    folder.write("root's", "precious");
  }
  std::string at(const std::string& name) const { return folder.path() / name; }
  std::string theirs(const std::string& name) {
    std::string path = folder.folder(name);
    EXPECT_EQ(::chown(path.c_str(), test::ordinaryUser, test::ordinaryUser), 0);
    return path;
  }

  desktop::TemporaryFolder folder;
  PosixFileStore files{folder.path(), PosixFileStore::Sync::none};
};

TEST_F(ForeignFolder, IsNotWrittenTo) {
  const std::string home = theirs("home");
  fs::create_symlink(at("root's"), home + "/link");
  ASSERT_EQ(::link(at("root's").c_str(), (home + "/hard").c_str()), 0);
  fs::create_directory(home + "/below"); // root's own, in theirs
  for (const char* name : {"/link", "/hard", "/new", "/below/new"}) {
    EXPECT_FALSE(files.writeAtomically(home + name, "x")) << name;
  }
  files.createFolders(home + "/folder/folder");
  EXPECT_FALSE(fs::exists(home + "/folder"));
  EXPECT_FALSE(files.rename(home + "/hard", home + "/gone"));
  files.removeFolder(home + "/below");
  EXPECT_TRUE(fs::exists(home + "/below"));
  EXPECT_EQ(files.read(at("root's"), limit), "precious");
}

TEST_F(ForeignFolder, IsNotBelievedUnlessThatDoesNoHarm) {
  const std::string home = theirs("home");
  folder.write("home/file", "words");
  EXPECT_FALSE(files.read(home + "/file", limit));
  const PosixFileStore harmless(folder.path(), PosixFileStore::Sync::none, PosixFileStore::Foreign::readable);
  EXPECT_EQ(harmless.read(home + "/file", limit), "words");
}

TEST_F(ForeignFolder, IsOneThatALinkOfTheirsLeadsTo) {
  const std::string shared = folder.folder("shared");
  ASSERT_EQ(::chmod(shared.c_str(), 01777), 0);
  folder.folder("real");
  for (const auto& [name, target] : {std::pair{"folder", at("real")}, std::pair{"file", at("root's")}}) {
    fs::create_symlink(target, shared + "/" + name);
    ASSERT_EQ(::lchown((shared + "/" + name).c_str(), test::ordinaryUser, test::ordinaryUser), 0);
  }
  EXPECT_FALSE(files.writeAtomically(shared + "/folder/new", "x"));
  EXPECT_FALSE(files.writeAtomically(shared + "/file", "x"));
  EXPECT_TRUE(files.writeAtomically(shared + "/own", "x"));
  EXPECT_TRUE(fs::is_empty(at("real")));
  EXPECT_EQ(files.read(at("root's"), limit), "precious");
}

} // namespace
} // namespace vantle
