// SPDX-License-Identifier: MIT
#include "platform/linux/process/AbruptEnd.h"

#include "tests/support/ForkedProcess.h"

#include <array>
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <ostream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vantle {
namespace {

// What a process and all that share the line write, until all of them have closed it.
class Line {
 public:
  Line() { EXPECT_EQ(::pipe(m_ends.data()), 0); }
  ~Line() { ::close(m_ends[0]); }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;

  void say(char letter) const { EXPECT_EQ(::write(m_ends[1], &letter, 1), 1); }
  std::string all() const {
    ::close(m_ends[1]);
    std::string text;
    for (char letter = 0; ::read(m_ends[0], &letter, 1) == 1;) text += letter;
    return text;
  }

 private:
  std::array<int, 2> m_ends{};
};

// The status that a process ends with, and what it has said.
struct Ending {
  int status = 0;
  std::string said;
  bool operator==(const Ending&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Ending& ending) {
  return out << ending.status << " after \"" << ending.said << '"';
}

Ending endingOf(const std::function<void(const Line&)>& life) {
  const Line line;
  test::ForkedProcess process({}, [&] { life(line); });
  const std::string said = line.all();
  const int status = process.waitForEnd();
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status), said};
}

TEST(AbruptEnd, ComesAfterTheLastDeedWithItsOwnStatus) {
  EXPECT_EQ(endingOf([](const Line& line) {
              const auto registration = beforeAbruptEnd([&] { line.say('d'); });
              ::_exit(7);
            }),
            (Ending{7, "d"}));
}

TEST(AbruptEnd, IsAnEndLikeAnyOtherOnceTheRegistrationIsGone) {
  EXPECT_EQ(endingOf([](const Line& line) {
              beforeAbruptEnd([&] { line.say('d'); }).reset();
              ::_exit(7);
            }),
            (Ending{7, ""}));
}

TEST(AbruptEnd, WithinTheDeedEndsAtOnce) {
  EXPECT_EQ(endingOf([](const Line& line) {
              const auto registration = beforeAbruptEnd([&] {
                line.say('d');
                ::_exit(8);
              });
              ::_exit(7);
            }),
            (Ending{8, "d"}));
}

int statusOf(pid_t child) {
  int status = 0;
  EXPECT_EQ(::waitpid(child, &status, 0), child);
  return WEXITSTATUS(status);
}

// One that is forked has a copy of the deed, one that shares the memory of its parent the very same.
TEST(AbruptEnd, OfAChildIsNoneOfTheParents) {
  EXPECT_EQ(endingOf([](const Line& line) {
              const auto registration = beforeAbruptEnd([&] { line.say('d'); });
              const pid_t forked = ::fork();
              if (forked == 0) ::_exit(3);
              EXPECT_EQ(statusOf(forked), 3);
              line.say('f');
              const pid_t sharing = ::vfork(); // NOLINT: that is what is tried
              if (sharing == 0) ::_exit(4);
              EXPECT_EQ(statusOf(sharing), 4);
              line.say('v');
              ::_exit(7);
            }),
            (Ending{7, "fvd"}));
}

// The thread that comes second may not end the program in the middle of the deed.
TEST(AbruptEnd, WaitsForTheDeedOfAnotherThread) {
  EXPECT_EQ(endingOf([](const Line& line) {
              std::atomic<bool> isSecondUp = false;
              const auto registration = beforeAbruptEnd([&] {
                line.say('d');
                std::thread([&] {
                  isSecondUp = true;
                  isSecondUp.notify_all();
                  ::_exit(8);
                }).detach();
                isSecondUp.wait(false);
                for (int i = 0; i < 1'000; ++i) std::this_thread::yield();
                line.say('e');
              });
              ::_exit(7);
            }),
            (Ending{7, "de"}));
}

} // namespace
} // namespace vantle
