// SPDX-License-Identifier: MIT
#pragma once

#include "tests/simulation/RandomRun.h"

#include <gtest/gtest.h>
#include <iostream>
#include <memory>
#include <optional>
#include <sstream>
#include <string>

namespace vantle {

// As many evenings on macOS's room, one after the other; there is one kernel at a time.
template <class Run> RunFigures playShard(std::uint64_t shard, std::uint64_t sequences) {
  RunFigures total;
  for (std::uint64_t seed = shard * sequences; seed < (shard + 1) * sequences; ++seed) {
    auto run = std::make_unique<Run>(seed, RunOptions{});
    const RunResult result = run->run();
    const std::optional<std::string> fault = result.violation ? std::nullopt : run->end();
    run.reset();
    if (result.violation) { // once more, to be read
      std::ostringstream log;
      Run(seed, {.log = &log, .tamper = {}}).run();
      ADD_FAILURE() << *result.violation << "\nseed " << seed << "\n" << log.str();
      return total;
    }
    if (fault) {
      ADD_FAILURE() << *fault << "\nseed " << seed;
      return total;
    }
    total += result.figures;
  }
  std::cout << sequences << " sequences, " << total << "\n";
  // The runs must stay worth running.
  EXPECT_GT(total.events, sequences * 10);
  EXPECT_GT(total.boosts, sequences / 2);
  EXPECT_GT(total.slowed, sequences / 2);
  EXPECT_GT(total.crashes, sequences / 4);
  EXPECT_GT(total.kills, sequences / 4);
  EXPECT_GT(total.reusedPids, sequences / 10);
  return total;
}

} // namespace vantle
