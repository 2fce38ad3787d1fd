// SPDX-License-Identifier: MIT
// The kernel lets all ordinary users together change one session's weight in 100 ms. Others want to as well.
#include "tests/support/ForkedProcess.h"
#include "tests/support/Spammer.h"
#include "tests/support/User.h"
#include "tests/unit/linux/band/BandFixture.h"

#include <array>
#include <atomic>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <sys/mman.h>
#include <thread>
#include <unistd.h>

namespace vantle {

namespace {

using namespace test;
using namespace std::chrono_literals;

using Apps = std::array<TestProcess, 8>;

bool allShow(const Apps& apps, const char* line) {
  return std::all_of(apps.begin(), apps.end(),
                     [line](const TestProcess& app) { return autogroupLine(app.pid()) == line; });
}

void slow(Band& band, const Apps& apps) {
  for (const TestProcess& app : apps) EXPECT_TRUE(band.band.enterBackgroundBand(app.pid()));
  band.settled();
  EXPECT_TRUE(allShow(apps, "nice 19"));
}

void giveBack(Band& band, const Apps& apps) {
  for (const TestProcess& app : apps) EXPECT_TRUE(band.band.leaveBackgroundBand(app.pid()));
}

// As an ordinary user, who has no more turns than the spammer.
void expectAllBackBesideASpammer(const std::function<void(Band&, const Apps&)>& await) {
  EXPECT_TRUE(passesAsOrdinaryUser([&] {
    const Apps apps{};
    Band band;
    slow(band, apps);
    const Spammer spammer(ordinaryUser);
    giveBack(band, apps);
    await(band, apps);
  }));
}

TEST_F(LinuxBandTest, ASpammerDoesNotKeepAppsSlowedAtTheEnd) {
  expectAllBackBesideASpammer([](Band& band, const Apps& apps) {
    band.settled();
    EXPECT_EQ(band.band.owed(), 0U);
    EXPECT_TRUE(allShow(apps, "nice 0"));
  });
}

TEST_F(LinuxBandTest, ASpammerDoesNotKeepAppsSlowedWhileTheProgramLivesOn) {
  expectAllBackBesideASpammer([](Band& band, const Apps& apps) {
    EXPECT_TRUE(band.loop.runUntil([&] { return allShow(apps, "nice 0"); }, guard));
  });
}

// The same for two people at once. What they tell each other is shared memory.
TEST_F(LinuxBandTest, TwoPeopleBothGetTheirAppsBack) {
  if (!runsAsRoot()) GTEST_SKIP() << "there is no other user";
  struct Meeting {
    std::atomic<int> slowed;
    std::atomic<bool> isSpammed;
  };
  void* const shared =
      ::mmap(nullptr, sizeof(Meeting), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  ASSERT_NE(shared, MAP_FAILED);
  auto& meeting = *new (shared) Meeting{};
  const auto live = [&](uid_t user) {
    EXPECT_TRUE(becomeUser(user));
    const Apps apps{};
    Band band;
    slow(band, apps);
    ++meeting.slowed;
    while (!meeting.isSpammed) std::this_thread::sleep_for(1ms);
    giveBack(band, apps);
    band.settled();
    EXPECT_TRUE(allShow(apps, "nice 0"));
  };
  std::vector<std::unique_ptr<ForkedProcess>> people;
  for (const uid_t user : {ordinaryUser, ordinaryUser + 1}) {
    people.push_back(std::make_unique<ForkedProcess>([] {},
                                                     [&live, user] {
                                                       live(user);
                                                       std::fflush(nullptr);
                                                       ::_exit(testing::Test::HasFailure() ? 1 : 0);
                                                     }));
  }
  const auto end = std::chrono::steady_clock::now() + guard;
  while (meeting.slowed < 2 && std::chrono::steady_clock::now() < end) std::this_thread::sleep_for(1ms);
  Spammer third(ordinaryUser + 2);
  meeting.isSpammed = true;
  for (const auto& person : people) EXPECT_EQ(person->waitForEnd(), 0);
  third.end();
  ::munmap(shared, sizeof(Meeting));
}

// Whoever chooses an I/O class puts it over the mark, and the weight of the session is still owed.
TEST_F(LinuxBandTest, ASessionWhoseProcessesForgetComesBack) {
  asBoth([] {
    const std::array<TestProcess, 2> apps{};
    const auto forget = [](const TestProcess& app) {
      EXPECT_TRUE(ProcKernel().setIoPriority(app.pid(), 2 << 13) == Change::done);
    };
    Band band;
    for (const TestProcess& app : apps) EXPECT_TRUE(band.enter(app.pid(), {app.pid()}));
    band.settled();
    for (const TestProcess& app : apps) forget(app);
    EXPECT_TRUE(band.leave({apps[0].pid()}, {apps[0].pid(), apps[1].pid()}).empty());
    band.settled();
    EXPECT_EQ(autogroupLine(apps[0].pid()), "nice 0");
    EXPECT_EQ(autogroupLine(apps[1].pid()), "nice 19");
    band.band.reclaim(nullptr);
    band.settled();
    EXPECT_EQ(autogroupLine(apps[1].pid()), "nice 0");
  });
}

} // namespace

} // namespace vantle
