// SPDX-License-Identifier: MIT
#include "platform/linux/hooks/PersonsHooks.h"

#include "platform/shared/PollEventLoop.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"
#include "tests/support/Wait.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <unistd.h>

namespace vantle {
namespace {

namespace fs = std::filesystem;

class PersonsHooksTest : public testing::Test {
 protected:
  desktop::TemporaryFolder folder;
  PollEventLoop loop;
  std::optional<PersonsHooks> hooks{std::in_place, loop, folder.path().string()};
  int ended = 0;

  fs::path output() const { return folder.path() / "output"; }
  std::string written() const {
    std::ifstream file(output());
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void install(const std::string& text, fs::perms mode = fs::perms(0755)) const {
    const fs::path file = folder.write("hook", "#!/bin/sh\nexec >>" + output().string() + "\n" + text + "\n");
    fs::permissions(file, mode);
  }
  bool run() {
    return hooks->start("hook", {{"VANTLE_APP_NAME", "a b;$c"}}, [this] { ++ended; });
  }
  bool becomes(const std::function<bool()>& condition) {
    return loop.runUntil(condition, desktop::guardLimit);
  }
};

TEST_F(PersonsHooksTest, RunsWithItsVariablesAndTellsItsEnd) {
  install("echo \"$VANTLE_APP_NAME\"; ls /proc/self/fd | wc -l; ps -o sid= -p $$ | tr -d ' '; echo $$");
  ASSERT_TRUE(run());
  EXPECT_EQ(ended, 0);
  ASSERT_TRUE(becomes([&] { return ended == 1; }));
  const std::string said = written();
  // Its own descriptors, and that of the folder it lists; and a session of its own.
  EXPECT_TRUE(said.starts_with("a b;$c\n4\n")) << said;
  const std::string rest = said.substr(9);
  const std::string number = rest.substr(0, rest.find('\n'));
  EXPECT_EQ(rest, number + "\n" + number + "\n");
}

TEST_F(PersonsHooksTest, RunsOnlyWhatNobodyElseCanHavePutThere) {
  EXPECT_FALSE(run()) << "there is none";
  install("true", fs::perms(0644));
  EXPECT_FALSE(run()) << "not executable";
  install("true", fs::perms(0757));
  EXPECT_FALSE(run()) << "everybody may write";
  install("true");
  fs::rename(folder.path() / "hook", folder.path() / "elsewhere");
  fs::create_symlink(folder.path() / "elsewhere", folder.path() / "hook");
  EXPECT_FALSE(run()) << "a link";
  fs::remove(folder.path() / "hook");
  fs::create_directory(folder.path() / "hook");
  EXPECT_FALSE(run()) << "a folder";
  fs::remove(folder.path() / "hook");
  install("true");
  fs::permissions(folder.path(), fs::perms(0777));
  EXPECT_FALSE(run()) << "everybody may exchange it";
  fs::permissions(folder.path(), fs::perms(0700));
  if (test::runsAsRoot()) {
    ASSERT_EQ(::chown((folder.path() / "hook").c_str(), test::ordinaryUser, test::ordinaryUser), 0);
    EXPECT_FALSE(run()) << "somebody else's";
    ASSERT_EQ(::chown((folder.path() / "hook").c_str(), 0, 0), 0);
  }
  EXPECT_TRUE(run());
  EXPECT_TRUE(becomes([&] { return ended == 1; }));
}

TEST_F(PersonsHooksTest, EndsWhatTakesTooLongWithAllThatItStarted) {
  hooks.emplace(loop, folder.path().string(), std::chrono::seconds(1));
  install("trap '' TERM ALRM; sleep 1000 & echo $!; wait");
  ASSERT_TRUE(run());
  ASSERT_TRUE(desktop::waitUntil([&] { return written().ends_with("\n"); }));
  const Pid child = std::stoi(written());
  ASSERT_TRUE(becomes([&] { return ended == 1; }));
  EXPECT_TRUE(desktop::waitUntil([&] { return !desktop::isAlive(child); }));
}

TEST_F(PersonsHooksTest, LeavesNothingRunningBehindOneThatHasEnded) {
  install("sleep 1000 & echo $!");
  ASSERT_TRUE(run());
  ASSERT_TRUE(becomes([&] { return ended == 1; }));
  const Pid child = std::stoi(written());
  EXPECT_TRUE(desktop::waitUntil([&] { return !desktop::isAlive(child); }));
}

TEST_F(PersonsHooksTest, OneThatWasCutTellsNothing) {
  install("echo $$; exec sleep 1000");
  ASSERT_TRUE(run());
  ASSERT_TRUE(desktop::waitUntil([&] { return written().ends_with("\n"); }));
  const Pid running = std::stoi(written());
  hooks->cut();
  EXPECT_TRUE(desktop::waitUntil([&] { return !desktop::isAlive(running); }));
  install("true");
  ASSERT_TRUE(run());
  ASSERT_TRUE(becomes([&] { return ended == 1; })) << "the second one";
}

// Whoever ends leaves its hook the rest of its time, and no more.
TEST_F(PersonsHooksTest, OneThatOutlivesTheProgramHasAnEndAllTheSame) {
  hooks.emplace(loop, folder.path().string(), std::chrono::seconds(1));
  install("echo $$; exec sleep 1000");
  ASSERT_TRUE(run());
  ASSERT_TRUE(desktop::waitUntil([&] { return written().ends_with("\n"); }));
  const Pid running = std::stoi(written());
  hooks.reset();
  EXPECT_TRUE(desktop::waitUntil([&] { return !desktop::isAlive(running); }));
  EXPECT_EQ(ended, 0);
}

} // namespace
} // namespace vantle
