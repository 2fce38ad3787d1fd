// SPDX-License-Identifier: MIT
#include "tests/simulation/linux/SimulatedServiceManager.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

constexpr int ordersUntilMoved = 1;
constexpr int ordersUntilSwitchedOn = 2;

std::chrono::microseconds untilAfter(std::chrono::system_clock::time_point now,
                                     std::chrono::system_clock::time_point then) {
  return std::chrono::ceil<std::chrono::microseconds>(then - now);
}

} // namespace

// What the band holds. Answers wait in the mailbox until it looks.
class SimulatedServiceManager::Connection final : public ServiceManager {
 public:
  explicit Connection(SimulatedServiceManager& manager) : m_manager(manager) {}

  std::shared_ptr<Connection*> self() const { return m_self; }
  void deliver(std::function<void()> answer) { m_mailbox.push_back(std::move(answer)); }
  void open() {
    while (!m_mailbox.empty()) {
      const std::function<void()> answer = std::move(m_mailbox.front());
      m_mailbox.pop_front();
      --m_open;
      answer();
    }
  }

  bool isReachable() const override { return m_manager.isReachable; }
  bool isLate() const override { return m_isLate && m_open > 0; }

  void getWeight(const std::string& unit, Weight weight) override {
    if (!isReachable()) return weight(std::nullopt);
    send(Operation::askManager, 0, unit, "",
         [&manager = m_manager, unit, weight = std::move(weight)](bool isGranted) {
           const auto path = manager.m_kernel.units.pathOfUnit(unit);
           std::optional<std::uint64_t> value;
           if (isGranted && path) value = manager.m_kernel.units.units()[*path].weight;
           return [weight, value] { weight(value); };
         });
  }
  void setWeight(const std::string& unit, std::uint64_t weight, Done done) override {
    if (!isReachable()) return done(false);
    send(Operation::weighUnit, 0, unit, std::to_string(weight),
         [&manager = m_manager, unit, weight, done = std::move(done)](bool isGranted) {
           const bool isDone = isGranted && manager.setWeight(unit, weight);
           return [done, isDone] { done(isDone); };
         });
  }
  void startScope(const std::string& unit, std::span<const Pid> pids, Done done) override {
    if (!isReachable()) return done(false);
    send(Operation::startScope, pids.empty() ? 0 : pids.front(), unit, "",
         [&manager = m_manager, unit, list = std::vector<Pid>(pids.begin(), pids.end()),
          done = std::move(done)](bool isGranted) {
           const bool isDone = isGranted && manager.startScope(unit, list);
           return [done, isDone] { done(isDone); };
         });
  }
  void attach(const std::string& unit, Pid pid, Done done) override {
    if (!isReachable()) return done(false);
    send(Operation::attachProcess, pid, unit, "",
         [&manager = m_manager, unit, pid, done = std::move(done)](bool isGranted) {
           const bool isDone = isGranted && manager.attach(unit, pid);
           return [done, isDone] { done(isDone); };
         });
  }
  void barrier(Done done) override {
    if (!isReachable()) return done(false);
    send(Operation::askManager, 0, "", "",
         [done = std::move(done)](bool isGranted) { return [done, isGranted] { done(isGranted); }; });
  }

  bool finish(Deadline deadline) override {
    for (;;) {
      m_manager.work();
      open();
      if (m_open == 0) break;
      if (!m_manager.isReachable) { // the bus went away with what was open
        m_open = 0;
        return true;
      }
      const auto now = m_manager.m_machine.clock.now();
      const auto end = now + (deadline - m_manager.m_kernel.now());
      const bool isWaitOver = now >= end;
      // An answer has led to another order, which is served at once.
      const bool isServing = !m_manager.m_queue.empty() && m_manager.mood != Mood::silent;
      if (isServing && m_manager.m_queue.front().due <= now) continue;
      const auto next = m_manager.m_queue.empty() ? end : std::min(m_manager.m_queue.front().due, end);
      if (isWaitOver) break;
      m_manager.m_machine.clock.advance(untilAfter(now, next > now ? next : end));
    }
    m_isLate = m_open > 0;
    return !m_isLate;
  }

 private:
  void send(Operation operation, Pid pid, const std::string& unit, const std::string& detail,
            std::function<std::function<void()>(bool)> serve) {
    ++m_open;
    m_manager.send(operation, pid, unit, detail, m_self, std::move(serve));
  }

  SimulatedServiceManager& m_manager;
  std::shared_ptr<Connection*> m_self = std::make_shared<Connection*>(this);
  std::deque<std::function<void()>> m_mailbox;
  int m_open = 0; // orders without an answer that was heard
  bool m_isLate = false;
};

SimulatedServiceManager::SimulatedServiceManager(SimulatedMachine& machine, SimulatedLinux& kernel,
                                                 SimulatedLoop& loop)
    : m_machine(machine), m_kernel(kernel), m_loop(loop) {
  m_loop.source = [this] {
    work();
    if (const auto connection = m_connected.lock()) (*connection)->open();
  };
}

std::unique_ptr<ServiceManager> SimulatedServiceManager::connect() {
  auto connection = std::make_unique<Connection>(*this);
  m_connected = connection->self();
  return connection;
}

// Sending is the change: what is on its way is served even when the sender dies.
void SimulatedServiceManager::send(Operation operation, Pid pid, const std::string& unit,
                                   const std::string& detail, const std::shared_ptr<Connection*>& sender,
                                   std::function<std::function<void()>(bool isGranted)> serve) {
  const auto delay = mood == Mood::late ? lateness : std::chrono::milliseconds(0);
  const SimulatedCall call{.operation = operation, .pid = pid, .about = unit, .detail = detail};
  const auto queue = [&](bool isGranted) {
    const auto due = m_machine.clock.now() + delay;
    m_queue.push_back(
        {due, [isGranted, serve](bool isObeyed) { return serve(isGranted && isObeyed); }, sender});
  };
  if (!changesMachine(operation)) return queue(m_machine.calls.read(call));
  if (!m_machine.calls.change(call, [&] { queue(true); })) queue(false);
}

void SimulatedServiceManager::work() {
  while (serveNext()) {
  }
}

bool SimulatedServiceManager::serveNext() {
  if (m_queue.empty() || mood == Mood::silent || m_queue.front().due > m_machine.clock.now()) return false;
  const Order order = std::move(m_queue.front());
  m_queue.pop_front();
  passStep();
  std::function<void()> answer = order.serve(mood != Mood::refusing);
  if (const auto sender = order.sender.lock()) (*sender)->deliver(std::move(answer));
  return true;
}

void SimulatedServiceManager::passStep() {
  std::vector<Pending> before = std::exchange(m_pending, {});
  for (Pending& pending : before) {
    if (--pending.orders <= 0) {
      pending.happen();
    } else {
      m_pending.push_back(std::move(pending));
    }
  }
}

void SimulatedServiceManager::finishMoves() {
  while (!m_pending.empty()) passStep();
}

void SimulatedServiceManager::tellKernel(const std::string& path) {
  const auto unit = m_kernel.units.units().find(path);
  if (unit == m_kernel.units.units().end()) return;
  m_kernel.bringAbout(m_kernel.units.processesBelow(path),
                      [unit] { unit->second.inKernel = unit->second.weight; });
}

bool SimulatedServiceManager::setWeight(const std::string& unit, std::uint64_t weight) {
  const auto path = m_kernel.units.pathOfUnit(unit);
  if (!path) return false;
  m_kernel.units.units()[*path].weight = weight;
  // Where it has no controller it does not say so either.
  const bool isTold = m_kernel.units.units()[*path].inKernel != SimulatedUnits::noWeight;
  if ((mood == Mood::lying && !isTold) || !m_kernel.units.isDelegated()) return true;
  if (m_kernel.units.hasCpu(*path) || !m_kernel.units.hasFolder(*path)) {
    tellKernel(*path);
  } else {
    m_pending.push_back({ordersUntilSwitchedOn, [this, path = *path] { tellKernel(path); }});
  }
  return true;
}

bool SimulatedServiceManager::mayMove(Pid pid) const {
  const LinuxProcess* process = std::as_const(m_kernel).find(pid);
  return process != nullptr && process->user == m_kernel.user();
}

void SimulatedServiceManager::moveTo(Pid pid, const std::string& path) {
  m_kernel.bringAbout({pid}, [&] { m_kernel.units.move(pid, path); });
}

bool SimulatedServiceManager::startScope(const std::string& unit, const std::vector<Pid>& pids) {
  if (mood == Mood::lying) return true;
  const std::string path = m_kernel.units.appSlice() + "/" + unit;
  const bool allMove = std::all_of(pids.begin(), pids.end(), [this](Pid pid) { return mayMove(pid); });
  if (m_kernel.units.pathOfUnit(unit) || pids.empty() || !allMove) return false;
  m_kernel.units.units().try_emplace(path); // there from now on, empty for a moment
  m_pending.push_back({ordersUntilMoved, [this, pids, path] {
                         for (const Pid pid : pids) {
                           if (mayMove(pid)) moveTo(pid, path);
                         }
                         if (!m_kernel.units.hasFolder(path)) m_kernel.units.units().erase(path);
                       }});
  return true;
}

bool SimulatedServiceManager::attach(const std::string& unit, Pid pid) {
  if (mood == Mood::lying) return true;
  const auto path = m_kernel.units.pathOfUnit(unit);
  if (!path || !mayMove(pid)) return false;
  moveTo(pid, *path);
  return true;
}

void SimulatedServiceManager::setWeightByOthers(const std::string& unit, std::uint64_t weight) {
  const auto path = m_kernel.units.pathOfUnit(unit);
  if (!path) return;
  m_kernel.units.units()[*path] = {weight, weight, weight};
}

Pid SimulatedServiceManager::restartService(const std::string& unit, const std::string& executable) {
  const auto path = m_kernel.units.pathOfUnit(unit);
  if (!path) return 0;
  for (const Pid pid : m_kernel.units.processesIn(*path)) m_machine.exit(pid);
  const Pid pid = m_machine.processes.spawn({.executable = executable});
  m_kernel.place(pid, *path);
  return pid;
}

} // namespace vantle
