// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/band/LinuxBand.h"
#include "platform/linux/files/PosixFileStore.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/unit/linux/band/TestProcess.h"

#include <chrono>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <span>
#include <vector>

namespace vantle::test {

constexpr std::chrono::seconds guard{60};

inline bool machineHasAutogroups() {
  std::ifstream file("/proc/sys/kernel/sched_autogroup_enabled");
  return file.get() == '1';
}

struct Band {
  PollEventLoop loop;
  PosixFileStore files{"/nonexistent", PosixFileStore::Sync::none};
  LinuxBand band{loop, files, {}};

  // True when all of it entered.
  bool enter(Pid root, std::vector<Pid> tree, const std::set<Pid>& everyApp = {}) {
    const BandGroup group{root, tree, tree};
    const auto entered = band.enterBackgroundBand(std::span(&group, 1), everyApp);
    bool all = true;
    for (const bool one : entered.front()) all = all && one;
    return all && entered.size() == 1 && entered.front().size() == tree.size();
  }
  void settled() { EXPECT_TRUE(band.settle(guard)); }
};

// Each test runs as root where the tests do, and as an ordinary user.
class LinuxBandTest : public testing::Test {
 protected:
  void SetUp() override {
    if (!machineHasAutogroups()) GTEST_SKIP() << "sessions have no weight on this machine";
  }
  static void asBoth(const std::function<void()>& body) {
    if (runsAsRoot()) {
      SCOPED_TRACE("as root");
      body();
    }
    EXPECT_TRUE(asOrdinaryUser(body)) << "as an ordinary user";
  }
};

} // namespace vantle::test
