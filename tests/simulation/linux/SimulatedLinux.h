// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/kernel/Kernel.h"
#include "platform/simulated/SimulatedMachine.h"
#include "tests/simulation/linux/SimulatedUnits.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace vantle {

// What can be set about one thread and is inherited by what it starts.
struct ThreadState {
  int ioPriority = 0; // all 16 bits
  int policy = 0;     // SCHED_OTHER
  bool resetsOnFork = false;
  std::uint64_t processors = ~std::uint64_t{0}; // those that are off included

  friend bool operator==(const ThreadState&, const ThreadState&) = default;
};

// A value as it is, and as it would be if this program had never run: what it changes is changed in the first
// only, what others change in both, and children inherit both.
template <class Value> struct Both {
  Value now{};
  Value own{};
};

struct LinuxThread {
  Pid tid = 0;
  Both<ThreadState> state;
};

struct LinuxProcess {
  unsigned user = 0;
  Pid session = 0;
  long autogroup = 0; // 0: none
  std::string name;   // at most 15 bytes count
  int niceLimit = 0;  // RLIMIT_NICE; 20 lets an ordinary thread leave the idle class
  bool isKernelThread = false;
  std::vector<LinuxThread> threads; // the main thread first
};

// Where a desktop starts its apps, each from process 1.
enum class LinuxPlacement {
  oneSession,  // all in the session of the login, as from one script
  ownSessions, // each in a session of its own
  ownUnits     // that, and a unit of the user manager each: app-NAME-PID.scope
};

struct LinuxOptions {
  unsigned user = 1000; // the person's, whom this program runs as; 0: everything is root's
  LinuxPlacement placement = LinuxPlacement::ownSessions;
  unsigned processors = 4; // 64 at most
  bool hasAutogroups = true;
  bool hasControlGroups = true;
  bool delegatesCpu = true;  // the cpu controller is on down to the user manager
  bool keepsMarks = true;    // the kernel keeps all bits of an I/O priority
  bool tellsOfBirths = true; // it says which pid it gave out last
  std::string bootId = "boot-1";
};

// A Linux kernel in memory, on the table of processes of a simulated machine. Like that machine it does
// nothing by itself; what a person, an app or another program does is done to it directly, and what this
// program asks goes through the Kernel and is seen by the machine's `calls`, which refuses, records and
// crashes on demand: every call that would change something is a step.
class SimulatedLinux final : public Kernel {
 public:
  static constexpr std::chrono::milliseconds sessionStep{100}; // between two writes of an ordinary user

  explicit SimulatedLinux(SimulatedMachine& machine, LinuxOptions linuxOptions = {});
  ~SimulatedLinux() override;
  SimulatedLinux(const SimulatedLinux&) = delete;
  SimulatedLinux& operator=(const SimulatedLinux&) = delete;

  LinuxOptions options; // autogroups, processors and the last four may change while the machine runs
  SimulatedUnits units;
  std::map<std::string, std::string> files; // further files of the kernel's, by path
  // Called before each call of this program takes effect: what happens here happens between two of its calls.
  std::function<void()> beforeCall;
  std::size_t callCount() const { return m_calls; }
  // Called when what this program changed or ordered has made a process slow, or fast again; not for what is
  // born slow, or for others' doing.
  std::function<void(Pid pid, bool isSlow)> onTransition;
  // Called when this program has marked a process or taken its mark away; leaving is as good as unmarked.
  std::function<void(Pid pid, bool isMarked)> onMark;
  // Called when a process stands in another app's place than before, with that.
  std::function<void(Pid pid, const std::string& before)> onPlace;
  // Makes a change that may slow these processes or end that.
  template <class Effect> void bringAbout(const std::vector<Pid>& pids, Effect effect);

  // The machine's side.
  LinuxProcess& process(Pid pid);          // of a process that runs
  const LinuxProcess* find(Pid pid) const; // null when it does not, or is a zombie
  Pid startThread(Pid pid);                // inherits from the main thread
  void endThread(Pid tid);                 // not a main thread
  // A fork takes its time: what is born next of this process, a child or a thread, has the class and the
  // processors of this moment, and the I/O priority of the moment at which it is born.
  void beginFork(Pid pid);
  std::vector<Pid> forking() const;
  void startSession(Pid pid);
  void joinSession(Pid pid, Pid ofOther); // as a child of it would have
  void place(Pid pid, const std::string& path) { units.move(pid, path); }
  std::string loginScope() const; // session-1.scope, beside the user manager
  // False for numbers that are still the name of a session.
  bool mayReuse(Pid pid) const;
  // Others' doing: theirs from then on.
  void byOthers(Pid tid, const std::function<void(ThreadState&)>& change);
  void weighSessionByOthers(Pid pid, int nice);
  void takeSessionTurn(); // another ordinary user writes a session's weight
  // Another ordinary user does so without a pause: whether they are first when a turn comes while this
  // program asks without a pause as well. When it does not, they always are.
  std::function<bool()> rivalIsFirst;

  // What is true, whatever the band believes.
  bool isSlow(Pid pid) const;      // any lever of this program that acts on the processor is in force
  bool isHeldBack(Pid pid) const;  // by a lever that weighs it, not only by where it may run
  bool carriesMark(Pid pid) const; // in any thread
  bool isMarkedIn(Pid pid) const;  // and is not on its way out
  bool isWeighed(Pid pid) const { return options.hasControlGroups && units.isWeighed(*units.pathOf(pid)); }
  int sessionNice(Pid pid) const { return m_sessionNice.at(find(pid)->autogroup).now; }
  std::string effectOf(Pid pid) const; // "class, session, unit app-a-1.scope, processors, mark"; empty: none
  // Every process, session and unit that is not as it would be without this program, and how.
  std::vector<std::string> differences() const;

  // Kernel.
  Pid self() const override { return m_machine.host.self; }
  unsigned user() const override { return options.user; }
  std::optional<ProcessStat> stat(Pid pid) const override;
  std::vector<ProcessStat> scan() const override;
  std::vector<Pid> threads(Pid pid) const override;
  std::optional<std::string> controlGroups(Pid pid) const override;
  bool isOwn(Pid pid) const override;
  std::optional<Pid> birthMark() const override;
  std::optional<Autogroup> autogroup(Pid pid) const override;
  std::optional<Autogroup> writableAutogroup(Pid pid) const override;
  SessionChange setAutogroupNice(Pid pid, const Autogroup& expected, int nice,
                                 std::chrono::milliseconds insisting = {}) override;
  Answer<int> ioPriority(Pid tid) const override;
  Change setIoPriority(Pid tid, int priority) override;
  Answer<Scheduling> scheduling(Pid tid) const override;
  Change setScheduling(Pid tid, Scheduling scheduling) override;
  bool mayLeaveIdleClass(Pid tid) const override;
  bool hasNiceCapability() const override;
  std::optional<ThreadActivity> activity(Pid tid) const override;
  std::optional<ProcessorSet> affinity(Pid tid) const override;
  Change setAffinity(Pid tid, const ProcessorSet& processors) override;
  std::optional<std::string> read(const std::string& path) const override;
  bool exists(const std::string& path) const override;
  std::optional<std::string> link(const std::string& path) const override;
  std::optional<std::vector<std::string>> folders(const std::string& path) const override;
  std::chrono::steady_clock::time_point now() const override;
  void sleep(std::chrono::steady_clock::duration duration) override;

 private:
  struct Found { // a thread that runs, with its process
    Pid pid = 0;
    const LinuxProcess* process = nullptr;
    const LinuxThread* thread = nullptr;
    explicit operator bool() const { return thread != nullptr; }
  };

  void called() const;
  bool awaitTurn(std::chrono::milliseconds insisting);
  void lead(Pid pid, LinuxProcess& leader); // a session of its own
  void tellSession(Pid pid, Pid session);
  void admit(const SimulatedProcess& born); // gives it its place and what it inherits
  void startAsApp(const SimulatedProcess& born, LinuxProcess& process);
  void end(Pid pid);
  void finishFork(Pid parent, LinuxThread& born);
  Found thread(Pid tid) const;
  Both<ThreadState>& stateOf(const Found& found);
  bool mayChange(const LinuxProcess& process) const;
  std::uint64_t online() const;
  std::uint64_t running(const ThreadState& state) const; // the processors that it may run on now
  ProcessStat statOf(const SimulatedProcess& entry) const;
  std::optional<Autogroup> autogroupOf(const LinuxProcess& process) const;
  std::optional<std::string> controlGroupFile(const std::string& folder, std::string_view file) const;
  template <class Effect> Change change(Operation operation, const Found& found, int value, Effect effect);

  std::string slowingUnit(Pid pid) const; // the name of one; empty for none
  bool isSlowedByClass(const LinuxProcess& process) const;
  bool isSlowedBySession(Pid pid, const LinuxProcess& process) const;
  bool isNarrowed(const LinuxProcess& process) const;

  SimulatedMachine& m_machine;
  std::unordered_map<Pid, LinuxProcess> m_processes; // those that run
  std::unordered_map<Pid, Pid> m_threadOwners;       // of threads that are no main threads
  std::unordered_map<Pid, Pid> m_zombieSessions;
  std::map<Pid, Both<ThreadState>> m_forks; // under way, by the parent, as it was when they began
  std::map<long, Both<int>> m_sessionNice;  // by autogroup
  long m_lastAutogroup = 0;
  Pid m_lastThread = 0;
  Pid m_births = 0;
  std::uint64_t m_nextSessionWrite = 0; // microseconds
  mutable std::size_t m_calls = 0;
  mutable bool m_isBetweenCalls = false;
};

template <class Effect> void SimulatedLinux::bringAbout(const std::vector<Pid>& pids, Effect effect) {
  if (!onTransition) return effect();
  std::vector<bool> before;
  for (const Pid pid : pids) before.push_back(isSlow(pid));
  effect();
  for (std::size_t at = 0; at < pids.size(); ++at) {
    const bool now = isSlow(pids[at]);
    if (now != before[at]) onTransition(pids[at], now);
  }
}

} // namespace vantle
