// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/UserManager.h"
#include "tests/support/PrivateBus.h"
#include "tests/unit/linux/band/BandFixture.h"
#include "tests/unit/linux/band/ScriptedUserManager.h"

#include <memory>
#include <optional>
#include <string>

namespace vantle::test {

// The band of a desktop on which a user manager weighs apps, and an app in front.
class UserManagerBand : public testing::Test {
 protected:
  UserManagerBand() : m_manager(m_bus.address(), m_groups) {
    m_ledgers = {(m_groups.folder() / "data/Vantle/band.json").string()};
    stand(m_front.pid(), "app-front-1.scope");
    start();
  }

  // A new run of the program. A generous limit, so that a busy machine does not look like a late manager.
  void start(std::chrono::milliseconds limit = guard) {
    m_user.reset();
    m_band.reset();
    const auto kernel = std::make_shared<ProcKernel>(m_groups.procRoot(), m_groups.sysRoot());
    m_band = std::make_unique<LinuxBand>(
        m_loop, m_files,
        BandParts{.kernel = kernel,
                  .manager = std::make_unique<UserManager>(m_loop, m_bus.address()),
                  .ledgers = m_ledgers,
                  .busLimit = limit});
    m_user.emplace(*m_band, kernel);
  }
  void killed() { // nothing is put back
    m_user.reset();
    m_band.reset();
  }
  void stand(Pid pid, const std::string& unit, std::uint64_t weight = ScriptedUserManager::notSet) {
    m_manager.addUnit(unit, weight);
    m_groups.place(pid, FakeControlGroups::appSlice() + "/" + unit);
  }
  bool enter(Pid root, const std::vector<Pid>& tree, const std::set<Pid>& everyApp = {}) {
    return m_user->enter(root, tree, everyApp, m_front.pid());
  }
  bool settled() { return m_band->settle(guard); }
  std::string idle(const std::string& unit) {
    return m_groups.idle(FakeControlGroups::appSlice() + "/" + unit);
  }
  std::string idleAround(Pid pid) { return m_groups.idle(m_groups.pathOf(pid)); }
  static std::string textOf(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::string ledger() const { return textOf(m_ledgers.front()); }
  void makeRoomFor(Pid boostApp, const std::set<Pid>& apps) {
    std::optional<AppTrees> trees;
    m_band->makeRoomFor(boostApp, [&]() -> const ProcessView& { return trees.emplace(m_user->look(apps)); });
  }

  desktop::PrivateBus m_bus;
  FakeControlGroups m_groups;
  ScriptedUserManager m_manager;
  PollEventLoop m_loop;
  PosixFileStore m_files{"/nonexistent", PosixFileStore::Sync::none};
  std::vector<std::string> m_ledgers;
  TestProcess m_front;
  std::unique_ptr<LinuxBand> m_band;
  std::optional<BandUser> m_user;
};

} // namespace vantle::test
