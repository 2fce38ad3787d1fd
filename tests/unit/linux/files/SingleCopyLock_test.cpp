// SPDX-License-Identifier: MIT
#include "platform/posix/files/SingleCopyLock.h"

#include "platform/linux/files/LockFolders.h"
#include "platform/posix/process/SessionLauncher.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/InChild.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <optional>
#include <sys/file.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>

namespace vantle {
namespace {

using Outcome = SingleCopyLock::Outcome;
namespace fs = std::filesystem;

class SingleCopyLockTest : public testing::Test {
 protected:
  Outcome attempt() const { return SingleCopyLock::acquire(lockFolders(folders())).outcome(); }
  XdgFolders folders() const {
    XdgFolders all;
    all.data = folder.path() / "data";
    all.runtime = runtime;
    return all;
  }

  desktop::TemporaryFolder folder;
  std::optional<std::string> runtime = folder.folder("runtime");
};

TEST_F(SingleCopyLockTest, IsHeldByOneCopyAtATime) {
  std::optional<SingleCopyLock> first(SingleCopyLock::acquire(lockFolders(folders())));
  EXPECT_EQ(first->outcome(), Outcome::acquired);
  EXPECT_EQ(attempt(), Outcome::heldByOther);
  EXPECT_EQ(attempt(), Outcome::heldByOther) << "asking must not take it away";
  first.reset();
  EXPECT_EQ(attempt(), Outcome::acquired);
}

TEST_F(SingleCopyLockTest, IsReleasedByTheKernelWhenItsHolderIsKilled) {
  {
    const test::ForkedProcess holder([&] {
      static const SingleCopyLock lock = SingleCopyLock::acquire(lockFolders(folders()));
      if (lock.outcome() != Outcome::acquired) ::_exit(1);
    });
    EXPECT_EQ(attempt(), Outcome::heldByOther);
  }
  EXPECT_EQ(attempt(), Outcome::acquired);
}

// One of its threads hangs in the kernel, in a folder whose server has gone, say: the rest of it is dead, and
// the kernel takes nothing apart.
TEST_F(SingleCopyLockTest, IsNotHeldByOneWhoWasKilledAndHangs) {
  const auto take = [&] {
    static const SingleCopyLock lock = SingleCopyLock::acquire(lockFolders(folders()));
    if (lock.outcome() != Outcome::acquired) ::_exit(1);
  };
  const test::ForkedProcess holder(take, [] {
    std::thread([] {
      for (;;) ::pause();
    }).detach();
    ::syscall(SYS_exit, 0); // the main thread alone
  });
  EXPECT_TRUE(desktop::waitUntil([&] { return attempt() == Outcome::acquired; }));
  const SingleCopyLock next = SingleCopyLock::acquire(lockFolders(folders()));
  EXPECT_EQ(next.outcome(), Outcome::acquired);
  EXPECT_EQ(attempt(), Outcome::heldByOther);
}

TEST_F(SingleCopyLockTest, IsNotInheritedByThoseThatAreStarted) {
  std::unique_ptr<Subprocess> child;
  {
    const SingleCopyLock lock = SingleCopyLock::acquire(lockFolders(folders()));
    child = SessionLauncher().launch("/usr/bin/yes");
    ASSERT_TRUE(child);
  }
  EXPECT_EQ(attempt(), Outcome::acquired);
  child->terminate();
  child->waitUntilExit();
}

TEST_F(SingleCopyLockTest, SurvivesThatItsFileIsDeleted) {
  const SingleCopyLock lock = SingleCopyLock::acquire(lockFolders(folders()));
  fs::remove(fs::path(*runtime) / "com.halvo.vantle.lock");
  EXPECT_EQ(attempt(), Outcome::heldByOther);
  fs::remove(fs::path(*runtime) / "com.halvo.vantle.lock");
  EXPECT_EQ(attempt(), Outcome::heldByOther);
}

TEST_F(SingleCopyLockTest, IsHeldAgainstACopyWithAnotherRuntimeFolder) {
  const SingleCopyLock lock = SingleCopyLock::acquire(lockFolders(folders()));
  runtime = folder.folder("another");
  EXPECT_EQ(attempt(), Outcome::heldByOther) << "both would write one journal";
}

TEST_F(SingleCopyLockTest, IsNoneOfAStrangerWhoLocksTheFolder) {
  const test::ForkedProcess stranger([&] {
    ::prctl(PR_SET_NAME, "stranger", 0, 0, 0); // NOLINT(cppcoreguidelines-pro-type-vararg)
    const int file = ::open(runtime->c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (::flock(file, LOCK_EX) != 0) ::_exit(1);
  });
  EXPECT_EQ(attempt(), Outcome::acquired);
}

TEST_F(SingleCopyLockTest, LiesInTheRuntimeFolderForItsOwnerAlone) {
  const SingleCopyLock lock = SingleCopyLock::acquire(lockFolders(folders()));
  struct stat about {};
  ASSERT_EQ(::stat((*runtime + "/com.halvo.vantle.lock").c_str(), &about), 0);
  EXPECT_EQ(about.st_mode & 0777, 0600U);
}

TEST_F(SingleCopyLockTest, LiesInTheDataFolderWhereThereIsNoRuntimeFolder) {
  runtime.reset();
  const SingleCopyLock lock = SingleCopyLock::acquire(lockFolders(folders()));
  EXPECT_EQ(lock.outcome(), Outcome::acquired);
  EXPECT_TRUE(fs::exists(folder.path() / "data/Vantle/com.halvo.vantle.lock"));
  EXPECT_EQ(attempt(), Outcome::heldByOther);
}

TEST_F(SingleCopyLockTest, SurvivesWhatStandsInItsPlace) {
  const fs::path file = fs::path(*runtime) / "com.halvo.vantle.lock";
  fs::create_directory(file);
  EXPECT_EQ(attempt(), Outcome::acquired) << "in the data folder, then";
  fs::remove(file);
  fs::create_symlink("/dev/null", file);
  EXPECT_EQ(attempt(), Outcome::acquired);
  fs::remove(file);
  ::mkfifo(file.c_str(), 0600);
  EXPECT_EQ(attempt(), Outcome::acquired);
  fs::remove(file);
  folder.write("runtime/com.halvo.vantle.lock", "left by a crash");
  EXPECT_EQ(attempt(), Outcome::acquired);
}

TEST_F(SingleCopyLockTest, SaysWhenNobodyCanTell) {
  const auto check = [&]() -> std::string {
    return attempt() == Outcome::unavailable ? "" : "a lock was made from nothing";
  };
  ::chmod(folder.path().c_str(), 0500);
  ::chmod(runtime->c_str(), 0500);
  EXPECT_EQ(test::asOrdinaryUser(check), "");
  ::chmod(folder.path().c_str(), 0700);
}

} // namespace
} // namespace vantle
