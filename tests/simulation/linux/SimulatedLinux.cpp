// SPDX-License-Identifier: MIT
#include "tests/simulation/linux/SimulatedLinux.h"

#include "base/Invariant.h"
#include "platform/linux/band/UnitPath.h"

#include <algorithm>
#include <sched.h>
#include <utility>

namespace vantle {

namespace {

constexpr Pid firstThread = 1'000'000;  // beyond every pid
constexpr Pid loginSession = 2'000'000; // its leader is not visible
constexpr unsigned root = 0;
constexpr std::string_view controlGroupMount = "/sys/fs/cgroup";

std::string baseName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

bool isOrdinary(int policy) { return policy == SCHED_OTHER || policy == SCHED_BATCH || policy == SCHED_IDLE; }

// What the kernel accepts: only the idle class has data bits without a meaning.
bool isIoPriority(int priority) {
  const int ioClass = priority >> 13;
  const int data = priority & 0x1fff;
  return ioClass == 3 || ioClass == 1 || ioClass == 2 || (ioClass == 0 && data == 0);
}

} // namespace

SimulatedLinux::SimulatedLinux(SimulatedMachine& machine, LinuxOptions linuxOptions)
    : options(std::move(linuxOptions)), units(userManagerPath(options.user), options.delegatesCpu),
      m_machine(machine), m_lastThread(firstThread) {
  m_sessionNice[++m_lastAutogroup] = {}; // of the login
  // The table of processes shows the same places.
  units.onMove = [this](Pid pid, const std::string& path) {
    SimulatedProcess* entry = m_machine.processes.find(pid);
    if (entry == nullptr) return;
    const std::string before =
        std::exchange(entry->place, options.hasControlGroups ? units.appUnitOn(path) : std::string());
    if (onPlace && before != entry->place) onPlace(pid, before);
  };
  for (const auto& [pid, entry] : machine.processes.all()) admit(entry);
  machine.processes.onBirth = [this](const SimulatedProcess& born) { admit(born); };
  machine.processes.onEnd = [this](Pid pid) { end(pid); };
  machine.processes.isReserved = [this](Pid pid) { return !mayReuse(pid); };
}

SimulatedLinux::~SimulatedLinux() {
  m_machine.processes.onBirth = nullptr;
  m_machine.processes.onEnd = nullptr;
  m_machine.processes.isReserved = nullptr;
}

void SimulatedLinux::called() const {
  ++m_calls;
  if (!beforeCall || m_isBetweenCalls) return;
  m_isBetweenCalls = true;
  const std::function<void()> hook = beforeCall; // which may put another in its place
  hook();
  m_isBetweenCalls = false;
}

void SimulatedLinux::admit(const SimulatedProcess& born) {
  ++m_births;
  m_zombieSessions.erase(born.pid);
  const LinuxProcess* parent = find(born.parent);
  LinuxProcess process;
  if (parent != nullptr) process = *parent;
  process.name = baseName(born.executable).substr(0, 15);
  process.isKernelThread = false;
  process.threads.resize(1); // whichever thread forked: they are alike here
  LinuxThread& main = process.threads.front();
  main.tid = born.pid;
  finishFork(born.parent, main);
  for (ThreadState* state : {&main.state.now, &main.state.own}) {
    if (!state->resetsOnFork) continue;
    state->resetsOnFork = false;
    if (!isOrdinary(state->policy)) state->policy = SCHED_OTHER;
  }
  if (born.parent == 1) {
    startAsApp(born, process);
  } else if (parent != nullptr) {
    units.move(born.pid, *units.pathOf(born.parent));
  } else {
    process.session = born.pid; // process 1
    units.move(born.pid, "/init.scope");
  }
  if (born.parent != 1 && born.session == born.pid) lead(born.pid, process);
  tellSession(born.pid, process.session);
  m_processes[born.pid] = std::move(process);
}

void SimulatedLinux::lead(Pid pid, LinuxProcess& leader) {
  leader.session = pid;
  leader.autogroup = ++m_lastAutogroup;
  m_sessionNice[leader.autogroup] = {};
}

// The table of processes shows the same session.
void SimulatedLinux::tellSession(Pid pid, Pid session) {
  if (SimulatedProcess* entry = m_machine.processes.find(pid)) entry->session = session;
}

void SimulatedLinux::startAsApp(const SimulatedProcess& born, LinuxProcess& process) {
  process.user = options.user;
  process.session = loginSession;
  process.autogroup = 1;
  if (options.placement != LinuxPlacement::oneSession || born.session == born.pid) lead(born.pid, process);
  const bool inUnits = options.placement == LinuxPlacement::ownUnits;
  const std::string unit = "/app-" + baseName(born.executable) + "-" + std::to_string(born.pid) + ".scope";
  units.move(born.pid, inUnits ? units.appSlice() + unit : loginScope());
}

void SimulatedLinux::end(Pid pid) {
  const auto found = m_processes.find(pid);
  if (found == m_processes.end()) return;
  for (const LinuxThread& thread : found->second.threads) m_threadOwners.erase(thread.tid);
  m_zombieSessions[pid] = found->second.session;
  const long autogroup = found->second.autogroup;
  m_processes.erase(found);
  m_forks.erase(pid);
  units.remove(pid);
  const bool isLast = std::none_of(m_processes.begin(), m_processes.end(), [autogroup](const auto& other) {
    return other.second.autogroup == autogroup;
  });
  if (isLast && autogroup > 1) m_sessionNice.erase(autogroup);
  if (isLast && autogroup == 1) m_sessionNice[1] = {}; // the next ones log in anew
}

std::string SimulatedLinux::loginScope() const {
  const std::string& manager = units.managerPath();
  return manager.substr(0, manager.rfind('/')) + "/session-1.scope";
}

LinuxProcess& SimulatedLinux::process(Pid pid) {
  const auto found = m_processes.find(pid);
  invariant(found != m_processes.end(), "the process does not run");
  return found->second;
}

const LinuxProcess* SimulatedLinux::find(Pid pid) const {
  const auto found = m_processes.find(pid);
  return found == m_processes.end() ? nullptr : &found->second;
}

Pid SimulatedLinux::startThread(Pid pid) {
  LinuxProcess& owner = process(pid);
  ++m_births;
  LinuxThread thread = owner.threads.front();
  thread.tid = ++m_lastThread;
  finishFork(pid, thread);
  owner.threads.push_back(thread);
  m_threadOwners[thread.tid] = pid;
  return thread.tid;
}

void SimulatedLinux::beginFork(Pid pid) { m_forks.try_emplace(pid, process(pid).threads.front().state); }

std::vector<Pid> SimulatedLinux::forking() const {
  std::vector<Pid> parents;
  for (const auto& [pid, state] : m_forks) parents.push_back(pid);
  return parents;
}

void SimulatedLinux::finishFork(Pid parent, LinuxThread& born) {
  const auto fork = m_forks.find(parent);
  if (fork == m_forks.end()) return;
  const auto take = [](ThreadState& state, ThreadState begun) {
    begun.ioPriority = state.ioPriority;
    state = begun;
  };
  take(born.state.now, fork->second.now);
  take(born.state.own, fork->second.own);
  m_forks.erase(fork);
}

void SimulatedLinux::endThread(Pid tid) {
  const auto owner = m_threadOwners.find(tid);
  if (owner == m_threadOwners.end()) return;
  std::erase_if(process(owner->second).threads, [tid](const LinuxThread& one) { return one.tid == tid; });
  m_threadOwners.erase(owner);
}

void SimulatedLinux::startSession(Pid pid) {
  lead(pid, process(pid));
  tellSession(pid, pid);
}

void SimulatedLinux::joinSession(Pid pid, Pid ofOther) {
  LinuxProcess& member = process(pid);
  const LinuxProcess& other = process(ofOther);
  member.session = other.session;
  member.autogroup = other.autogroup;
  tellSession(pid, member.session);
}

bool SimulatedLinux::mayReuse(Pid pid) const {
  return std::none_of(m_processes.begin(), m_processes.end(),
                      [pid](const auto& other) { return other.first != pid && other.second.session == pid; });
}

void SimulatedLinux::byOthers(Pid tid, const std::function<void(ThreadState&)>& change) {
  const Found found = thread(tid);
  if (!found) return;
  // A value that they leave as it is stays whoever's it was.
  auto& [now, own] = stateOf(found);
  const ThreadState before = now;
  change(now);
  if (now.ioPriority != before.ioPriority) own.ioPriority = now.ioPriority;
  if (now.policy != before.policy) own.policy = now.policy;
  if (now.resetsOnFork != before.resetsOnFork) own.resetsOnFork = now.resetsOnFork;
  if (now.processors != before.processors) own.processors = now.processors;
}

void SimulatedLinux::weighSessionByOthers(Pid pid, int nice) {
  m_sessionNice[process(pid).autogroup] = {nice, nice};
}

void SimulatedLinux::takeSessionTurn() {
  const auto now = static_cast<std::uint64_t>(
      std::chrono::duration_cast<std::chrono::microseconds>(this->now().time_since_epoch()).count());
  m_nextSessionWrite = now + static_cast<std::uint64_t>(
                                 std::chrono::duration_cast<std::chrono::microseconds>(sessionStep).count());
}

SimulatedLinux::Found SimulatedLinux::thread(Pid tid) const {
  const auto owner = m_threadOwners.find(tid);
  const Pid pid = owner == m_threadOwners.end() ? tid : owner->second;
  const auto found = m_processes.find(pid);
  if (found == m_processes.end()) return {};
  const LinuxProcess& process = found->second;
  const auto one = std::find_if(process.threads.begin(), process.threads.end(),
                                [tid](const LinuxThread& thread) { return thread.tid == tid; });
  if (one == process.threads.end()) return {};
  return {pid, &process, &*one};
}

Both<ThreadState>& SimulatedLinux::stateOf(const Found& found) {
  return m_processes.at(found.pid)
      .threads[static_cast<std::size_t>(found.thread - found.process->threads.data())]
      .state;
}

bool SimulatedLinux::mayChange(const LinuxProcess& process) const {
  return options.user == root || process.user == options.user;
}

std::uint64_t SimulatedLinux::online() const {
  return options.processors >= 64 ? ~std::uint64_t{0} : (std::uint64_t{1} << options.processors) - 1;
}

// A set of which no processor is left counts for nothing, until one of them is back.
std::uint64_t SimulatedLinux::running(const ThreadState& state) const {
  const std::uint64_t active = state.processors & online();
  return active == 0 ? online() : active;
}

ProcessStat SimulatedLinux::statOf(const SimulatedProcess& entry) const {
  ProcessStat stat;
  stat.pid = entry.pid;
  stat.user = options.user;
  stat.parent = entry.parent;
  stat.userTicks = entry.cpuTime;
  stat.priority = 20;
  stat.startTicks = entry.startMicros / m_machine.clock.resolution();
  if (const LinuxProcess* process = find(entry.pid)) {
    stat.state = entry.isBusy ? 'R' : 'S';
    stat.session = process->session;
    stat.user = process->user;
    stat.threads = static_cast<int>(process->threads.size());
    stat.flags = process->isKernelThread ? 0x00200000 : 0;
    std::copy_n(process->name.begin(), std::min(process->name.size(), stat.name.size() - 1),
                stat.name.begin());
  } else {
    stat.state = 'Z';
    const auto session = m_zombieSessions.find(entry.pid);
    stat.session = session == m_zombieSessions.end() ? 0 : session->second;
    stat.threads = 1;
  }
  return stat;
}

std::optional<ProcessStat> SimulatedLinux::stat(Pid pid) const {
  called();
  const SimulatedProcess* entry = std::as_const(m_machine.processes).find(pid);
  if (entry == nullptr) return std::nullopt;
  return statOf(*entry);
}

std::vector<ProcessStat> SimulatedLinux::scan() const {
  called();
  std::vector<ProcessStat> all;
  all.reserve(m_machine.processes.all().size());
  for (const auto& [pid, entry] : m_machine.processes.all()) all.push_back(statOf(entry));
  return all;
}

std::vector<Pid> SimulatedLinux::threads(Pid pid) const {
  called();
  std::vector<Pid> tids;
  if (const LinuxProcess* process = find(pid)) {
    for (const LinuxThread& thread : process->threads) tids.push_back(thread.tid);
  } else if (std::as_const(m_machine.processes).find(pid) != nullptr) {
    tids.push_back(pid);
  }
  return tids;
}

std::optional<std::string> SimulatedLinux::controlGroups(Pid pid) const {
  called();
  if (std::as_const(m_machine.processes).find(pid) == nullptr) return std::nullopt;
  if (!options.hasControlGroups) return std::string();
  const std::string* path = units.pathOf(pid);
  return "0::" + (path != nullptr ? *path : std::string("/")) + "\n";
}

bool SimulatedLinux::isOwn(Pid pid) const {
  called();
  const LinuxProcess* process = find(pid);
  return process != nullptr && process->user == options.user;
}

std::optional<Pid> SimulatedLinux::birthMark() const {
  called();
  return options.tellsOfBirths ? std::optional(m_births) : std::nullopt;
}

std::optional<Autogroup> SimulatedLinux::autogroupOf(const LinuxProcess& process) const {
  const auto nice = m_sessionNice.find(process.autogroup);
  if (nice == m_sessionNice.end()) return std::nullopt;
  return Autogroup{process.autogroup, nice->second.now};
}

std::optional<Autogroup> SimulatedLinux::autogroup(Pid pid) const {
  called();
  const LinuxProcess* process = find(pid);
  return process != nullptr ? autogroupOf(*process) : std::nullopt;
}

std::optional<Autogroup> SimulatedLinux::writableAutogroup(Pid pid) const {
  called();
  const LinuxProcess* process = find(pid);
  return process != nullptr && mayChange(*process) ? autogroupOf(*process) : std::nullopt;
}

// Whether this ordinary user's write is let through, now or within that time.
bool SimulatedLinux::awaitTurn(std::chrono::milliseconds insisting) {
  const auto micros = [](std::chrono::steady_clock::duration time) {
    return static_cast<std::uint64_t>(std::chrono::duration_cast<std::chrono::microseconds>(time).count());
  };
  const std::uint64_t start = micros(now().time_since_epoch());
  while (rivalIsFirst && m_nextSessionWrite <= start) m_nextSessionWrite += micros(sessionStep);
  const std::uint64_t end = start + micros(insisting);
  while (m_nextSessionWrite <= end) {
    if (m_nextSessionWrite > start)
      sleep(std::chrono::microseconds(m_nextSessionWrite) - now().time_since_epoch());
    if (!rivalIsFirst || !rivalIsFirst()) return true;
    m_nextSessionWrite += micros(sessionStep);
  }
  sleep(std::chrono::microseconds(end) - now().time_since_epoch());
  return false;
}

SessionChange SimulatedLinux::setAutogroupNice(Pid pid, const Autogroup& expected, int nice,
                                               std::chrono::milliseconds insisting) {
  called();
  const LinuxProcess* process = find(pid);
  const auto group = process != nullptr && mayChange(*process) ? autogroupOf(*process) : std::nullopt;
  if (!group || group->id != expected.id) return SessionChange::elsewhere;
  if (group->nice != expected.nice) return SessionChange::chosen;
  if (nice < 0 && options.user != root) return SessionChange::refused;
  if (options.user != root && !awaitTurn(insisting)) return SessionChange::later;
  const std::string detail = m_machine.calls.isTracing() ? std::to_string(nice) : std::string();
  const SimulatedCall call{.operation = Operation::weighSession, .pid = pid, .detail = detail};
  const bool isDone = m_machine.calls.change(call, [&] {
    takeSessionTurn();
    std::vector<Pid> members;
    for (const auto& [member, state] : m_processes) {
      if (state.autogroup == group->id) members.push_back(member);
    }
    bringAbout(members, [&] { m_sessionNice[group->id].now = nice; });
  });
  return isDone ? SessionChange::done : SessionChange::refused;
}

// The change of one thread, once the kernel has nothing against it.
template <class Effect>
Change SimulatedLinux::change(Operation operation, const Found& found, int value, Effect effect) {
  std::string about;
  std::string detail;
  if (m_machine.calls.isTracing()) {
    if (found.thread->tid != found.pid) about = "thread " + std::to_string(found.thread->tid);
    detail = std::to_string(value);
  }
  const SimulatedCall call{.operation = operation, .pid = found.pid, .about = about, .detail = detail};
  const bool isDone =
      m_machine.calls.change(call, [&] { bringAbout({found.pid}, [&] { effect(stateOf(found).now); }); });
  return isDone ? Change::done : Change::refused;
}

Answer<int> SimulatedLinux::ioPriority(Pid tid) const {
  called();
  if (const Found found = thread(tid)) return found.thread->state.now.ioPriority;
  if (std::as_const(m_machine.processes).find(tid) != nullptr) return 0; // a zombie has none any more
  Answer<int> none;
  none.isGone = true;
  return none;
}

Change SimulatedLinux::setIoPriority(Pid tid, int priority) {
  called();
  const Found found = thread(tid);
  if (!found) return Change::gone;
  const bool isRealTime = priority >> 13 == 1;
  if (!mayChange(*found.process) || !isIoPriority(priority) || (isRealTime && options.user != root)) {
    return Change::refused;
  }
  const bool wasMarked = isMarkedIn(found.pid);
  const int kept = options.keepsMarks || priority >> 13 != 3 ? priority : priority & ~0x1ff8;
  return change(Operation::setIoPriority, found, priority, [&](ThreadState& state) {
    state.ioPriority = kept;
    if (onMark && isMarkedIn(found.pid) != wasMarked) onMark(found.pid, !wasMarked);
  });
}

Answer<Scheduling> SimulatedLinux::scheduling(Pid tid) const {
  called();
  if (const Found found = thread(tid)) {
    return Scheduling{found.thread->state.now.policy, found.thread->state.now.resetsOnFork};
  }
  if (std::as_const(m_machine.processes).find(tid) != nullptr) return Scheduling{};
  Answer<Scheduling> none;
  none.isGone = true;
  return none;
}

Change SimulatedLinux::setScheduling(Pid tid, Scheduling scheduling) {
  called();
  const Found found = thread(tid);
  if (!found) return Change::gone;
  const ThreadState& now = found.thread->state.now;
  const bool leavesIdle = now.policy == SCHED_IDLE && scheduling.policy != SCHED_IDLE;
  const bool isAllowed =
      options.user == root || (mayChange(*found.process) && !(leavesIdle && found.process->niceLimit < 20) &&
                               !(now.resetsOnFork && !scheduling.resetsOnFork));
  if (!isAllowed || !isOrdinary(scheduling.policy)) return Change::refused; // the others want a priority
  return change(Operation::setScheduling, found, scheduling.policy, [scheduling](ThreadState& state) {
    state.policy = scheduling.policy;
    state.resetsOnFork = scheduling.resetsOnFork;
  });
}

bool SimulatedLinux::mayLeaveIdleClass(Pid tid) const {
  called();
  const Found found = thread(tid);
  return found && mayChange(*found.process) && found.process->niceLimit >= 20; // threads have nice 0 here
}

bool SimulatedLinux::hasNiceCapability() const { return options.user == root; }

std::optional<ThreadActivity> SimulatedLinux::activity(Pid tid) const {
  called();
  const Found found = thread(tid);
  if (!found) return std::nullopt;
  const SimulatedProcess& entry = m_machine.processes.all().at(found.pid);
  ThreadActivity activity;
  activity.isRunning = entry.isBusy || (tid == found.pid && m_forks.contains(tid));
  activity.isResting = !activity.isRunning;
  activity.cpuTicks = entry.cpuTime / m_machine.clock.resolution();
  activity.startTicks =
      tid == found.pid ? entry.startMicros / m_machine.clock.resolution() : static_cast<std::uint64_t>(tid);
  return activity;
}

std::optional<ProcessorSet> SimulatedLinux::affinity(Pid tid) const {
  called();
  const Found found = thread(tid);
  if (!found) return std::nullopt;
  ProcessorSet set;
  *set.data() = static_cast<unsigned long>(running(found.thread->state.now));
  return set;
}

Change SimulatedLinux::setAffinity(Pid tid, const ProcessorSet& processors) {
  called();
  const Found found = thread(tid);
  if (!found) return Change::gone;
  const std::uint64_t wanted = *processors.data();
  if (!mayChange(*found.process) || (wanted & online()) == 0) return Change::refused;
  return change(Operation::setAffinity, found, static_cast<int>(wanted & online()),
                [wanted](ThreadState& state) { state.processors = wanted; });
}

std::optional<std::string> SimulatedLinux::controlGroupFile(const std::string& folder,
                                                            std::string_view file) const {
  if (!options.hasControlGroups || !units.hasFolder(folder)) return std::nullopt;
  if (file == "cgroup.controllers") {
    const bool hasCpu = folder.empty() || units.hasCpu(folder);
    return hasCpu ? "cpu memory pids\n" : "memory pids\n";
  }
  if (file == "cgroup.procs") {
    std::string lines;
    for (const Pid pid : units.processesIn(folder)) lines += std::to_string(pid) + "\n";
    return lines;
  }
  if (!units.hasCpu(folder)) return std::nullopt;
  if (file == "cpu.idle") return units.isIdle(folder) ? "1\n" : "0\n";
  if (file == "cpu.weight") {
    const auto unit = units.units().find(folder);
    const bool isSet = unit != units.units().end() && unit->second.inKernel != SimulatedUnits::noWeight;
    return std::to_string(isSet ? unit->second.inKernel : 100) + "\n";
  }
  return std::nullopt;
}

std::optional<std::string> SimulatedLinux::read(const std::string& path) const {
  called();
  if (path.starts_with(controlGroupMount)) {
    const std::size_t name = path.rfind('/');
    if (name < controlGroupMount.size()) return std::nullopt;
    const std::string folder = path.substr(controlGroupMount.size(), name - controlGroupMount.size());
    return controlGroupFile(folder, std::string_view(path).substr(name + 1));
  }
  if (const auto file = files.find(path); file != files.end()) return file->second;
  if (path == "/sys/devices/system/cpu/online") {
    return options.processors == 1 ? "0\n" : "0-" + std::to_string(options.processors - 1) + "\n";
  }
  if (path == "/proc/uptime") {
    const auto hundredths =
        std::chrono::duration_cast<std::chrono::milliseconds>(now().time_since_epoch()).count() / 10;
    const std::string part = std::to_string(hundredths % 100);
    return std::to_string(hundredths / 100) + (part.size() < 2 ? ".0" : ".") + part + " 0.00\n";
  }
  if (path == "/proc/sys/kernel/sched_autogroup_enabled") return options.hasAutogroups ? "1\n" : "0\n";
  if (path == "/proc/sys/kernel/random/boot_id") return options.bootId + "\n";
  return std::nullopt;
}

bool SimulatedLinux::exists(const std::string& path) const {
  if (path.starts_with(controlGroupMount) && options.hasControlGroups &&
      units.hasFolder(path.substr(controlGroupMount.size()))) {
    called();
    return true;
  }
  return read(path).has_value();
}

std::optional<std::string> SimulatedLinux::link(const std::string& path) const {
  called();
  if (path != "/proc/self/ns/cgroup") return std::nullopt;
  return "cgroup:[4026531835]"; // the machine's own, no container's
}

std::optional<std::vector<std::string>> SimulatedLinux::folders(const std::string& path) const {
  called();
  if (!path.starts_with(controlGroupMount) || !options.hasControlGroups) return std::nullopt;
  const std::string folder = path.substr(controlGroupMount.size());
  if (!units.hasFolder(folder)) return std::nullopt;
  return units.foldersIn(folder);
}

std::chrono::steady_clock::time_point SimulatedLinux::now() const {
  return std::chrono::steady_clock::time_point(
      std::chrono::duration_cast<std::chrono::steady_clock::duration>(
          m_machine.clock.now().time_since_epoch()));
}

void SimulatedLinux::sleep(std::chrono::steady_clock::duration duration) {
  m_machine.clock.advance(std::chrono::ceil<std::chrono::microseconds>(duration));
}

} // namespace vantle
