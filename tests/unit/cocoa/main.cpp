// SPDX-License-Identifier: MIT
#include <gtest/gtest.h>

// What the runtime of Objective-C and the Foundation on it keep to the end is theirs. Objects of the tests
// are counted where they are made.
extern "C" const char* __lsan_default_suppressions();
extern "C" const char* __lsan_default_suppressions() { return "leak:libobjc.so\nleak:libgnustep-base.so\n"; }

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
