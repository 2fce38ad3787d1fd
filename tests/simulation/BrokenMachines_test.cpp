// SPDX-License-Identifier: MIT
// The checks of the random runs must be able to fail: each machine here breaks one rule on purpose, and some
// of the first runs on it must be found broken, in the words that fit.
#include "tests/simulation/RandomRun.h"

#include <gtest/gtest.h>
#include <memory>
#include <set>
#include <string>

namespace vantle {
namespace {

constexpr std::uint64_t runsToFindIt = 2000;

// The first broken rule of the first runs that find one.
std::string foundOn(const std::function<Machine(SimulatedMachine&)>& tamper) {
  for (std::uint64_t seed = 0; seed < runsToFindIt; ++seed) {
    const RunResult result = RandomRun(seed, {.log = nullptr, .tamper = tamper}).run();
    if (result.violation) return result.violation->substr(0, result.violation->find(" (pid"));
  }
  return "nothing";
}

// The machine's own ports with one of them replaced.
template <class Replace> Machine with(SimulatedMachine& machine, Replace replace) {
  Machine ports = machine.ports();
  return {replace(ports.host),      replace(ports.processes),     replace(ports.band),
          replace(ports.workspace), replace(ports.audio),         replace(ports.power),
          replace(ports.pressure),  replace(ports.notifications), replace(ports.defaults),
          replace(ports.files),     replace(ports.clock),         replace(ports.launcher),
          replace(ports.text),      replace(ports.loginItem),     replace(ports.catalog),
          replace(ports.hooks),     replace(ports.games)};
}

template <class Port> struct Instead {
  Port& port;
  Port& operator()(Port& /*replaced*/) const { return port; }
  template <class Other> Other& operator()(Other& other) const { return other; }
};

class BandAround : public BackgroundBand {
 public:
  explicit BandAround(SimulatedMachine& machine) : m_machine(machine) {}
  bool enterBackgroundBand(Pid pid) override { return m_machine.band.enterBackgroundBand(pid); }
  bool leaveBackgroundBand(Pid pid) override { return m_machine.band.leaveBackgroundBand(pid); }
  std::optional<bool> isInBackgroundBand(Pid pid) const override {
    return m_machine.band.isInBackgroundBand(pid);
  }
  bool carriesOwnMark(Pid pid) const override { return m_machine.band.carriesOwnMark(pid); }
  void reclaim(const ProcessView* recent) override { m_machine.band.reclaim(recent); }
  void onLateBirths(const std::function<void()>& call) override { m_machine.band.onLateBirths(call); }

 protected:
  SimulatedMachine& m_machine;
};

class TableAround : public ProcessTable {
 public:
  explicit TableAround(SimulatedMachine& machine) : m_table(machine.processes) {}
  std::optional<ProcessRecord> record(Pid pid) const override { return m_table.record(pid); }
  std::vector<ProcessRecord> scan() const override { return m_table.scan(); }
  std::optional<std::string> executablePathBytes(Pid pid) const override {
    return m_table.executablePathBytes(pid);
  }
  std::optional<std::uint64_t> footprint(Pid pid) const override { return m_table.footprint(pid); }
  std::optional<std::uint64_t> cpuTime(Pid pid) const override { return m_table.cpuTime(pid); }
  std::optional<int> schedulerPriority(Pid pid) const override { return m_table.schedulerPriority(pid); }

 protected:
  SimulatedProcesses& m_table;
};

class FilesAround : public FileStore {
 public:
  explicit FilesAround(SimulatedMachine& machine) : m_files(machine.files) {}
  std::string applicationSupport() const override { return m_files.applicationSupport(); }
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override {
    return m_files.read(path, limit);
  }
  bool writeAtomically(const std::string& path, const std::string& bytes) override {
    return m_files.writeAtomically(path, bytes);
  }
  bool exists(const std::string& path) const override { return m_files.exists(path); }
  bool rename(const std::string& path, const std::string& newPath) override {
    return m_files.rename(path, newPath);
  }
  void createFolders(const std::string& path) override { m_files.createFolders(path); }
  void removeFolder(const std::string& path) override { m_files.removeFolder(path); }

 protected:
  SimulatedFiles& m_files;
};

// Runs the engine with one port of the kind `Broken`.
template <class Port, class Broken> std::string foundWith() {
  std::unique_ptr<Broken> broken;
  return foundOn([&broken](SimulatedMachine& machine) {
    broken = std::make_unique<Broken>(machine);
    return with(machine, Instead<Port>{*broken});
  });
}

TEST(BrokenMachines, AnHonestOneIsNotFoundBroken) {
  EXPECT_EQ((foundWith<BackgroundBand, BandAround>()), "nothing");
}

TEST(BrokenMachines, AnAppThatStaysAsItWasBornIsFound) {
  class ForgetfulBand final : public BandAround {
   public:
    using BandAround::BandAround;
    bool carriesOwnMark(Pid /*pid*/) const override { return false; }
  };
  EXPECT_EQ((foundWith<BackgroundBand, ForgetfulBand>()), "slow although it is in front");
}

TEST(BrokenMachines, AJournalThatIsWrittenTooLateIsFound) {
  class LateFiles final : public FilesAround {
   public:
    using FilesAround::FilesAround;
    bool writeAtomically(const std::string& path, const std::string& bytes) override {
      const bool written = m_files.writeAtomically(path, m_pending);
      m_pending = bytes;
      return written;
    }

   private:
    std::string m_pending = "[]";
  };
  EXPECT_EQ((foundWith<FileStore, LateFiles>()), "slowed before the journal names it");
}

TEST(BrokenMachines, AJournalThatIsForgottenAtTheStartIsFound) {
  class ForgetfulFiles final : public FilesAround {
   public:
    using FilesAround::FilesAround;
    std::optional<std::string> read(const std::string& /*path*/, std::size_t /*limit*/) const override {
      return std::nullopt;
    }
  };
  EXPECT_EQ((foundWith<FileStore, ForgetfulFiles>()), "still slowed after a start");
}

TEST(BrokenMachines, ABandThatDoesNotLetGoIsFound) {
  class StickyBand final : public BandAround {
   public:
    using BandAround::BandAround;
    bool leaveBackgroundBand(Pid /*pid*/) override { return true; }
    void reclaim(const ProcessView* /*recent*/) override {}
  };
  const std::string found = foundWith<BackgroundBand, StickyBand>();
  EXPECT_TRUE(found == "still slowed after the end of a Boost" || found == "still slowed after a start" ||
              found == "slow and in no journal")
      << found;
}

TEST(BrokenMachines, ABandThatTakesTheParentAlongIsFound) {
  class GreedyBand final : public BandAround {
   public:
    using BandAround::BandAround;
    bool enterBackgroundBand(Pid pid) override {
      const SimulatedProcess* process = m_machine.processes.find(pid);
      if (process != nullptr && process->parent > 1) m_machine.band.enterBackgroundBand(process->parent);
      return m_machine.band.enterBackgroundBand(pid);
    }
  };
  const std::string found = foundWith<BackgroundBand, GreedyBand>();
  EXPECT_TRUE(found == "slowed before the journal names it" || found == "slowed although it is protected")
      << found;
}

TEST(BrokenMachines, ARefusalThatSlowsAllTheSameIsFound) {
  class LyingBand final : public BandAround {
   public:
    using BandAround::BandAround;
    bool enterBackgroundBand(Pid pid) override {
      m_machine.band.enterBackgroundBand(pid);
      return false;
    }
  };
  // What was refused is put back, or found by its mark: whichever comes first.
  const std::string found = foundWith<BackgroundBand, LyingBand>();
  EXPECT_TRUE(found == "slow and in no journal" || found == "not slowed although nothing protects it")
      << found;
}

TEST(BrokenMachines, IdentitiesThatLeaveOutTheStartTimeAreFound) {
  // Every process seems to have started at the same moment, so a reused pid looks like the process before.
  class TimelessTable final : public TableAround {
   public:
    using TableAround::TableAround;
    std::optional<ProcessRecord> record(Pid pid) const override {
      std::optional<ProcessRecord> record = m_table.record(pid);
      if (record) record->startSec = record->startUsec = 0;
      return record;
    }
  };
  // The journal then names processes that never were.
  EXPECT_EQ((foundWith<ProcessTable, TimelessTable>()), "slowed before the journal names it");
}

TEST(BrokenMachines, AReusedPidThatIsTakenForTheProcessBeforeIsFound) {
  // The start time that was read first is given for ever.
  class StaleTable final : public TableAround {
   public:
    using TableAround::TableAround;
    std::optional<ProcessRecord> record(Pid pid) const override {
      const std::optional<ProcessRecord> record = m_table.record(pid);
      if (!record) return record;
      ProcessRecord stale = m_first.emplace(pid, *record).first->second;
      stale.parent = record->parent;
      return stale;
    }

   private:
    mutable std::map<Pid, ProcessRecord> m_first;
  };
  const std::string found = foundWith<ProcessTable, StaleTable>();
  EXPECT_TRUE(found == "a foreign process was touched" || found == "slowed before the journal names it")
      << found;
}

TEST(BrokenMachines, ADeafProbeIsFound) {
  class DeafAudio final : public AudioActivity {
   public:
    explicit DeafAudio(SimulatedMachine& /*machine*/) {}
    bool isAvailable() const override { return true; }
    std::set<Pid> runningOutput() override { return {}; }
  };
  EXPECT_EQ((foundWith<AudioActivity, DeafAudio>()), "slowed although it is protected");
}

TEST(BrokenMachines, NamesInAnotherOrderAreFound) {
  class BackwardText final : public UnicodeText {
   public:
    explicit BackwardText(SimulatedMachine& machine) : m_text(machine.text) {}
    std::string lowercased(std::string_view text) const override { return m_text.lowercased(text); }
    std::u32string canonicalScalars(std::string_view text) const override {
      std::u32string scalars = m_text.canonicalScalars(text);
      for (char32_t& scalar : scalars) scalar = 0x10FFFF - scalar;
      return scalars;
    }

   private:
    const UnicodeText& m_text;
  };
  EXPECT_EQ((foundWith<UnicodeText, BackwardText>()),
            "the published names are not those of the managed apps");
}

} // namespace
} // namespace vantle
