// SPDX-License-Identifier: MIT
#include "platform/posix/process/SessionLauncher.h"

#include "platform/linux/process/ProcfsProcessTable.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/InChild.h"
#include "tests/support/Program.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/Wait.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <filesystem>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantle {
namespace {

constexpr const char* endless = "/usr/bin/yes";

// Ends what a test has started, whatever becomes of the test.
struct Ended {
  explicit Ended(std::unique_ptr<Subprocess> started) : process(std::move(started)) {}
  ~Ended() {
    if (!process) return;
    ::kill(process->processIdentifier(), SIGKILL);
    process->waitUntilExit();
  }
  std::unique_ptr<Subprocess> process;
};

std::map<int, std::string> descriptorsOf(Pid pid) {
  std::map<int, std::string> open;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/fd")) {
    std::error_code closed;
    open[std::stoi(entry.path().filename())] = std::filesystem::read_symlink(entry.path(), closed);
  }
  return open;
}

// The launcher knows that the program has begun as soon as the kernel closes the first descriptors that it
// may not have; the others follow.
bool hasOnlyEmptyDescriptors(Pid pid) {
  const std::map<int, std::string> nowhere{{0, "/dev/null"}, {1, "/dev/null"}, {2, "/dev/null"}};
  return desktop::waitUntil([&] { return descriptorsOf(pid) == nowhere; });
}

TEST(SessionLauncher, StartsAProgramInASessionOfItsOwnWithItsOutputDiscarded) {
  const int inheritable = ::open("/dev/zero", O_RDONLY); // NOLINT: meant to be inheritable
  SessionLauncher launcher;
  const Ended child(launcher.launch(endless));
  ::close(inheritable);
  ASSERT_TRUE(child.process);
  const Pid pid = child.process->processIdentifier();
  EXPECT_EQ(::getsid(pid), pid);
  EXPECT_TRUE(hasOnlyEmptyDescriptors(pid));
  const ProcfsProcessTable table(BootEpoch(0));
  EXPECT_EQ(table.executablePathBytes(pid), std::filesystem::canonical(endless).string());
  EXPECT_TRUE(child.process->isRunning());
}

TEST(SessionLauncher, LeavesAProgramInThisSessionWhenAskedTo) {
  SessionLauncher launcher({}, SessionLauncher::Session::shared);
  const Ended child(launcher.launch(endless));
  ASSERT_TRUE(child.process);
  EXPECT_EQ(::getsid(child.process->processIdentifier()), ::getsid(0));
}

TEST(SessionLauncher, EndsAndAwaitsWhatItStarted) {
  SessionLauncher launcher;
  const auto child = launcher.launch(endless);
  ASSERT_TRUE(child);
  child->terminate();
  child->waitUntilExit();
  EXPECT_FALSE(child->isRunning());
  EXPECT_FALSE(ProcfsProcessTable(BootEpoch(0)).record(child->processIdentifier()));
  child->terminate(); // nobody is left to be reached
  child->waitUntilExit();
}

TEST(SessionLauncher, EndsWhatSomebodyHasStopped) {
  SessionLauncher launcher;
  const Ended child(launcher.launch(endless));
  ASSERT_TRUE(child.process);
  ASSERT_EQ(::kill(child.process->processIdentifier(), SIGSTOP), 0);
  child.process->terminate();
  EXPECT_TRUE(desktop::waitUntil([&] { return !child.process->isRunning(); }));
}

TEST(SessionLauncher, SeesThatAProgramHasEndedByItself) {
  SessionLauncher launcher;
  const auto child = launcher.launch("/usr/bin/true");
  ASSERT_TRUE(child);
  EXPECT_TRUE(desktop::waitUntil([&] { return !child->isRunning(); }));
}

TEST(SessionLauncher, LeavesARunningProgramAlone) {
  SessionLauncher launcher;
  auto child = launcher.launch(endless);
  ASSERT_TRUE(child);
  const Pid pid = child->processIdentifier();
  child.reset();
  EXPECT_TRUE(ProcfsProcessTable(BootEpoch(0)).record(pid));
  ::kill(pid, SIGKILL);
  ::waitpid(pid, nullptr, 0);
}

TEST(SessionLauncher, LeavesNothingRunningWhenItIsKilled) {
  std::array<int, 2> told{};
  ASSERT_EQ(::pipe(told.data()), 0);
  test::ForkedProcess killed({}, [&] {
    SessionLauncher launcher;
    const auto child = launcher.launch(endless);
    const Pid pid = child ? child->processIdentifier() : 0;
    if (::write(told[1], &pid, sizeof pid) == sizeof pid) ::pause();
  });
  Pid child = 0;
  ASSERT_EQ(::read(told[0], &child, sizeof child), static_cast<ssize_t>(sizeof child));
  ASSERT_GT(child, 0);
  EXPECT_TRUE(desktop::isAlive(child));
  killed.kill();
  EXPECT_TRUE(desktop::waitUntil([&] { return !desktop::isAlive(child); }));
  if (desktop::isAlive(child)) ::kill(child, SIGKILL);
  for (const int end : told) ::close(end);
}

TEST(SessionLauncher, LeavesWhatWasLetGoRunningWhenItEnds) {
  std::array<int, 2> told{};
  ASSERT_EQ(::pipe(told.data()), 0);
  test::ForkedProcess ended({}, [&] {
    SessionLauncher launcher;
    std::array<Pid, 2> pids{};
    for (Pid& pid : pids) {
      auto child = launcher.launch(endless);
      if (child) pid = child->processIdentifier();
      if (pid == pids.back()) static_cast<void>(child.release()); // still held on to at the end
    }
    ::_exit(::write(told[1], pids.data(), sizeof pids) == sizeof pids ? 0 : 1);
  });
  std::array<Pid, 2> children{};
  ASSERT_EQ(::read(told[0], children.data(), sizeof children), static_cast<ssize_t>(sizeof children));
  ended.waitForEnd();
  EXPECT_TRUE(desktop::waitUntil([&] { return !desktop::isAlive(children[1]); }));
  EXPECT_TRUE(desktop::isAlive(children[0]));
  for (const Pid child : children) ::kill(child, SIGKILL);
  for (const int end : told) ::close(end);
}

TEST(SessionLauncher, StartsNothingFromWhatIsNoProgram) {
  const desktop::TemporaryFolder folder;
  const std::filesystem::path pipe = folder.path() / "pipe";
  ::mkfifo(pipe.c_str(), 0700);
  const std::filesystem::path text = folder.write("text", "\x01 not a program");
  ::chmod(text.c_str(), 0700);
  SessionLauncher launcher;
  for (const std::string& path : {folder.path().string() + "/none", folder.path().string(), pipe.string(),
                                  text.string(), std::string(5000, 'x'), std::string()}) {
    EXPECT_EQ(launcher.launch(path), nullptr) << path;
  }
}

TEST(SessionLauncher, DoesAllOfItWithoutStandardDescriptorsOfItsOwn) {
  const auto check = []() -> std::string {
    ::close_range(STDIN_FILENO, STDERR_FILENO, 0);
    SessionLauncher launcher;
    if (launcher.launch("/nowhere")) return "started what is not there";
    const Ended child(launcher.launch(endless));
    if (!child.process) return "not started";
    return hasOnlyEmptyDescriptors(child.process->processIdentifier()) ? "" : "other descriptors";
  };
  EXPECT_EQ(test::inChild(check), "");
}

TEST(SessionLauncher, GivesTheProgramTheSignalsThatItExpects) {
  const auto check = []() -> std::string {
    ::signal(SIGTERM, SIG_IGN);
    sigset_t blocked;
    ::sigfillset(&blocked);
    ::sigprocmask(SIG_BLOCK, &blocked, nullptr);
    SessionLauncher launcher;
    const auto child = launcher.launch(endless);
    if (!child) return "not started";
    child->terminate();
    child->waitUntilExit();
    return child->isRunning() ? "still runs" : "";
  };
  EXPECT_EQ(test::inChild(check), "");
}

TEST(SessionLauncher, HasEachProcessPutIntoItsPlace) {
  std::vector<Pid> placed;
  SessionLauncher launcher([&](Pid pid) { placed.push_back(pid); });
  const Ended first(launcher.launch(endless));
  EXPECT_EQ(launcher.launch("/nowhere"), nullptr);
  const Ended second(launcher.launch(endless));
  EXPECT_EQ(placed,
            (std::vector<Pid>{first.process->processIdentifier(), second.process->processIdentifier()}));
}

} // namespace
} // namespace vantle
