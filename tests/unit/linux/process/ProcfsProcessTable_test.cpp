// SPDX-License-Identifier: MIT
#include "platform/linux/process/ProcfsProcessTable.h"

#include "engine/ProcessQueries.h"
#include "platform/posix/files/PosixFileStore.h"
#include "tests/support/ForkedProcess.h"
#include "tests/support/InChild.h"
#include "tests/support/Isolation.h"
#include "tests/support/Wait.h"

#include <algorithm>
#include <atomic>
#include <csignal>
#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace vantle {
namespace {

using test::ForkedProcess;

class ProcessTableTest : public testing::Test {
 protected:
  const ProcfsProcessTable table{BootEpoch(1'700'000'000'000'000)};

  std::optional<ProcessRecord> scanned(Pid pid) const {
    const std::vector<ProcessRecord> all = table.scan();
    const auto found =
        std::find_if(all.begin(), all.end(), [&](const auto& each) { return each.pid == pid; });
    return found == all.end() ? std::nullopt : std::optional(*found);
  }
};

TEST_F(ProcessTableTest, ReadsThisProcess) {
  const auto record = table.record(::getpid());
  ASSERT_TRUE(record);
  EXPECT_EQ(record->pid, ::getpid());
  EXPECT_EQ(record->parent, ::getppid());
  EXPECT_GE(record->startSec, 1'700'000'000U);
  EXPECT_LT(record->startUsec, 1'000'000U);
  const auto again = table.record(::getpid());
  ASSERT_TRUE(again);
  EXPECT_EQ(again->startSec, record->startSec);
  EXPECT_EQ(again->startUsec, record->startUsec);
}

TEST_F(ProcessTableTest, ListsEveryProcessOnceInAscendingOrder) {
  const ForkedProcess child;
  const std::vector<ProcessRecord> all = table.scan();
  EXPECT_TRUE(
      std::is_sorted(all.begin(), all.end(), [](const auto& a, const auto& b) { return a.pid <= b.pid; }));
  const auto record = scanned(child.pid());
  ASSERT_TRUE(record);
  EXPECT_EQ(record->parent, ::getpid());
  EXPECT_EQ(readIdentity(table, child.pid()),
            (ProcessIdentity{child.pid(), record->startSec, record->startUsec}));
}

TEST_F(ProcessTableTest, KnowsNothingOfAProcessThatIsGone) {
  Pid pid = 0;
  ProcessIdentity identity;
  {
    const ForkedProcess child;
    pid = child.pid();
    identity = readIdentity(table, pid).value();
    EXPECT_TRUE(isSameLiveProcess(table, identity));
  }
  EXPECT_FALSE(table.record(pid));
  EXPECT_FALSE(isSameLiveProcess(table, identity));
  EXPECT_FALSE(table.executablePathBytes(pid));
  EXPECT_FALSE(table.footprint(pid));
  EXPECT_FALSE(table.cpuTime(pid));
  EXPECT_FALSE(table.schedulerPriority(pid));
  EXPECT_FALSE(scanned(pid));
}

TEST_F(ProcessTableTest, KnowsNothingOfWhatIsNoPid) {
  for (const Pid pid : {0, -1, std::numeric_limits<Pid>::min(), std::numeric_limits<Pid>::max()}) {
    EXPECT_FALSE(table.record(pid)) << pid;
    EXPECT_FALSE(table.executablePathBytes(pid)) << pid;
    EXPECT_FALSE(table.footprint(pid)) << pid;
    EXPECT_FALSE(table.cpuTime(pid)) << pid;
    EXPECT_FALSE(table.schedulerPriority(pid)) << pid;
  }
}

TEST_F(ProcessTableTest, CountsAZombieAsGone) {
  const ForkedProcess child([] { ::_exit(0); });
  EXPECT_TRUE(desktop::waitUntil([&] { return !table.record(child.pid()); }));
  EXPECT_EQ(::kill(child.pid(), 0), 0) << "it must still be there to be waited for";
  EXPECT_FALSE(scanned(child.pid()));
}

TEST_F(ProcessTableTest, SeesAProcessWhoseMainThreadHasEnded) {
  const ForkedProcess child({}, [] {
    std::thread([] { ::pause(); }).detach();
    ::syscall(SYS_exit, 0); // this thread only
  });
  const std::string status = "/proc/" + std::to_string(child.pid()) + "/stat";
  PosixFileStore files("/", PosixFileStore::Sync::none);
  ASSERT_TRUE(desktop::waitUntil([&] {
    const auto line = files.read(status, 4096);
    return line && line->find(") Z ") != std::string::npos;
  }));
  EXPECT_TRUE(table.record(child.pid()));
}

TEST_F(ProcessTableTest, SeesSessionOwnerAndThreads) {
  const ForkedProcess child([] {
    ::setsid();
    std::thread([] { ::pause(); }).detach();
  });
  const auto record = scanned(child.pid());
  ASSERT_TRUE(record);
  EXPECT_EQ(record->session, child.pid());
  EXPECT_EQ(record->user, ::geteuid());
  EXPECT_EQ(record->threads, 2U);
  EXPECT_FALSE(record->isKernelThread);
  EXPECT_EQ(scanned(::getpid())->session, ::getsid(0));
}

TEST_F(ProcessTableTest, ItsBirthMarkTellsOfEveryoneBorn) {
  const auto before = table.birthMark();
  ASSERT_TRUE(before);
  const ForkedProcess child;
  EXPECT_NE(table.birthMark(), before);
}

TEST_F(ProcessTableTest, IsNotMisledByHostileNames) {
  // The longest that a name can be is 15 bytes.
  for (const char* name : {")", "a) R 1 2 (b", "\n", "\xff\xfe\x80", "\nRssAnon:\t9 kB", "\nVmSwap:\t9 kB\n",
                           "((((((((((((((("}) {
    const ForkedProcess child([name] { ::prctl(PR_SET_NAME, name); });
    const auto record = table.record(child.pid());
    ASSERT_TRUE(record) << name;
    EXPECT_EQ(record->parent, ::getpid()) << name;
    const auto inScan = scanned(child.pid());
    ASSERT_TRUE(inScan) << name;
    EXPECT_EQ(inScan->startUsec, record->startUsec) << name;
    EXPECT_GT(table.footprint(child.pid()).value_or(0), 16U * 1024) << name;
  }
}

TEST_F(ProcessTableTest, MeasuresOwnMemory) {
  constexpr std::size_t size = std::size_t{64} << 20U;
  const auto touch = [](int flags) {
    auto* memory =
        static_cast<char*>(::mmap(nullptr, size, PROT_READ | PROT_WRITE, flags | MAP_ANONYMOUS, -1, 0));
    for (std::size_t at = 0; at < size; at += 4096) memory[at] = 1;
  };
  const ForkedProcess idle;
  const ForkedProcess priv([&] { touch(MAP_PRIVATE); });
  const ForkedProcess shared([&] { touch(MAP_SHARED); });
  const std::uint64_t base = table.footprint(idle.pid()).value();
  EXPECT_NEAR(static_cast<double>(table.footprint(priv.pid()).value()), static_cast<double>(base + size),
              4e6);
  EXPECT_NEAR(static_cast<double>(table.footprint(shared.pid()).value()), static_cast<double>(base), 4e6);
}

TEST_F(ProcessTableTest, MeasuresCpuTimeOfAllThreads) {
  const ForkedProcess busy([] {
    std::thread([] {
      for (std::atomic<unsigned> count = 0;; ++count) {
      }
    }).detach();
  });
  EXPECT_TRUE(desktop::waitUntil([&] { return table.cpuTime(busy.pid()).value() >= 5; }));
  const ForkedProcess idle;
  EXPECT_LE(table.cpuTime(idle.pid()).value(), 2U);
}

TEST_F(ProcessTableTest, ReadsTheSchedulersPriority) {
  const ForkedProcess nice([] { ::setpriority(PRIO_PROCESS, 0, 7); });
  EXPECT_EQ(table.schedulerPriority(nice.pid()), 27);
}

TEST_F(ProcessTableTest, SurlyNeighboursCostOnlyTheirOwnAnswer) {
  const auto check = []() -> std::string {
    const ProcfsProcessTable own(BootEpoch(0));
    if (!own.record(1)) return "the first process is no secret";
    if (own.executablePathBytes(1)) return "the executable of somebody else's process was read";
    if (own.scan().empty()) return "nothing was listed";
    return own.executablePathBytes(::getpid()) ? "" : "the own executable was not read";
  };
  EXPECT_EQ(test::asOrdinaryUser(check), "");
}

TEST_F(ProcessTableTest, HoldsWhileProcessesComeAndGo) {
  const ForkedProcess storm({}, [] {
    for (;;) {
      const pid_t child = ::fork();
      if (child == 0) ::_exit(0);
      ::waitpid(child, nullptr, 0);
    }
  });
  for (int round = 0; round < 100; ++round) {
    const std::vector<ProcessRecord> all = table.scan();
    for (const Pid expected : {::getpid(), storm.pid()}) {
      ASSERT_TRUE(
          std::any_of(all.begin(), all.end(), [&](const auto& each) { return each.pid == expected; }));
    }
    const auto shortLived = std::max_element(
        all.begin(), all.end(), [](const auto& a, const auto& b) { return a.startSec < b.startSec; });
    table.record(shortLived->pid);
    table.footprint(shortLived->pid);
    table.executablePathBytes(shortLived->pid);
    processTree(table, storm.pid());
  }
}

TEST_F(ProcessTableTest, TellsTwoProcessesWithOnePidApart) {
  const std::string answer = test::inOwnPidNamespace([]() -> std::string {
    const ProcfsProcessTable own(BootEpoch(1'700'000'000'000'000));
    std::optional<ProcessIdentity> first;
    {
      const ForkedProcess child;
      first = readIdentity(own, child.pid());
    }
    if (!first || isSameLiveProcess(own, *first)) return "the first one is not gone";
    // A tick is the finest that the kernel tells apart.
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    if (!desktop::canChooseNextPid()) return test::notPossibleHere;
    desktop::chooseNextPid(first->pid);
    const ForkedProcess second;
    if (second.pid() != first->pid) return "the pid was not handed out again";
    if (!readIdentity(own, second.pid())) return "the second one cannot be read";
    return isSameLiveProcess(own, *first) ? "taken for the first one" : "";
  });
  if (answer == test::notPossibleHere) GTEST_SKIP() << "no pid namespaces here";
  EXPECT_EQ(answer, "");
}

} // namespace
} // namespace vantle
