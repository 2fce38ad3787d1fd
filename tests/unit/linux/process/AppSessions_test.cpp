// SPDX-License-Identifier: MIT
#include "platform/linux/process/AppSessions.h"

#include "engine/AppTrees.h"

#include <gtest/gtest.h>
#include <utility>
#include <vector>

namespace vantle {
namespace {

constexpr Pid manager = 10; // the window manager, in a session of its own, which has been there for a while

ProcessRecord process(Pid pid, Pid parent, Pid session) {
  ProcessRecord record;
  record.pid = pid;
  record.parent = parent;
  record.session = session;
  record.startSec = pid == manager ? 0 : 60;
  return record;
}

class Listed final : public ProcessTable {
 public:
  explicit Listed(std::vector<ProcessRecord> records) : m_records(std::move(records)) {}
  std::vector<ProcessRecord> scan() const override { return m_records; }
  std::optional<ProcessRecord> record(Pid /*pid*/) const override { return {}; }
  std::optional<std::string> executablePathBytes(Pid /*pid*/) const override { return {}; }
  std::optional<std::uint64_t> footprint(Pid /*pid*/) const override { return {}; }
  std::optional<std::uint64_t> cpuTime(Pid /*pid*/) const override { return {}; }
  std::optional<int> schedulerPriority(Pid /*pid*/) const override { return {}; }

 private:
  std::vector<ProcessRecord> m_records;
};

bool share(std::vector<ProcessRecord> processes, const std::set<Pid>& apps) {
  AppTrees::Known known;
  known.apps = apps;
  return mostShareTheirSession(AppTrees(Listed(std::move(processes)), known), apps);
}

TEST(AppSessions, AreTheirOwnWhenTheyHoldNobodyElse) {
  const std::vector<ProcessRecord> processes{
      process(manager, 1, manager), process(20, manager, 20), process(21, 20, 20),
      process(22, 1, 20), // an orphan that the app left
  };
  EXPECT_FALSE(share(processes, {20}));
}

TEST(AppSessions, AreSharedWithTheWindowManagerThatStartedThem) {
  EXPECT_TRUE(share({process(manager, 1, manager), process(20, manager, manager)}, {20}));
}

TEST(AppSessions, ServeAppsThatOneOfThemHasStarted) {
  const std::vector<ProcessRecord> processes{process(manager, 1, manager), process(20, 1, 20),
                                             process(21, 20, 20)};
  EXPECT_FALSE(share(processes, {20, 21})) << "they are slowed together";
  EXPECT_FALSE(share(processes, {20})) << "one app and its child";
}

TEST(AppSessions, AreSharedWithTheScriptThatStaysAboveThem) {
  EXPECT_TRUE(share({process(15, 1, 15), process(20, 15, 15), process(21, 15, 15)}, {20, 21}));
}

TEST(AppSessions, AreJudgedByTheMajorityAndTheWorseInATie) {
  std::vector<ProcessRecord> processes{process(manager, 1, manager), process(20, manager, manager),
                                       process(30, manager, 30)};
  EXPECT_TRUE(share(processes, {20, 30}));
  processes.push_back(process(31, manager, 31));
  EXPECT_FALSE(share(processes, {20, 30, 31}));
}

TEST(AppSessions, TakeNoNoticeOfTheUnseen) {
  EXPECT_FALSE(share({process(20, 1, 20)}, {20, 40, 50}));
  EXPECT_FALSE(share({process(20, 1, 20)}, {}));
  EXPECT_FALSE(share({}, {20}));
}

TEST(AppSessions, EndInACircleOfParents) {
  EXPECT_TRUE(share({process(20, 21, 20), process(21, 20, 20), process(30, 1, 20)}, {30}));
}

} // namespace
} // namespace vantle
