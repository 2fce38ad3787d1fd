// SPDX-License-Identifier: MIT
#pragma once

#include "platform/linux/bus/BusConnection.h"
#include "platform/posix/process/Question.h"

#include <poll.h>
#include <utility>
#include <vector>

namespace vantle {

// Something that is asked over several buses, whose answers can be waited for together with others.
class BusQuestion : public Question {
 public:
  std::vector<pollfd> watch() final;
  void advance() final;

 protected:
  explicit BusQuestion(std::vector<BusConnection*> buses) : m_buses(std::move(buses)) {}

  // Something could still arrive, which it cannot inside a reply or a signal of one of these buses.
  bool canBeAnswered() const;

 private:
  std::vector<BusConnection*> m_buses;
  bool m_isInside = false; // a reply or a signal, when it was last looked
};

} // namespace vantle
