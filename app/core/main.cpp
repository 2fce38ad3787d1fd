// SPDX-License-Identifier: MIT
#include "app/SelfTestMode.h"

#include <cstdio>
#include <string_view>

// The part of the program that needs neither a toolkit nor a desktop.
int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "--test") return vantle::runSelfTestMode();
  std::fputs("usage: vantle-core --test\n", stderr);
  return 2;
}
