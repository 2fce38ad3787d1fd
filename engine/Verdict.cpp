// SPDX-License-Identifier: MIT
#include "engine/Verdict.h"

#include <array>
#include <utility>

namespace vantle {

Verdict judge(const AppFacts& facts) {
  const std::array rules{
      std::pair{facts.noBoost, Verdict::noBoost},
      std::pair{facts.isNotRegular, Verdict::notAnApp},
      std::pair{facts.hasEnded, Verdict::ended},
      std::pair{facts.isOwnProcess, Verdict::ownProcess},
      std::pair{facts.isSlowed, Verdict::slowedAlready},
      std::pair{facts.isInFront, Verdict::inFront},
      std::pair{facts.isProtectedByPerson, Verdict::protectedByPerson},
      std::pair{facts.isSystemApp, Verdict::systemApp},
      std::pair{facts.isBoostApp, Verdict::boostApp},
      std::pair{facts.isLauncher, Verdict::launcher},
      std::pair{facts.isHeard, Verdict::heard},
      std::pair{facts.keepsAwake, Verdict::keepsAwake},
  };
  for (const auto& [matches, verdict] : rules) {
    if (matches) return verdict;
  }
  return Verdict::slowed;
}

} // namespace vantle
