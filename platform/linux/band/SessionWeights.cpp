// SPDX-License-Identifier: MIT
#include "platform/linux/band/SessionWeights.h"

#include <algorithm>
#include <utility>

namespace vantle {

namespace {

constexpr std::chrono::milliseconds kernelStep{100}; // HZ / 10 in the kernel's autogroup code

} // namespace

std::vector<SessionWeights::Order>::iterator SessionWeights::find(long autogroup) {
  return std::find_if(m_queue.begin(), m_queue.end(),
                      [autogroup](const Order& order) { return order.autogroup == autogroup; });
}

void SessionWeights::lower(const Autogroup& session, const std::vector<Pid>& members, const Load& load) {
  if (const auto waiting = find(session.id); waiting != m_queue.end()) m_queue.erase(waiting);
  if (session.nice == own) m_queue.push_back({session.id, own, lowered, load, members});
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
  if (group->nice != lowered) return Outcome::done; // never lowered, or somebody else's choice by now
  if (waiting == m_queue.end()) {
    const Order order{group->id, lowered, own, {}, members};
    const Outcome outcome = write(order);
    if (outcome != Outcome::queued) return outcome;
    m_queue.push_back(order);
    apply();
    return find(group->id) == m_queue.end() ? Outcome::done : Outcome::queued;
  }
  for (const Pid member : members) {
    const auto known = std::find(waiting->members.begin(), waiting->members.end(), member);
    if (known == waiting->members.end()) waiting->members.push_back(member);
  }
  return Outcome::queued;
}

SessionWeights::Outcome SessionWeights::write(const Order& order) {
  for (const Pid member : order.members) {
    switch (m_kernel.setAutogroupNice(member, {order.autogroup, order.from}, order.to)) {
    case SessionChange::done:
    case SessionChange::chosen:
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

void SessionWeights::apply() {
  std::stable_sort(m_queue.begin(), m_queue.end(), [](const Order& left, const Order& right) {
    if (left.to != right.to) return left.to == own;
    return left.load > right.load;
  });
  m_timer.reset();
  while (!m_queue.empty()) {
    if (write(m_queue.front()) == Outcome::queued) {
      m_timer = m_loop.after(kernelStep, [this] { apply(); });
      return;
    }
    const Order order = std::move(m_queue.front());
    m_queue.erase(m_queue.begin());
    if (order.to == own && m_raised) m_raised(order.members);
  }
}

bool SessionWeights::isRaising() const {
  return std::any_of(m_queue.begin(), m_queue.end(), [](const Order& order) { return order.to == own; });
}

bool SessionWeights::settle(std::chrono::milliseconds limit) {
  const auto end = m_kernel.now() + limit;
  for (apply(); !m_queue.empty(); apply()) {
    const auto now = m_kernel.now();
    if (now >= end) return false;
    m_kernel.sleep(std::min<std::chrono::steady_clock::duration>(kernelStep, end - now));
  }
  return true;
}

} // namespace vantle
