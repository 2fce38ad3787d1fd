// SPDX-License-Identifier: MIT
#include "platform/linux/band/TaskGroups.h"

#include "platform/linux/kernel/ProcKernel.h"
#include "tests/support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <unistd.h>

namespace vantle {

namespace {

using Kind = TaskGroup::Kind;

// A machine with version 2 control groups, as files.
class TaskGroupsTest : public testing::Test {
 protected:
  TaskGroupsTest() {
    m_folder.write("sys/fs/cgroup/cgroup.controllers", "cpu memory pids\n");
    m_folder.write("proc/sys/kernel/sched_autogroup_enabled", "1\n");
    controllersBelow("memory pids");
    inNamespace("cgroup:[4026531835]");
    stand(::getpid(), "0::/user.slice\n");
  }
  void controllersBelow(const std::string& list) {
    m_folder.write("sys/fs/cgroup/cgroup.subtree_control", list + "\n");
  }
  void inNamespace(const std::string& name) {
    const auto link = m_folder.folder("proc/self/ns") / "cgroup";
    std::filesystem::remove(link);
    std::filesystem::create_symlink(name, link);
  }
  void stand(Pid pid, const std::string& file) {
    m_folder.write("proc/" + std::to_string(pid) + "/cgroup", file);
  }
  void weigh(const std::string& path) { m_folder.write("sys/fs/cgroup" + path + "/cpu.weight", "100\n"); }
  TaskGroup of(Pid pid, Pid session) const {
    const ProcKernel kernel(m_folder.path() / "proc", m_folder.path() / "sys");
    return TaskGroups(kernel, controlGroupMount(kernel)).of(pid, session);
  }

  desktop::TemporaryFolder m_folder;
};

TEST_F(TaskGroupsTest, WithTheControllerOffAtTheTopNoProcessIsAsked) {
  // Nothing tells where 7 stands, and it does not matter.
  EXPECT_EQ(of(7, 5), (TaskGroup{Kind::session, 5, {}}));
  EXPECT_EQ(of(7, 0).kind, Kind::unknown);
  m_folder.write("proc/sys/kernel/sched_autogroup_enabled", "0\n");
  EXPECT_EQ(of(7, 5), (TaskGroup{Kind::root, 0, {}}));
}

TEST_F(TaskGroupsTest, WithTheControllerOnEachIsAsked) {
  controllersBelow("cpuset cpu pids");
  weigh("/user.slice");
  stand(8, "0::/user.slice/inner/deeper\n");
  stand(9, "0::/\n");
  EXPECT_EQ(of(7, 5).kind, Kind::unknown);
  EXPECT_EQ(of(8, 5), (TaskGroup{Kind::control, 0, "/user.slice"}));
  EXPECT_EQ(of(9, 5), (TaskGroup{Kind::session, 5, {}}));
}

TEST_F(TaskGroupsTest, AControllerOfASimilarNameIsAnother) {
  controllersBelow("cpuset");
  weigh("/user.slice");
  stand(8, "0::/user.slice\n");
  EXPECT_EQ(of(8, 5).kind, Kind::session);
}

TEST_F(TaskGroupsTest, AContainersTopSaysNothing) {
  inNamespace("cgroup:[4026532999]");
  weigh("/user.slice");
  stand(8, "0::/user.slice\n");
  EXPECT_EQ(of(8, 5).kind, Kind::control);
  EXPECT_EQ(of(7, 5).kind, Kind::unknown);
}

TEST_F(TaskGroupsTest, NorDoesOneThatCannotBeRead) {
  std::filesystem::remove(m_folder.path() / "sys/fs/cgroup/cgroup.subtree_control");
  EXPECT_EQ(of(7, 5).kind, Kind::unknown);
}

TEST_F(TaskGroupsTest, TheVersion1ControllerIsLookedAtForEach) {
  stand(::getpid(), "2:cpu,cpuacct:/\n0::/\n");
  stand(8, "2:cpu,cpuacct:/apps\n0::/\n");
  stand(9, "2:cpu,cpuacct:/\n0::/\n");
  EXPECT_EQ(of(7, 5).kind, Kind::unknown);
  EXPECT_EQ(of(8, 5), (TaskGroup{Kind::control, 0, "cpu:/apps"}));
  EXPECT_EQ(of(9, 5).kind, Kind::session);
}

} // namespace

} // namespace vantle
