// SPDX-License-Identifier: MIT
#include "platform/linux/hooks/PersonsHooks.h"

#include "platform/linux/hooks/HookProcess.h"
#include "platform/posix/Descriptor.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/support/InChild.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/User.h"
#include "tests/support/Wait.h"

#include <array>
#include <chrono>
#include <csignal>
#include <cstddef>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <iterator>
#include <optional>
#include <string>
#include <unistd.h>
#include <vector>

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
  std::vector<Pid> writtenPids() const {
    std::ifstream file(output());
    return {std::istream_iterator<Pid>(file), {}};
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
  install("echo \"$VANTLE_APP_NAME\"; ls /proc/self/fd | wc -l; ps -o sid= -p $$ | tr -d ' '; echo $PPID");
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

TEST_F(PersonsHooksTest, RunsNothingThatAForeignGroupCouldExchange) {
  if (!test::runsAsRoot()) GTEST_SKIP() << "needs another group";
  const fs::path way = folder.folder("way");
  const fs::path place = folder.folder("way/hooks");
  folder.write("way/hooks/hook", "#!/bin/sh\n");
  fs::permissions(folder.path(), fs::perms(0755));
  for (const fs::path& each : {way, place, place / "hook"}) {
    fs::permissions(each, fs::perms(0775));
    ASSERT_EQ(::chown(each.c_str(), test::ordinaryUser, test::ordinaryUser), 0);
  }
  const auto answer = [&] {
    return test::asOrdinaryUser([&]() -> std::string {
      PollEventLoop own;
      PersonsHooks mine(own, place.string());
      return mine.start("hook", {}, [] {}) ? "it ran" : "it did not run";
    });
  };
  EXPECT_EQ(answer(), "it ran") << "a group of the user's own";
  for (const fs::path& each : {way, place, place / "hook"}) {
    ASSERT_EQ(::chown(each.c_str(), test::ordinaryUser, test::nobody), 0);
    EXPECT_EQ(answer(), "it did not run") << each;
    fs::permissions(each, fs::perms(0755));
    EXPECT_EQ(answer(), "it ran") << each << " that the group may only read";
  }
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

// The test's own error stream stands for the log.
class LogOfHooks : public PersonsHooksTest {
 protected:
  LogOfHooks() {
    const Descriptor file(::open((folder.path() / "log").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
    ::dup2(file.get(), STDERR_FILENO);
  }
  ~LogOfHooks() override { ::dup2(m_before.get(), STDERR_FILENO); }
  LogOfHooks(const LogOfHooks&) = delete;
  LogOfHooks& operator=(const LogOfHooks&) = delete;

  std::string log() const {
    std::ifstream file(folder.path() / "log");
    return {std::istreambuf_iterator<char>(file), {}};
  }
  void installPrinting(const std::string& text) const {
    fs::permissions(folder.write("hook", "#!/bin/sh\n" + text + "\n"), fs::perms(0755));
  }

 private:
  Descriptor m_before{::fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3)};
};

TEST_F(LogOfHooks, HasBothOfAHooksStreams) {
  installPrinting("echo to one; echo to the other >&2; printf last");
  ASSERT_TRUE(run());
  ASSERT_TRUE(becomes([&] { return ended == 1; }));
  EXPECT_EQ(log(), "to one\nto the other\nlast");
}

TEST_F(LogOfHooks, IsNotFilledByOneThatPrintsWithoutEnd) {
  hooks.emplace(loop, folder.path().string(), std::chrono::seconds(1));
  installPrinting("yes 'one line of many'");
  ASSERT_TRUE(run());
  ASSERT_TRUE(becomes([&] { return ended == 1; }));
  const std::string all = log();
  EXPECT_EQ(all.compare(0, 18, "one line of many\no"), 0) << all.substr(0, 100);
  const std::string cut = "\nvantle: a hook prints more than 64 KB; the rest is left out.\n";
  const std::size_t end = all.find(cut);
  ASSERT_NE(end, std::string::npos) << all.size();
  EXPECT_EQ(end, mostHookOutput);
  EXPECT_EQ(all.substr(end + cut.size()), "vantle: the hook hook takes too long, and is ended.\n");
}

TEST_F(LogOfHooks, HasTheWholeOfOneThatPrintsAndEndsAtOnce) {
  installPrinting("seq 1 9000; sleep 1000 &");
  ASSERT_TRUE(run());
  ASSERT_TRUE(becomes([&] { return ended == 1; }));
  EXPECT_TRUE(log().ends_with("\n8999\n9000\n")) << log().size();
}

// As after a pipe's reader has gone.
TEST_F(LogOfHooks, ThatTakesNothingEndsNoHook) {
  std::array<int, 2> ends{};
  ASSERT_EQ(::pipe(ends.data()), 0);
  ::dup2(ends[1], STDERR_FILENO);
  ::close(ends[0]);
  ::close(ends[1]);
  installPrinting("seq 1 9000; echo printed >>" + output().string());
  ASSERT_TRUE(run());
  ASSERT_TRUE(becomes([&] { return ended == 1; }));
  EXPECT_EQ(written(), "printed\n");
}

// timeout(1) makes one, and so does a shell with job control.
TEST_F(PersonsHooksTest, LeavesNothingRunningInGroupsOfTheirOwnEither) {
  const std::string deaf = "sh -c 'trap \"\" HUP TERM; echo $$; sleep 1000' & ";
  install("timeout 500 " + deaf + "timeout 500 " + deaf + "timeout 500 sh -c 'echo $$; exec sleep 1000'");
  hooks.emplace(loop, folder.path().string(), std::chrono::seconds(1));
  ASSERT_TRUE(run());
  ASSERT_TRUE(desktop::waitUntil([&] { return writtenPids().size() == 3; }));
  ASSERT_TRUE(becomes([&] { return ended == 1; }));
  for (const Pid child : writtenPids()) {
    EXPECT_TRUE(desktop::waitUntil([&] { return !desktop::isAlive(child); }));
  }
}

TEST_F(PersonsHooksTest, LeavesASessionOfItsOwnAlone) {
  install("setsid sh -c 'echo $$; exec sleep 1000' & sleep 1000 & echo $!; "
          "while [ $(wc -l <" +
          output().string() + ") -lt 2 ]; do sleep 0.01; done");
  ASSERT_TRUE(run());
  ASSERT_TRUE(becomes([&] { return ended == 1; }));
  int alive = 0;
  ASSERT_EQ(writtenPids().size(), 2U);
  for (const Pid child : writtenPids()) {
    const bool isOwnSession = ::getsid(child) == child;
    EXPECT_EQ(desktop::waitUntil([&] { return !desktop::isAlive(child) || isOwnSession; }), true);
    if (!desktop::isAlive(child)) continue;
    ++alive;
    ::kill(child, SIGKILL);
  }
  EXPECT_EQ(alive, 1) << "what was started to stay";
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
