// SPDX-License-Identifier: MIT
// Plays one random run again and shows every event with the calls that it led to.
#include "tests/simulation/RandomRun.h"

#include <charconv>
#include <iostream>
#include <string_view>

int main(int argc, char** argv) {
  std::uint64_t seed = 0;
  const std::string_view text = argc == 2 ? argv[1] : "";
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), seed);
  if (text.empty() || parsed.ec != std::errc() || parsed.ptr != text.data() + text.size()) {
    std::cerr << "usage: simulation_replay SEED\n";
    return 2;
  }
  const vantle::RunResult result = vantle::RandomRun(seed, {.log = &std::cout, .tamper = {}}).run();
  std::cout << (result.violation ? "BROKEN: " + *result.violation : "no rule was broken") << '\n';
  return result.violation ? 1 : 0;
}
