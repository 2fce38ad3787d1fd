// SPDX-License-Identifier: MIT
// Real threads that were narrowed to a set of processors which is no longer the one of now.
#include "tests/support/TemporaryFolder.h"
#include "tests/unit/linux/band/BandFixture.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>

namespace vantle {

namespace {

using namespace test;

// A machine whose processors are switched on and off, as far as its files tell.
class Processors {
 public:
  Processors() {
    std::filesystem::create_directories(m_folder.path() / "devices/system/cpu");
    std::filesystem::permissions(m_folder.path(), std::filesystem::perms(01777)); // as a temporary folder has
  }
  void areOnline(const std::string& list) const {
    std::ofstream(m_folder.path() / "devices/system/cpu/online") << list << '\n';
  }
  void groupAllows(Pid pid, const std::string& list, bool isOldTree) const {
    std::string group;
    std::getline(std::ifstream("/proc/" + std::to_string(pid) + "/cpuset"), group);
    const std::filesystem::path place = m_folder.path() / (isOldTree ? "fs/cgroup/cpuset" : "fs/cgroup") /
                                        std::filesystem::path(group).relative_path();
    std::filesystem::create_directories(place);
    std::ofstream(place / (isOldTree ? "cpuset.effective_cpus" : "cpuset.cpus.effective")) << list;
  }
  std::string folder() const { return m_folder.path().string(); }

 private:
  desktop::TemporaryFolder m_folder;
};

struct BandThere : private detail::BandBase {
  explicit BandThere(const Processors& processors)
      : there(std::make_shared<ProcKernel>("/proc", processors.folder())),
        band(loop, files, {.kernel = there, .ledgers = {processors.folder() + "/band.json"}}) {}

  std::shared_ptr<ProcKernel> there;
  LinuxBand band;
};

// All that there are: a set of these is applied, whatever the files tell later.
std::string realOnes() {
  const std::string text = ProcKernel().read("/sys/devices/system/cpu/online").value_or("");
  return text.substr(0, text.find('\n'));
}

class NarrowedThreads : public LinuxBandTest {
 protected:
  void SetUp() override {
    LinuxBandTest::SetUp();
    const auto all = ProcessorSet::parse(realOnes());
    if (!all || all->count() < 2) GTEST_SKIP() << "there is one processor only";
    if (ProcKernel().affinity(::getpid()) != all) GTEST_SKIP() << "the tests may not run everywhere";
  }
};

TEST_F(NarrowedThreads, LeaveWhenProcessorsHaveComeOrGone) {
  asBoth([] {
    for (const bool isAnotherProgram : {false, true}) {
      const Processors processors;
      processors.areOnline(realOnes());
      const TestProcess app;
      const Pid thread = app.ask('t');
      const std::string before = schedulingState(app.pid());
      const auto first = std::make_unique<BandThere>(processors);
      EXPECT_TRUE(first->band.enterBackgroundBand(app.pid()));
      const Pid later = app.ask('t'); // inherits it
      for (const Pid tid : {app.pid(), thread, later}) {
        EXPECT_LT(ProcKernel().affinity(tid)->count(), ProcessorSet::parse(realOnes())->count());
      }
      processors.areOnline("0-8000"); // the last quarter of them is elsewhere
      const TestProcess other;
      EXPECT_TRUE(first->band.enterBackgroundBand(other.pid()));
      const auto second = isAnotherProgram ? std::make_unique<BandThere>(processors) : nullptr;
      LinuxBand& band = second ? second->band : first->band;
      EXPECT_TRUE(band.leaveBackgroundBand(app.pid()));
      EXPECT_TRUE(band.leaveBackgroundBand(other.pid()));
      EXPECT_TRUE(band.settle(guard));
      for (const Pid tid : {app.pid(), thread, later}) EXPECT_EQ(schedulingState(tid), before);
    }
  });
}

TEST_F(NarrowedThreads, AreSomebodyElsesWhenTheyRunElsewhere) {
  asBoth([] {
    const Processors processors;
    processors.areOnline(realOnes());
    const TestProcess app;
    BandThere there(processors);
    EXPECT_TRUE(there.band.enterBackgroundBand(app.pid()));
    ProcessorSet first;
    first.add(0);
    EXPECT_TRUE(ProcKernel().setAffinity(app.pid(), first) == Change::done);
    processors.areOnline("0-8000");
    EXPECT_TRUE(there.band.leaveBackgroundBand(app.pid()));
    EXPECT_TRUE(there.band.settle(guard));
    EXPECT_EQ(ProcKernel().affinity(app.pid()), first);
  });
}

// A control group that is shrunk during a Boost leaves nothing, or a part, of the set that threads were
// narrowed to. The kernel shows what is left of it, which a set chosen by hand stands for here.
TEST_F(NarrowedThreads, LeaveBehindAControlGroupThatWasShrunkMeanwhile) {
  asBoth([] {
    for (const bool isOldTree : {false, true}) {
      const Processors processors;
      processors.areOnline(realOnes());
      const TestProcess app;
      const TestProcess chosen;
      const std::string before = schedulingState(app.pid());
      BandThere there(processors);
      EXPECT_TRUE(there.band.enterBackgroundBand(app.pid()));
      EXPECT_TRUE(there.band.enterBackgroundBand(chosen.pid()));
      ProcessorSet first;
      first.add(0);
      EXPECT_TRUE(ProcKernel().setAffinity(app.pid(), first) == Change::done);
      processors.groupAllows(app.pid(), "0\n", isOldTree);
      EXPECT_TRUE(there.band.leaveBackgroundBand(app.pid()));
      EXPECT_TRUE(there.band.settle(guard));
      EXPECT_EQ(schedulingState(app.pid()), before);

      // A group that allows everything hides nothing: this one is somebody's choice.
      EXPECT_TRUE(ProcKernel().setAffinity(chosen.pid(), first) == Change::done);
      processors.groupAllows(chosen.pid(), realOnes() + "\n", isOldTree);
      EXPECT_TRUE(there.band.leaveBackgroundBand(chosen.pid()));
      EXPECT_TRUE(there.band.settle(guard));
      EXPECT_EQ(ProcKernel().affinity(chosen.pid()), first);
    }
  });
}

} // namespace

} // namespace vantle
