// SPDX-License-Identifier: MIT
#include "engine/Engine.h"

#include <cstdio>

// That this links at all is the test: an engine that called anything else would have no one to call.
int main() {
  std::printf("%zu bytes of engine\n", sizeof(vantle::Engine));
  return 0;
}
