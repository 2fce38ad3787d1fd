// SPDX-License-Identifier: MIT
#include "platform/posix/process/BrokenPipe.h"

#include "platform/posix/process/Pipe.h"

#include <array>
#include <csignal>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

namespace vantle {
namespace {

bool isWaiting(int number) {
  sigset_t waiting;
  ::sigpending(&waiting);
  return ::sigismember(&waiting, number) == 1;
}

// A pipe with its reader, or without one.
class BrokenPipe : public testing::Test {
 protected:
  BrokenPipe() { EXPECT_TRUE(openPipe(ends, PipeReading::returns)); }
  ~BrokenPipe() override {
    if (ends[0] >= 0) ::close(ends[0]);
    ::close(ends[1]);
  }
  void loseReader() {
    ::close(ends[0]);
    ends[0] = -1;
  }

  std::array<int, 2> ends{-1, -1};
};

TEST_F(BrokenPipe, QuietWritesReachAReader) {
  EXPECT_TRUE(writeQuietly(ends[1], "abc", 3));
  std::array<char, 8> read{};
  EXPECT_EQ(::read(ends[0], read.data(), read.size()), 3);
  EXPECT_STREQ(read.data(), "abc");
  EXPECT_EQ(::read(ends[0], read.data(), read.size()), -1) << "it waits for nothing";
}

TEST_F(BrokenPipe, AQuietWriteWithoutAReaderEndsNothingAndLeavesNoSignal) {
  loseReader();
  EXPECT_FALSE(writeQuietly(ends[1], "abc", 3)); // whatever ends this program by default
  EXPECT_FALSE(isWaiting(SIGPIPE));
}

TEST_F(BrokenPipe, AQuietWriteDoesNotWaitForASignalThatIsIgnored) {
  loseReader();
  const auto before = std::signal(SIGPIPE, SIG_IGN);
  EXPECT_FALSE(writeQuietly(ends[1], "abc", 3));
  std::signal(SIGPIPE, before);
}

TEST_F(BrokenPipe, ASignalThatWaitedBeforeGoesOnWaiting) {
  loseReader();
  sigset_t broken;
  sigset_t before;
  ::sigemptyset(&broken);
  ::sigaddset(&broken, SIGPIPE);
  ::pthread_sigmask(SIG_BLOCK, &broken, &before);
  ::pthread_kill(::pthread_self(), SIGPIPE);
  EXPECT_FALSE(writeQuietly(ends[1], "abc", 3));
  EXPECT_TRUE(isWaiting(SIGPIPE));
  int taken = 0;
  ::sigwait(&broken, &taken);
  ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST_F(BrokenPipe, NoProgramInheritsAPipe) {
  for (const int end : ends) EXPECT_EQ(::fcntl(end, F_GETFD), FD_CLOEXEC);
}

} // namespace
} // namespace vantle
