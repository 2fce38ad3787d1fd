// SPDX-License-Identifier: MIT
#include "bench/support/BenchUser.h"

#include <charconv>
#include <cstdio>
#include <cstdlib>
#include <grp.h>
#include <string_view>
#include <sys/prctl.h>
#include <unistd.h>

namespace vantle::bench {

bool becomeBenchUser() {
  const char* user = std::getenv("VANTLE_BENCH_USER");
  if (user == nullptr) return true;
  const std::string_view text(user);
  uid_t id = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), id);
  if (error != std::errc{} || stop != text.data() + text.size() || ::setgroups(0, nullptr) != 0 ||
      ::setgid(id) != 0 || ::setuid(id) != 0) {
    std::perror("VANTLE_BENCH_USER");
    return false;
  }
  // Otherwise the files in /proc of this program and of those that it starts would belong to root.
  return ::prctl(PR_SET_DUMPABLE, 1) == 0;
}

} // namespace vantle::bench
