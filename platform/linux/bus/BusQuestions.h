// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/bus/BusConnection.h"

#include <cstddef>
#include <functional>
#include <memory>

namespace vantle {

// What one daemon is asked for one decision: each answer may lead to further questions. Nobody is started to
// answer. An answer that comes too late for its decision is taken in and thrown away, so that it shows when
// the daemon answers again.
class BusQuestions {
 public:
  // The answer; null on an error, and when there is nobody to answer.
  using Answer = std::function<void(sd_bus_message* reply)>;

  explicit BusQuestions(BusConnection& bus) : m_bus(bus) {}
  ~BusQuestions() { giveUp(); }
  BusQuestions(const BusQuestions&) = delete;
  BusQuestions& operator=(const BusQuestions&) = delete;

  BusConnection& bus() const { return m_bus; }
  // A message that cannot be sent is not asked, and its answer never comes.
  void ask(BusMessage message, Answer answer);
  bool isAnswered() const { return m_state->missing == 0; }
  // From now on answers to earlier questions count for nothing.
  void giveUp() { ++m_state->decision; }

 private:
  struct State {
    std::size_t missing = 0;
    std::size_t decision = 0;
  };

  BusConnection& m_bus;
  std::shared_ptr<State> m_state = std::make_shared<State>(); // the calls under way may outlive this
};

} // namespace vantle
