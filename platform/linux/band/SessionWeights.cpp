// SPDX-License-Identifier: MIT
#include "platform/linux/band/SessionWeights.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

using std::chrono::milliseconds;

constexpr milliseconds turn{100};            // HZ / 10 in the kernel's autogroup code
constexpr milliseconds longestTick{10};      // by which the kernel counts them
constexpr milliseconds longestInsisting{50}; // what the main loop does without at a time
constexpr int rivalsAreSeen = 6;             // after three refusals that no turn of this program's explains
constexpr int mostRivalry = 20;

} // namespace

std::vector<SessionWeights::Order>::iterator SessionWeights::find(long autogroup) {
  return std::find_if(m_queue.begin(), m_queue.end(),
                      [autogroup](const Order& order) { return order.autogroup == autogroup; });
}

void SessionWeights::lower(const Autogroup& session, const std::vector<Pid>& members, const Load& load) {
  if (const auto waiting = find(session.id); waiting != m_queue.end()) m_queue.erase(waiting);
  if (session.nice == own) m_queue.push_back({session.id, own, lowered, load, members});
  m_loads[session.id] = load;
  m_ledger.addSession(session.id);
}

void SessionWeights::hasten(Pid pid) {
  if (!isRaising()) return;
  const std::optional<Autogroup> group = m_kernel.autogroup(pid);
  const auto waiting = group ? find(group->id) : m_queue.end();
  if (waiting != m_queue.end() && waiting->to == own) waiting->wish = ++m_wishes;
}

SessionWeights::Outcome SessionWeights::raise(const std::vector<Pid>& members) {
  std::optional<Autogroup> group;
  for (auto member = members.begin(); !group && member != members.end(); ++member)
    group = m_kernel.autogroup(*member);
  if (!group) return Outcome::done; // gone, or in no session of its own any more

  auto waiting = find(group->id);
  if (waiting != m_queue.end() && waiting->to == lowered) {
    m_queue.erase(waiting);
    waiting = m_queue.end();
  }
  if (group->nice != lowered) { // never lowered, or somebody else's choice by now
    m_ledger.removeSession(group->id);
    return Outcome::done;
  }
  if (waiting == m_queue.end()) {
    const Order order{group->id, lowered, own, m_loads[group->id], members};
    const Outcome outcome = write(order, {});
    if (outcome != Outcome::queued) return outcome;
    m_queue.push_back(order);
    m_ledger.addSession(group->id);
    if (!m_timer) wakeAfter(waitAfterRefusal(false));
    return Outcome::queued;
  }
  for (const Pid member : members) {
    const auto known = std::find(waiting->members.begin(), waiting->members.end(), member);
    if (known == waiting->members.end()) waiting->members.push_back(member);
  }
  return Outcome::queued;
}

SessionWeights::Outcome SessionWeights::write(const Order& order, milliseconds insisting) {
  for (const Pid member : order.members) {
    const SessionChange change =
        m_kernel.setAutogroupNice(member, {order.autogroup, order.from}, order.to, insisting);
    switch (change) {
    case SessionChange::done:
      m_nextTurn = m_kernel.now() + turn;
      m_rivalry = std::max(m_rivalry - 1, 0);
      [[fallthrough]];
    case SessionChange::chosen:
      if (order.to == own) m_ledger.removeSession(order.autogroup);
      return Outcome::done;
    case SessionChange::later:
      return Outcome::queued;
    case SessionChange::elsewhere:
    case SessionChange::refused:
      break; // another member may do
    }
  }
  return Outcome::impossible;
}

std::optional<SessionWeights::Duration> SessionWeights::advance() {
  std::stable_sort(m_queue.begin(), m_queue.end(), [](const Order& left, const Order& right) {
    if (left.to != right.to) return left.to == own;
    if (left.wish != right.wish) return left.wish > right.wish;
    return left.load > right.load;
  });
  while (!m_queue.empty()) {
    // Whatever is lowered can wait; a game is in front, which has better uses for a processor.
    const bool insists = m_rivalry >= rivalsAreSeen && m_queue.front().to == own;
    const auto early = m_nextTurn - longestTick - m_kernel.now();
    if (insists && early > Duration::zero()) return early;
    if (write(m_queue.front(), insists ? longestInsisting : milliseconds{}) == Outcome::queued) {
      return waitAfterRefusal(insists);
    }
    const Order order = std::move(m_queue.front());
    m_queue.erase(m_queue.begin());
    if (order.to == own) m_loads.erase(order.autogroup);
    if (order.to == own && m_raised) m_raised(order.members);
  }
  m_ledger.save();
  return std::nullopt;
}

SessionWeights::Duration SessionWeights::waitAfterRefusal(bool hasInsisted) {
  const auto untilTurn = m_nextTurn - m_kernel.now();
  if (untilTurn > Duration::zero()) return untilTurn; // it was this program's own turn
  m_rivalry = std::min(m_rivalry + 2, mostRivalry);
  const milliseconds longest = hasInsisted ? turn / 10 : turn / 2;
  return milliseconds(std::uniform_int_distribution<milliseconds::rep>(1, longest.count())(m_random));
}

void SessionWeights::wakeAfter(Duration wait) {
  m_timer = m_loop.after(std::chrono::ceil<milliseconds>(wait), [this] { apply(); });
}

void SessionWeights::apply() {
  m_timer.reset();
  m_ledger.save();
  if (const auto wait = advance()) wakeAfter(*wait);
}

std::unordered_map<long, std::vector<Pid>> SessionWeights::membersOfLedger() const {
  std::unordered_map<long, std::vector<Pid>> members;
  for (const ProcessStat& process : m_kernel.scan()) {
    const std::optional<Autogroup> group = m_kernel.autogroup(process.pid);
    if (group && m_ledger.sessions().contains(group->id)) members[group->id].push_back(process.pid);
  }
  return members;
}

void SessionWeights::raiseAll() {
  const std::set<long> sessions = m_ledger.sessions();
  const auto isOnItsWay = [this](long session) {
    const auto waiting = find(session);
    return waiting != m_queue.end() && waiting->to == own;
  };
  if (!std::all_of(sessions.begin(), sessions.end(), isOnItsWay)) {
    const auto members = membersOfLedger();
    for (const long session : sessions) {
      const auto found = members.find(session);
      found == members.end() ? m_ledger.removeSession(session) : static_cast<void>(raise(found->second));
    }
  }
  apply();
}

bool SessionWeights::owes(Pid pid) const {
  if (m_ledger.sessions().empty()) return false;
  const std::optional<Autogroup> group = m_kernel.autogroup(pid);
  return group && m_ledger.sessions().contains(group->id);
}

std::size_t SessionWeights::owed() const {
  return static_cast<std::size_t>(
      std::count_if(m_queue.begin(), m_queue.end(), [](const Order& order) { return order.to == own; }));
}

bool SessionWeights::settle(milliseconds limit) {
  const auto end = m_kernel.now() + limit;
  m_ledger.save();
  for (auto wait = advance(); wait; wait = advance()) {
    const auto left = end - m_kernel.now();
    if (left <= Duration::zero()) {
      wakeAfter(*wait);
      return false;
    }
    m_kernel.sleep(std::min(*wait, left));
  }
  m_timer.reset();
  return true;
}

} // namespace vantle
