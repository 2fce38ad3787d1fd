// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/UserManager.h"
#include "platform/linux/kernel/ProcKernel.h"
#include "tests/desktop/harness/PrivateBus.h"
#include "tests/unit/linux/band/BandFixture.h"
#include "tests/unit/linux/band/ScriptedUserManager.h"

#include <algorithm>
#include <array>
#include <memory>
#include <string>

namespace vantle::test {

// The band of a desktop on which a user manager weighs apps, and an app in front.
class UserManagerBand : public testing::Test {
 protected:
  UserManagerBand() : m_manager(m_bus.address(), m_groups) {
    m_ledger = (m_groups.folder() / "data/Vantle/band.json").string();
    stand(m_front.pid(), "app-front-1.scope");
    start();
  }

  // A new run of the program. A generous limit, so that a busy machine does not look like a late manager.
  void start(std::chrono::milliseconds limit = guard) {
    m_band.reset();
    m_band = std::make_unique<LinuxBand>(
        m_loop, m_files,
        BandParts{.kernel = std::make_shared<ProcKernel>(m_groups.procRoot(), m_groups.sysRoot()),
                  .manager = std::make_unique<UserManager>(m_loop, m_bus.address()),
                  .ledger = m_ledger,
                  .busLimit = limit});
    const std::array<Pid, 1> front{m_front.pid()};
    m_band->prepareBoostApp(m_front.pid(), front, {m_front.pid()});
  }
  void stand(Pid pid, const std::string& unit, std::uint64_t weight = ScriptedUserManager::notSet) {
    m_manager.addUnit(unit, weight);
    m_groups.place(pid, FakeControlGroups::appSlice() + "/" + unit);
  }
  bool enter(Pid root, const std::vector<Pid>& tree, const std::set<Pid>& everyApp = {}) {
    const BandGroup group{root, tree, tree};
    const std::vector<bool> entered = m_band->enterBackgroundBand(std::span(&group, 1), everyApp).front();
    return std::all_of(entered.begin(), entered.end(), [](bool one) { return one; });
  }
  bool settled() { return m_band->settle(guard); }
  std::string idle(const std::string& unit) {
    return m_groups.idle(FakeControlGroups::appSlice() + "/" + unit);
  }
  std::string ledger() const {
    std::ifstream file(m_ledger);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  desktop::PrivateBus m_bus;
  FakeControlGroups m_groups;
  ScriptedUserManager m_manager;
  PollEventLoop m_loop;
  PosixFileStore m_files{"/nonexistent", PosixFileStore::Sync::none};
  std::string m_ledger;
  TestProcess m_front;
  std::unique_ptr<LinuxBand> m_band;
};

} // namespace vantle::test
