// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/bus/BusConnection.h"

#include <cstddef>
#include <memory>
#include <vector>

namespace vantle {

// Several calls that are sent together and whose replies are waited for together. A reply that comes later
// than anybody waited is still taken in, so a later look shows whether the other side answers again.
class BusBatch {
 public:
  explicit BusBatch(BusConnection& bus) : m_bus(bus), m_answers(std::make_shared<Answers>()) {}

  // The place of its reply. A message that cannot be sent counts as answered with nothing.
  std::size_t add(BusMessage message);
  // True when all are answered; false when the deadline comes first.
  bool wait(BusDeadline deadline);
  bool isAnswered() const { return m_answers->missing == 0; }
  // Null when there was none (yet) or it was an error. Belongs to the batch.
  sd_bus_message* reply(std::size_t place) const { return m_answers->replies.at(place).get(); }

 private:
  struct Answers {
    std::vector<BusMessage> replies;
    std::size_t missing = 0;
  };

  BusConnection& m_bus;
  std::shared_ptr<Answers> m_answers; // the calls under way share it: they may outlive the batch
};

} // namespace vantle
