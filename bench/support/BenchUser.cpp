// SPDX-License-Identifier: MIT
#include "bench/support/BenchUser.h"

#include "tests/support/User.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace vantle::bench {

bool becomeBenchUser() {
  const char* user = std::getenv("VANTLE_BENCH_USER");
  if (user == nullptr) return true;
  const std::string_view text(user);
  uid_t id = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), id);
  if (error != std::errc{} || stop != text.data() + text.size() || !test::becomeUser(id)) {
    std::perror("VANTLE_BENCH_USER");
    return false;
  }
  return true;
}

} // namespace vantle::bench
