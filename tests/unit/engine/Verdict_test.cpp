// SPDX-License-Identifier: MIT
#include "engine/Verdict.h"

#include <array>
#include <cstddef>
#include <gtest/gtest.h>
#include <utility>

namespace vantle {
namespace {

using Rule = std::pair<bool AppFacts::*, Verdict>;

// In the order in which they decide.
constexpr std::array rules{
    Rule{&AppFacts::noBoost, Verdict::noBoost},
    Rule{&AppFacts::isNotRegular, Verdict::notAnApp},
    Rule{&AppFacts::hasEnded, Verdict::ended},
    Rule{&AppFacts::isOwnProcess, Verdict::ownProcess},
    Rule{&AppFacts::isSlowed, Verdict::slowedAlready},
    Rule{&AppFacts::isInFront, Verdict::inFront},
    Rule{&AppFacts::isProtectedByPerson, Verdict::protectedByPerson},
    Rule{&AppFacts::isSystemApp, Verdict::systemApp},
    Rule{&AppFacts::isBoostApp, Verdict::boostApp},
    Rule{&AppFacts::isLauncher, Verdict::launcher},
    Rule{&AppFacts::isHeard, Verdict::heard},
    Rule{&AppFacts::keepsAwake, Verdict::keepsAwake},
};

TEST(Judge, SlowsAnAppThatNothingIsHeldAgainst) { EXPECT_EQ(judge({}), Verdict::slowed); }

TEST(Judge, NamesTheOneThingThatIsHeldAgainstAnApp) {
  for (const auto& [fact, verdict] : rules) {
    AppFacts facts;
    facts.*fact = true;
    EXPECT_EQ(judge(facts), verdict);
  }
}

TEST(Judge, NamesTheFirstOfAllThingsThatHold) {
  for (std::size_t first = 0; first < rules.size(); ++first) {
    AppFacts facts;
    for (std::size_t at = first; at < rules.size(); ++at) facts.*rules[at].first = true;
    EXPECT_EQ(judge(facts), rules[first].second);
  }
}

} // namespace
} // namespace vantle
