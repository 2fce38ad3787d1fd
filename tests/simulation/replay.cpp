// SPDX-License-Identifier: MIT
// Plays one random run again and shows every event with the calls that it led to.
#include "tests/simulation/RandomRun.h"
#ifdef VANTLE_LINUX_RUNS
#include "tests/simulation/linux/LinuxRun.h"
#endif

#include <charconv>
#include <iostream>
#include <string_view>

namespace {

vantle::RunResult play(std::uint64_t seed, [[maybe_unused]] bool onLinux) {
  const vantle::RunOptions options{.log = &std::cout, .tamper = {}};
#ifdef VANTLE_LINUX_RUNS
  if (onLinux) return vantle::LinuxRun(seed, options).run();
#endif
  return vantle::RandomRun(seed, options).run();
}

} // namespace

int main(int argc, char** argv) {
  std::uint64_t seed = 0;
  const bool onLinux = argc == 3 && std::string_view(argv[1]) == "--linux";
  const std::string_view text = argc == 2 || onLinux ? argv[argc - 1] : "";
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), seed);
  if (text.empty() || parsed.ec != std::errc() || parsed.ptr != text.data() + text.size()) {
    std::cerr << "usage: simulation_replay [--linux] SEED\n";
    return 2;
  }
  const vantle::RunResult result = play(seed, onLinux);
  std::cout << (result.violation ? "BROKEN: " + *result.violation : "no rule was broken") << '\n';
  return result.violation ? 1 : 0;
}
