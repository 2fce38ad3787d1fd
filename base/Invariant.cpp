// SPDX-License-Identifier: MIT
#include "base/Invariant.h"

#include <cstdio>
#include <cstdlib>

namespace vantle {

void invariantBroken(const char* what) {
  std::fprintf(stderr, "vantle: broken invariant: %s\n", what);
  std::abort();
}

} // namespace vantle
