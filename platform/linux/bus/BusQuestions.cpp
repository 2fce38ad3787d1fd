// SPDX-License-Identifier: MIT
#include "platform/linux/bus/BusQuestions.h"

#include <chrono>
#include <utility>

namespace vantle {

namespace {

// Far beyond any wait; it only ends what would otherwise be remembered for ever.
constexpr std::chrono::seconds forgetAfter{25};

} // namespace

void BusQuestions::ask(BusMessage message, Answer answer) {
  if (message) sd_bus_message_set_auto_start(message.get(), 0);
  ++m_state->missing;
  const auto take = [state = m_state, decision = m_state->decision,
                     answer = std::move(answer)](sd_bus_message* reply) {
    if (state->decision == decision) answer(reply);
    --state->missing; // the last: what the answer asked is missing by now
  };
  if (!m_bus.callAsync(std::move(message), forgetAfter, take)) --m_state->missing;
}

} // namespace vantle
