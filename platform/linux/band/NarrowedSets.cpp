// SPDX-License-Identifier: MIT
#include "platform/linux/band/NarrowedSets.h"

#include <algorithm>

namespace vantle {

bool NarrowedSets::remember(const ProcessorSet& set) { return contains(set) || m_ledger.addSet(set); }

bool NarrowedSets::contains(const ProcessorSet& now) const {
  const auto& sets = m_ledger.sets();
  return std::find(sets.begin(), sets.end(), now) != sets.end();
}

bool NarrowedSets::contains(const ProcessorSet& now, const ProcessorSet& active) const {
  return std::any_of(m_ledger.sets().begin(), m_ledger.sets().end(), [&](const ProcessorSet& set) {
    const ProcessorSet shown = set & active;
    return now == (shown.empty() ? active : shown);
  });
}

} // namespace vantle
