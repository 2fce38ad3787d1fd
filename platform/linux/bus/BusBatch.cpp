// SPDX-License-Identifier: MIT
#include "platform/linux/bus/BusBatch.h"

#include <utility>

namespace vantle {

namespace {

// Far beyond any wait; it only ends what would otherwise be remembered for ever.
constexpr std::chrono::seconds forgetAfter{25};

} // namespace

std::size_t BusBatch::add(BusMessage message) {
  const std::size_t place = m_answers->replies.size();
  m_answers->replies.emplace_back();
  ++m_answers->missing;
  const auto take = [answers = m_answers, place](sd_bus_message* reply) {
    answers->replies[place].reset(sd_bus_message_ref(reply));
    --answers->missing;
  };
  if (!m_bus.callAsync(std::move(message), forgetAfter, take)) --m_answers->missing;
  return place;
}

bool BusBatch::wait(BusDeadline deadline) {
  return isAnswered() || m_bus.runUntil([this] { return isAnswered(); }, deadline);
}

} // namespace vantle
