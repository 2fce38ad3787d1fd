// SPDX-License-Identifier: MIT
// Paths of executables, as hostile as the kernel lets them be.
#include "engine/ProcessQueries.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

namespace vantle {
namespace {

using test::ForkedProcess;
namespace fs = std::filesystem;

class ExecutablePathTest : public testing::Test {
 protected:
  // A program that sleeps for ever, under the given name.
  fs::path program(const fs::path& name) {
    const fs::path path = folder.path() / name;
    fs::create_directories(path.parent_path());
    fs::copy_file(fs::canonical("/usr/bin/sleep"), path);
    return path;
  }
  static ForkedProcess run(const fs::path& path) {
    return ForkedProcess([path] { ::execl(path.c_str(), "sleep", "1000", nullptr); });
  }

  desktop::TemporaryFolder folder;
  const ProcfsProcessTable table{BootEpoch(0)};
};

TEST_F(ExecutablePathTest, IsTheFullPath) {
  const fs::path path = program("plain");
  const ForkedProcess child = run(path);
  EXPECT_EQ(table.executablePathBytes(child.pid()), path.string());
}

TEST_F(ExecutablePathTest, ComesBackByteForByte) {
  for (const char* name : {"a b", "line\nbreak", "(x)", "\xff\xfe", "\xc3\xa9t\xc3\xa9", "tab\t\"'\\"}) {
    const fs::path path = program(name);
    const ForkedProcess child = run(path);
    EXPECT_EQ(table.executablePathBytes(child.pid()), path.string());
  }
}

TEST_F(ExecutablePathTest, IsCleanedForThoseWhoReadText) {
  const fs::path path = program("a\xff"
                                "b");
  const ForkedProcess child = run(path);
  EXPECT_EQ(executablePath(table, child.pid()), folder.path().string() + "/a\xEF\xBF\xBD"
                                                                         "b");
}

TEST_F(ExecutablePathTest, HasNoMarkWhenTheFileWasDeleted) {
  const fs::path path = program("gone");
  const ForkedProcess child = run(path);
  fs::remove(path);
  EXPECT_EQ(table.executablePathBytes(child.pid()), path.string());
}

TEST_F(ExecutablePathTest, HasNoMarkWhenTheFileWasReplacedByAnUpdate) {
  const fs::path path = program("updated");
  const ForkedProcess child = run(path);
  fs::rename(program("next version"), path);
  EXPECT_EQ(table.executablePathBytes(child.pid()), path.string());
}

TEST_F(ExecutablePathTest, KeepsAMarkThatIsPartOfTheName) {
  const fs::path path = program("really (deleted)");
  const ForkedProcess child = run(path);
  EXPECT_EQ(table.executablePathBytes(child.pid()), path.string());
  // Deleted by now: what the kernel adds goes, what the name has stays.
  fs::remove(path);
  EXPECT_EQ(table.executablePathBytes(child.pid()), path.string());
}

TEST_F(ExecutablePathTest, IsAbsentBeyondWhatTheKernelCanName) {
  // Deeper than any path: every step is taken from the folder before.
  const std::string step(250, 'd');
  const fs::path source = program("source");
  const ForkedProcess child([&] {
    ::chdir(folder.path().c_str());
    for (int depth = 0; depth < 20; ++depth) {
      ::mkdir(step.c_str(), 0700);
      ::chdir(step.c_str());
    }
    ::link(source.c_str(), "deep");
    ::execl("deep", "sleep", "1000", nullptr);
    ::_exit(1);
  });
  EXPECT_TRUE(table.record(child.pid()));
  EXPECT_FALSE(table.executablePathBytes(child.pid()));
}

TEST_F(ExecutablePathTest, CanBeNearlyAsLongAsPathsGet) {
  fs::path deep;
  while (folder.path().string().size() + deep.string().size() + 251 < 4080) deep /= std::string(250, 'd');
  const fs::path path = program(deep / "x");
  const ForkedProcess child = run(path);
  EXPECT_EQ(table.executablePathBytes(child.pid()), path.string());
}

TEST_F(ExecutablePathTest, IsAbsentForTheKernelsOwnThreads) { EXPECT_FALSE(table.executablePathBytes(2)); }

} // namespace
} // namespace vantle
