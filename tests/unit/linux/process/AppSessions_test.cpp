// SPDX-License-Identifier: MIT
#include "platform/linux/process/AppSessions.h"

#include <gtest/gtest.h>
#include <vector>

namespace vantle {
namespace {

ProcessStat process(Pid pid, Pid parent, Pid session, char state = 'S') {
  ProcessStat stat;
  stat.pid = pid;
  stat.parent = parent;
  stat.session = session;
  stat.state = state;
  stat.threads = 1;
  return stat;
}

constexpr Pid manager = 10; // the window manager, in a session of its own

TEST(AppSessions, AreTheirOwnWhenTheyHoldNobodyElse) {
  const std::vector<ProcessStat> processes{
      process(manager, 1, manager), process(20, manager, 20), process(21, 20, 20),
      process(22, 1, 20), // an orphan that the app left
  };
  EXPECT_FALSE(mostShareTheirSession(processes, {20}));
}

TEST(AppSessions, AreSharedWithTheWindowManagerThatStartedThem) {
  const std::vector<ProcessStat> processes{process(manager, 1, manager), process(20, manager, manager)};
  EXPECT_TRUE(mostShareTheirSession(processes, {20}));
}

TEST(AppSessions, AreSharedByAppsThatOneScriptStarted) {
  const std::vector<ProcessStat> processes{process(manager, 1, manager), process(20, 1, 20),
                                           process(21, 20, 20)};
  EXPECT_TRUE(mostShareTheirSession(processes, {20, 21}));
  EXPECT_FALSE(mostShareTheirSession(processes, {20})) << "one app and its child";
}

TEST(AppSessions, AreJudgedByTheMajorityAndTheWorseInATie) {
  std::vector<ProcessStat> processes{process(manager, 1, manager), process(20, manager, manager),
                                     process(30, manager, 30)};
  EXPECT_TRUE(mostShareTheirSession(processes, {20, 30}));
  processes.push_back(process(31, manager, 31));
  EXPECT_FALSE(mostShareTheirSession(processes, {20, 30, 31}));
}

TEST(AppSessions, TakeNoNoticeOfTheDeadAndTheUnseen) {
  const std::vector<ProcessStat> processes{process(manager, 1, 20, 'Z'), process(20, 1, 20),
                                           process(40, 1, manager, 'Z')};
  EXPECT_FALSE(mostShareTheirSession(processes, {20, 40, 50}));
  EXPECT_FALSE(mostShareTheirSession(processes, {}));
  EXPECT_FALSE(mostShareTheirSession({}, {20}));
}

TEST(AppSessions, EndInACircleOfParents) {
  const std::vector<ProcessStat> processes{process(20, 21, 20), process(21, 20, 20), process(30, 1, 20)};
  EXPECT_TRUE(mostShareTheirSession(processes, {30}));
}

} // namespace
} // namespace vantle
