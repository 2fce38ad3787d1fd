// SPDX-License-Identifier: MIT
#include "platform/linux/bus/BusQuestion.h"

#include <algorithm>
#include <optional>

namespace vantle {

std::vector<pollfd> BusQuestion::watch() {
  std::vector<pollfd> watched;
  for (const BusConnection* const bus : m_buses) {
    if (const std::optional<pollfd> descriptor = bus->watched()) watched.push_back(*descriptor);
  }
  return watched;
}

void BusQuestion::advance() {
  m_isInside = false;
  for (BusConnection* const bus : m_buses) {
    if (!bus->catchUp()) m_isInside = true;
  }
}

bool BusQuestion::canBeAnswered() const {
  return !m_isInside && std::any_of(m_buses.begin(), m_buses.end(),
                                    [](const BusConnection* bus) { return bus->watched().has_value(); });
}

} // namespace vantle
