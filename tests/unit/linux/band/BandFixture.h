// SPDX-License-Identifier: MIT
#pragma once

#include "engine/AppTrees.h"
#include "platform/linux/band/LinuxBand.h"
#include "platform/linux/kernel/ProcKernel.h"
#include "platform/linux/process/ProcfsProcessTable.h"
#include "platform/posix/files/PosixFileStore.h"
#include "platform/shared/PollEventLoop.h"
#include "tests/unit/linux/band/TestProcess.h"

#include <algorithm>
#include <chrono>
#include <fstream>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <utility>
#include <vector>

namespace vantle::test {

constexpr std::chrono::seconds guard{60};

inline bool machineHasAutogroups() {
  std::ifstream file("/proc/sys/kernel/sched_autogroup_enabled");
  return file.get() == '1';
}

inline bool allEntered(const std::vector<BandAnswer>& answers) {
  return std::all_of(answers.begin(), answers.end(), [](const BandAnswer& one) { return one.entered(); });
}

inline std::vector<BandRefusal> refusalsAmong(const std::vector<BandAnswer>& answers) {
  std::vector<BandRefusal> refusals;
  for (const BandAnswer& answer : answers) {
    if (answer.refusal) refusals.push_back(*answer.refusal);
  }
  return refusals;
}

// Puts apps into a band and takes them out as the engine does, each time after one look at everybody.
class BandUser {
 public:
  BandUser(LinuxBand& band, const std::shared_ptr<ProcKernel>& kernel)
      : m_band(band), m_table(BootEpoch(0), kernel) {}

  // The tests are not named as the program itself: they would own what is orphaned below them.
  AppTrees look(const std::set<Pid>& apps) const {
    return {m_table, {.apps = apps, .self = 0, .members = {}}};
  }

  std::vector<BandAnswer> answersFor(Pid root, const std::vector<Pid>& candidates,
                                     std::set<Pid> everyApp = {}, Pid boostApp = 0,
                                     const std::set<Pid>& slowed = {}) {
    const AppTrees trees = look(known(std::move(everyApp), {root}, boostApp, slowed));
    const BandApp app{root, candidates};
    return m_band.enter({trees, boostApp, {&app, 1}, slowed}).at(0);
  }
  // True when all of it entered.
  bool enter(Pid root, const std::vector<Pid>& candidates, std::set<Pid> everyApp = {}, Pid boostApp = 0,
             const std::set<Pid>& slowed = {}) {
    const auto answers = answersFor(root, candidates, std::move(everyApp), boostApp, slowed);
    return answers.size() == candidates.size() && allEntered(answers);
  }
  // Several apps, each with all that belongs to it.
  std::vector<std::vector<BandAnswer>> enterTogether(const std::vector<Pid>& roots,
                                                     std::set<Pid> everyApp = {}, Pid boostApp = 0,
                                                     const std::set<Pid>& slowed = {}) {
    const AppTrees trees = look(known(std::move(everyApp), roots, boostApp, slowed));
    std::vector<BandApp> apps;
    for (const Pid root : roots) apps.push_back({root, trees.processesOf(root)});
    return m_band.enter({trees, boostApp, apps, slowed});
  }
  bool allEnterTogether(const std::vector<Pid>& roots, const std::set<Pid>& everyApp = {}, Pid boostApp = 0) {
    const auto answers = enterTogether(roots, everyApp, boostApp);
    return answers.size() == roots.size() && std::all_of(answers.begin(), answers.end(), [](const auto& one) {
             return !one.empty() && allEntered(one);
           });
  }

  // Returns who lost its place with them. Whoever was just at work keeps a mark for a moment, which is waited
  // for.
  std::vector<Pid> leave(const std::vector<Pid>& pids, const std::set<Pid>& apps) {
    const AppTrees trees = look(apps);
    const auto leaving = m_band.leaving(trees);
    for (const Pid pid : pids) EXPECT_TRUE(leaving->leave(pid)) << pid;
    std::vector<Pid> raised = leaving->finish();
    m_band.settle(std::chrono::seconds(1)); // a manager may be silent for ever
    return raised;
  }

 private:
  static std::set<Pid> known(std::set<Pid> apps, const std::vector<Pid>& roots, Pid boostApp,
                             const std::set<Pid>& slowed) {
    apps.insert(roots.begin(), roots.end());
    apps.insert(slowed.begin(), slowed.end());
    if (boostApp != 0) apps.insert(boostApp);
    return apps;
  }

  LinuxBand& m_band;
  ProcfsProcessTable m_table;
};

namespace detail {
struct BandBase {
  PollEventLoop loop;
  PosixFileStore files{"/nonexistent", PosixFileStore::Sync::none};
  std::shared_ptr<ProcKernel> kernel = std::make_shared<ProcKernel>();
  LinuxBand band{loop, files, {.kernel = kernel}};
};
} // namespace detail

struct Band : detail::BandBase, BandUser {
  Band() : BandUser(band, kernel) {}
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
    EXPECT_TRUE(passesAsOrdinaryUser(body)) << "as an ordinary user";
  }
};

} // namespace vantle::test
