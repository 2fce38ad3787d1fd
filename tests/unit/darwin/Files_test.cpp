// SPDX-License-Identifier: MIT
// What every Unix asks of its system, as a Mac answers it: with real files, pipes and programs.
#include "platform/posix/files/Flush.h"
#include "platform/posix/files/LockHolder.h"
#include "platform/posix/files/OwnFolder.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/posix/files/SingleCopyLock.h"
#include "platform/posix/process/OpenDescriptors.h"
#include "platform/posix/process/Pipe.h"
#include "platform/posix/process/SessionLauncher.h"
#include "tests/unit/darwin/DarwinFixture.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle {
namespace {

// A folder of this user's own, away from where everybody may write.
class Files : public DarwinTest {
 protected:
  Files() {
    std::string made = std::filesystem::temp_directory_path() / "vantle-mac-XXXXXX";
    folder = std::filesystem::canonical(::mkdtemp(made.data()));
    kernel->startTrace();
  }
  ~Files() override { std::filesystem::remove_all(folder); }

  std::string make(const std::string& name, mode_t mode = 0700) const {
    std::string path = folder + "/" + name;
    ::mkdir(path.c_str(), mode);
    ::chmod(path.c_str(), mode);
    return path;
  }

  std::string folder;
};

TEST_F(Files, OpensFoldersThatOnlyThisUserCanExchange) {
  const std::string own = make("own");
  const Descriptor opened = openOwnFolder(own);
  ASSERT_TRUE(opened);
  EXPECT_EQ(pathOf(opened), own);
  EXPECT_NE(::fcntl(opened.get(), F_GETFD) & FD_CLOEXEC, 0) << "no program inherits it";
  EXPECT_TRUE(openOwnFolder(own + "//"));
  EXPECT_FALSE(openOwnFolder("relative"));
  EXPECT_EQ(errno, EPERM);
}

TEST_F(Files, TellsOfAFolderThatIsNotThere) {
  EXPECT_FALSE(openOwnFolder(folder + "/nowhere/at/all"));
  EXPECT_EQ(errno, ENOENT);
  EXPECT_TRUE(isOwnFolder(folder + "/nowhere/at/all")) << "it would be one";
}

TEST_F(Files, RefusesWhatEverybodyMayExchange) {
  const std::string open = make("open", 0777);
  ::mkdir((open + "/inside").c_str(), 0700);
  EXPECT_FALSE(openOwnFolder(open + "/inside"));
  EXPECT_EQ(errno, EPERM);
  ::chmod(open.c_str(), 01777);
  EXPECT_TRUE(openOwnFolder(open + "/inside")) << "there everybody has only what is his own";
  std::ofstream(folder + "/file") << "x";
  EXPECT_FALSE(openOwnFolder(folder + "/file"));
}

TEST_F(Files, FollowsOwnLinksAndNoCircle) {
  const std::string own = make("own");
  ::mkdir((own + "/deep").c_str(), 0700);
  std::filesystem::create_symlink("own", folder + "/relative");
  std::filesystem::create_symlink(own, folder + "/absolute");
  EXPECT_EQ(pathOf(openOwnFolder(folder + "/relative/deep")), own + "/deep");
  EXPECT_EQ(pathOf(openOwnFolder(folder + "/absolute/deep")), own + "/deep");
  std::filesystem::create_symlink("circle", folder + "/circle");
  EXPECT_FALSE(openOwnFolder(folder + "/circle"));
  const std::string open = make("open", 0777);
  std::filesystem::create_symlink(open, folder + "/out");
  EXPECT_FALSE(openOwnFolder(folder + "/out"));
}

TEST_F(Files, AWriteReachesTheDiskItselfAndReplacesTheFileInOneStep) {
  PosixFileStore files(folder, PosixFileStore::Sync::disk);
  files.createFolders(folder + "/Vantle");
  EXPECT_TRUE(files.writeAtomically(folder + "/Vantle/journal.json", "[1]"));
  EXPECT_TRUE(files.writeAtomically(folder + "/Vantle/journal.json", "[2]"));
  EXPECT_EQ(files.read(folder + "/Vantle/journal.json", 100), "[2]");
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder + "/Vantle"), {}), 1)
      << "nothing left over";
  EXPECT_THAT(calls(), testing::ElementsAre("fcntl(F_FULLFSYNC)", "fcntl(F_FULLFSYNC)"));
  files.removeFolder(folder + "/Vantle");
  EXPECT_FALSE(files.exists(folder + "/Vantle"));
}

TEST_F(Files, WhatCannotBeFlushedIsNotOnTheDisk) { EXPECT_FALSE(flushFile(-1)); }

TEST_F(Files, TheLockIsTheCopys) {
  std::ofstream(folder + "/lock") << "";
  EXPECT_EQ(lockHolder(folder + "/lock"), LockHolder::copy);
  EXPECT_EQ(lockHolder(folder), LockHolder::stranger) << "anybody may have locked a folder";
  const SingleCopyLock first = SingleCopyLock::acquire({folder});
  EXPECT_EQ(first.outcome(), SingleCopyLock::Outcome::acquired);
  EXPECT_EQ(SingleCopyLock::acquire({folder}).outcome(), SingleCopyLock::Outcome::heldByOther);
}

TEST_F(Files, NoProgramInheritsAPipe) {
  for (const PipeReading reading : {PipeReading::waits, PipeReading::returns}) {
    std::array<int, 2> ends{-1, -1};
    ASSERT_TRUE(openPipe(ends, reading));
    for (const int end : ends) {
      EXPECT_EQ(::fcntl(end, F_GETFD), FD_CLOEXEC);
      EXPECT_EQ((::fcntl(end, F_GETFL) & O_NONBLOCK) != 0, reading == PipeReading::returns);
    }
    EXPECT_EQ(::write(ends[1], "x", 1), 1);
    char byte = 0;
    EXPECT_EQ(::read(ends[0], &byte, 1), 1);
    ::close(ends[0]);
    ::close(ends[1]);
  }
}

TEST_F(Files, ClosesAllThatIsOpenFromANumberOn) {
  const pid_t child = ::fork();
  if (child == 0) {
    const int kept = ::open("/dev/null", O_RDONLY);
    const int first = ::open("/dev/null", O_RDONLY);
    const int second = ::dup(first);
    closeAllAtExecFrom(first);
    const bool marked = ::fcntl(first, F_GETFD) == FD_CLOEXEC && ::fcntl(second, F_GETFD) == FD_CLOEXEC;
    const bool spared = ::fcntl(kept, F_GETFD) == 0;
    closeAllFrom(first);
    const bool closed = ::fcntl(first, F_GETFD) < 0 && ::fcntl(second, F_GETFD) < 0;
    ::_exit(marked && spared && closed && ::fcntl(kept, F_GETFD) == 0 ? 0 : 1);
  }
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
}

// With the answers of this system's Mac: the guard, the pipe of failures and the descriptors.
TEST_F(Files, ProgramsAreStartedEndedAndMissed) {
  SessionLauncher launcher;
  EXPECT_EQ(launcher.launch("/no/such/program"), nullptr);
  const auto busy = launcher.launch("/usr/bin/yes");
  ASSERT_NE(busy, nullptr);
  EXPECT_TRUE(busy->isRunning());
  EXPECT_EQ(::getsid(busy->processIdentifier()), busy->processIdentifier()) << "a session of its own";
  busy->terminate();
  busy->waitUntilExit();
  EXPECT_FALSE(busy->isRunning());
}

} // namespace
} // namespace vantle
