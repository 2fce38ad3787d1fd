// SPDX-License-Identifier: MIT
// Apps that start processes and threads at the very moment at which they go into the band and come back. A
// fork of much memory takes tens of milliseconds, and copies what it hands on at several moments of them.
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/linux/band/BandFixture.h"
#include "tests/unit/linux/band/ForkingApp.h"
#include "tests/unit/linux/band/ProgramOnBand.h"

#include <cstdlib>

namespace vantle {

namespace {

using namespace test;
using std::chrono::milliseconds;

// `VANTLE_BOOSTS=200` for the long run.
int boosts() {
  const char* const wanted = std::getenv("VANTLE_BOOSTS");
  return wanted != nullptr ? std::atoi(wanted) : 10;
}

class ForkingApps : public LinuxBandTest {
 protected:
  // As often as asked for, with times of any length between. Nothing that the apps have ever started may be
  // other than the apps were.
  static void comeBackFrom(const std::string& letters) {
    const TestProcess game;
    std::vector<std::unique_ptr<TestProcess>> apps;
    std::vector<Pid> pids;
    for (std::size_t at = 0; at < letters.size(); ++at) {
      apps.push_back(std::make_unique<TestProcess>(TestProcess::Session::own, forkingApp));
      pids.push_back(apps.back()->pid());
    }
    const std::string before = schedulingState(pids.front()) + ", session " + autogroupLine(pids.front());
    const desktop::TemporaryFolder folder;
    ProgramOnBand program(folder.path().string());
    for (const Pid pid : pids) program.add(pid, false);
    const SimulatedAppRef front = program.add(game.pid(), true);
    for (std::size_t at = 0; at < letters.size(); ++at) apps[at]->ask(letters[at]);
    program.loop.runUntil([] { return false; }, milliseconds(300)); // the memory is there

    std::size_t slowed = 0;
    // On a busy machine an app may have been refused, for what it starts comes faster than it is looked at.
    const auto isEnough = [&slowed](int boost) { return boost >= boosts() * (slowed == 0 ? 5 : 1); };
    for (int boost = 0; !isEnough(boost) && !HasFailure(); ++boost) {
      program.engine.startBoost(front);
      program.loop.runUntil([] { return false; }, milliseconds(60 + boost * 37 % 100));
      slowed += differencesIn(pids, before).size();
      program.engine.stopBoost();
      EXPECT_TRUE(program.band.settle(guard));
      EXPECT_EQ(differencesIn(pids, before), "") << "after Boost " << boost;
    }
    EXPECT_GT(slowed, 0U);
  }
};

TEST_F(ForkingApps, LeaveNoChildSlowThatWasOnItsWay) {
  asBoth([] { comeBackFrom("m"); });
}

TEST_F(ForkingApps, LeaveNoChildSlowOfOneThatNeverRests) {
  asBoth([] { comeBackFrom("c"); });
}

TEST_F(ForkingApps, LeaveNoChildSlowWhileManySessionsWait) {
  asBoth([] { comeBackFrom("qpqqp"); });
}

TEST_F(ForkingApps, LeaveNoChainSlowThatForksAndEnds) {
  asBoth([] { comeBackFrom("e"); });
}

TEST_F(ForkingApps, LeaveNoThreadSlowThatWasOnItsWay) {
  asBoth([] { comeBackFrom("T"); });
}

} // namespace

} // namespace vantle
